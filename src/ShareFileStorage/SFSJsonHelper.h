#pragma once

#include "../JsonHelper.h"

#include <quorvex/FileStorageRecords.h>

#include <json/value.h>

#include <string>
#include <vector>

namespace quorvex
{

/// Reads one reply of the shared file storage. Each function parses a body and returns 0, or 1 for a body that cannot
/// be parsed, lacks a key or holds a value of the wrong type; records that were appended before stay. The texts handed
/// out live as long as this object.
///
/// What every function gives:
/// - `code`: the server's own result; as it was when the body is no JSON, 505 when it has none
/// - `errorinfo`: the server's text for it
/// - `failure`: set when 1 is returned, to what was wrong with the reply
class CSFSJsonHelper
{
public:
    int ParseResult(const std::string& body, int& code, const char*& errorinfo, const char*& failure);
    int ParseLoginResponse(const std::string& body, int& code, const char*& uid, const char*& sid,
                           const char*& errorinfo, const char*& failure);
    int ParseUploadResponse(const std::string& body, int& code, const char*& fkey, unsigned int& fsize,
                            const char*& errorinfo, const char*& failure);
    int ParseEmoticonList(const std::string& body, int& code, std::vector<EmoticonInfo>& emoticons,
                          const char*& errorinfo, const char*& failure);
    int ParseLargeFileList(const std::string& body, int& code, std::vector<LargeFileInfo>& files,
                           const char*& errorinfo, const char*& failure);
    int ParseDepotInfo(const std::string& body, int& code, const char*& uid, double& totalSpace, double& totalSize,
                       double& freeSpace, const char*& errorinfo, const char*& failure);

    /// A reply of the third generation. Its code is "code", and its text for it "msg".
    int ParseApiResponse(const std::string& body, int& code, const char*& fkey, const char*& ticket,
                         const char*& message, const char*& failure);

private:
    template <class Read>
    int ReadReply(const std::string& body, int& code, const char*& failure, Read read, CodeKey codeKey = {});

    Json::Value m_root;
};

} // namespace quorvex
