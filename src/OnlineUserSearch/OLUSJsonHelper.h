#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace quorvex
{

/// Reads one reply of the online-user search. Each function parses a body and returns 0, or 1 for a body that cannot be
/// parsed, lacks a key or holds a value of the wrong type. The texts handed out live as long as this object.
///
/// What every function gives:
/// - `result`: the server's own result; as it was when the body is no JSON, 505 when it has none
/// - `errorinfo`: the server's text for it, or, when 1 is returned, what was wrong with the reply
class OLUSJsonHelper
{
public:
    int ParseResult(const std::string& response, int& result, const char*& errorinfo);
    int ParseLoginResponse(const std::string& response, int& result, const char*& uid, const char*& sid,
                           const char*& errorinfo);

    /// @param ids the ids are appended to it; elements that are no strings are left out
    int ParseUserIdList(const std::string& response, int& result, const char*& errorinfo,
                        std::vector<unsigned int>& ids);

    /// @param total 0 when the reply has none
    int ParseTotalCount(const std::string& response, int& result, const char*& errorinfo, int& total);

private:
    template <class Read>
    int ReadReply(const std::string& response, int& result, const char*& errorinfo, Read read);

    Json::Value m_root;
};

} // namespace quorvex
