#include "OLUSJsonHelper.h"

#include "../CommonUtil.h"
#include "../JsonHelper.h"

#include <quorvex/Results.h>

#include <charconv>
#include <cstdlib>
#include <system_error>

namespace quorvex
{

namespace
{

/// Reads as strtoul does; what almost every id is, digits and nothing else, takes the quick way.
unsigned int ReadId(const Json::Value& text)
{
    const char* begin = nullptr;
    const char* end = nullptr;
    text.getString(&begin, &end);
    unsigned int id = 0;
    const std::errc error = std::from_chars(begin, end, id).ec;
    return error == std::errc() ? id : static_cast<unsigned int>(std::strtoul(begin, nullptr, 10));
}

} // namespace

template <class Read>
int OLUSJsonHelper::ReadReply(const std::string& response, int& result, const char*& errorinfo, Read read)
{
    const char* const failure = ReadCodedReply(response, m_root, result, read);
    if (failure == nullptr)
    {
        return Result::Ok;
    }
    errorinfo = failure;
    LOG_ERROR(errorinfo);
    return Result::BadAnswer;
}

int OLUSJsonHelper::ParseResult(const std::string& response, int& result, const char*& errorinfo)
{
    LOG_TRACE(L"OLUSJsonHelper::ParseResult(" << response << L")");
    return ReadReply(response, result, errorinfo, [&](const Json::Value& reply) {
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        LOG_DEBUG(L"json result: result=" << result << L", errorinfo=\"" << errorinfo << L"\"");
    });
}

int OLUSJsonHelper::ParseLoginResponse(const std::string& response, int& result, const char*& uid, const char*& sid,
                                       const char*& errorinfo)
{
    LOG_TRACE(L"OLUSJsonHelper::ParseLoginResponse(" << response << L")");
    return ReadReply(response, result, errorinfo, [&](const Json::Value& reply) {
        uid = RequireString(reply["uid"], "get uid error");
        sid = RequireString(reply["sid"], "get sid error");
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        LOG_DEBUG(L"json result: result=" << result << L", uid=" << uid << L", sid=" << sid << L", errorinfo=\""
                                          << errorinfo << L"\"");
    });
}

int OLUSJsonHelper::ParseUserIdList(const std::string& response, int& result, const char*& errorinfo,
                                    std::vector<unsigned int>& ids)
{
    LOG_TRACE(L"OLUSJsonHelper::ParseUserIdList(" << response << L")");
    return ReadReply(response, result, errorinfo, [&](const Json::Value& reply) {
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        const Json::Value& users = reply["users"];
        if (!users.isArray())
        {
            throw ReplyFailure{"get users error, it is not an array."};
        }
        ids.reserve(ids.size() + users.size());
        for (const Json::Value& user : users)
        {
            if (user.isString())
            {
                ids.push_back(ReadId(user));
            }
        }
        LOG_DEBUG(L"json result: result=" << result << L", vecUserId.size()=" << ids.size() << L", errorinfo=\""
                                          << errorinfo << L"\"");
    });
}

int OLUSJsonHelper::ParseTotalCount(const std::string& response, int& result, const char*& errorinfo, int& total)
{
    LOG_TRACE(L"OLUSJsonHelper::ParseTotalCount(" << response << L")");
    return ReadReply(response, result, errorinfo, [&](const Json::Value& reply) {
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        total = 0;
        total = RequirePresent(reply["total"], "get total error").asInt();
        LOG_DEBUG(L"json result: result=" << result << L", total=" << total << L", errorinfo=\"" << errorinfo << L"\"");
    });
}

} // namespace quorvex
