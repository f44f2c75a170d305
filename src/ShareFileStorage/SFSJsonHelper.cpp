#include "SFSJsonHelper.h"

#include "../CommonUtil.h"

#include <quorvex/Results.h>

#include <cstddef>

namespace quorvex
{

namespace
{

template <class Record, std::size_t Size>
void ReadText(const Json::Value& value, Record& record, wchar_t (Record::*field)[Size])
{
    quorvex::ReadText(value, Platform::CodePage::Ansi, record, field);
}

EmoticonInfo ReadEmoticon(const Json::Value& element)
{
    EmoticonInfo emoticon = {};
    ReadText(RequirePresent(element["fkey"], "get emotion_file[\"fkey\"] error"), emoticon, &EmoticonInfo::fkey);
    ReadText(RequirePresent(element["fname"], "get emotion_file[\"fname\"] error"), emoticon, &EmoticonInfo::fname);
    emoticon.fsize = RequirePresent(element["fsize"], "get emotion_file[\"fsize\"] error").asUInt();
    return emoticon;
}

LargeFileInfo ReadLargeFile(const Json::Value& element)
{
    LargeFileInfo file = {};
    ReadText(RequirePresent(element["fkey"], "get file[\"fkey\"] error"), file, &LargeFileInfo::fkey);
    ReadText(RequirePresent(element["fname"], "get file[\"fname\"] error"), file, &LargeFileInfo::fname);
    file.fsize = RequirePresent(element["fsize"], "get file[\"fsize\"] error").asUInt();
    ReadText(RequirePresent(element["fmd5"], "get file[\"fmd5\"] error"), file, &LargeFileInfo::fmd5);
    ReadText(RequirePresent(element["fsha1"], "get file[\"fsha1\"] error"), file, &LargeFileInfo::fsha1);
    ReadText(RequirePresent(element["createtime"], "get file[\"createtime\"] error"), file, &LargeFileInfo::createtime);
    file.finish = RequirePresent(element["finish"], "get file[\"finish\"] error").asInt();
    file.leftminute = RequirePresent(element["leftminute"], "get file[\"leftminute\"] error").asInt();
    return file;
}

/// For the log: a text that is longer than its array has no end of its own.
template <std::size_t Size>
std::wstring LogText(const wchar_t (&field)[Size])
{
    return std::wstring(FieldText(field));
}

const Json::Value& RequireFiles(const Json::Value& reply)
{
    const Json::Value& files = reply["files"];
    if (!files.isArray())
    {
        throw ReplyFailure{"get files error, it is not an array."};
    }
    return files;
}

} // namespace

template <class Read>
int CSFSJsonHelper::ReadReply(const std::string& body, int& code, const char*& failure, Read read, CodeKey codeKey)
{
    const char* const text = ReadCodedReply(body, m_root, code, read, codeKey);
    if (text == nullptr)
    {
        return Result::Ok;
    }
    failure = text;
    LOG_ERROR(failure);
    return Result::BadAnswer;
}

int CSFSJsonHelper::ParseResult(const std::string& body, int& code, const char*& errorinfo, const char*& failure)
{
    return ReadReply(body, code, failure, [&](const Json::Value& reply) {
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        LOG_DEBUG(L"json result: result=" << code << L", errorinfo=\"" << errorinfo << L"\"");
    });
}

int CSFSJsonHelper::ParseLoginResponse(const std::string& body, int& code, const char*& uid, const char*& sid,
                                       const char*& errorinfo, const char*& failure)
{
    return ReadReply(body, code, failure, [&](const Json::Value& reply) {
        LOG_TRACE(L"CSFSJsonHelper::ParseLoginResponse nRespCode=" << code);
        uid = "";
        uid = RequireString(reply["uid"], "get uid error");
        sid = RequireString(reply["sid"], "get sid error");
        errorinfo = RequirePresent(reply["errorinfo"], "get errorinfo error").asCString();
        LOG_DEBUG(L"json result: result=" << code << L", uid=" << uid << L", sid=" << sid << L", errorinfo=\""
                                          << errorinfo << L"\"");
    });
}

int CSFSJsonHelper::ParseUploadResponse(const std::string& body, int& code, const char*& fkey, unsigned int& fsize,
                                        const char*& errorinfo, const char*& failure)
{
    return ReadReply(body, code, failure, [&](const Json::Value& reply) {
        fkey = RequireString(reply["fkey"], "get fkey error");
        fsize = 0;
        fsize = RequirePresent(reply["fsize"], "get fsize error").asUInt();
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        LOG_DEBUG(L"json result: result=" << code << L", fkey=" << fkey << L", fsize=" << fsize << L", errorinfo=\""
                                          << errorinfo << L"\"");
    });
}

int CSFSJsonHelper::ParseEmoticonList(const std::string& body, int& code, std::vector<EmoticonInfo>& emoticons,
                                      const char*& errorinfo, const char*& failure)
{
    return ReadReply(body, code, failure, [&](const Json::Value& reply) {
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        for (const Json::Value& element : RequireFiles(reply))
        {
            const EmoticonInfo& emoticon = emoticons.emplace_back(ReadEmoticon(element));
            LOG_DEBUG(L"json result: fkey=" << LogText(emoticon.fkey) << L", fname=" << LogText(emoticon.fname)
                                            << L", fsize=" << emoticon.fsize);
        }
        LOG_DEBUG(L"json result: result=" << code << L", errorinfo=\"" << errorinfo << L"\", vecEmoticonList.size()="
                                          << emoticons.size());
    });
}

int CSFSJsonHelper::ParseLargeFileList(const std::string& body, int& code, std::vector<LargeFileInfo>& files,
                                       const char*& errorinfo, const char*& failure)
{
    return ReadReply(body, code, failure, [&](const Json::Value& reply) {
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        for (const Json::Value& element : RequireFiles(reply))
        {
            const LargeFileInfo& file = files.emplace_back(ReadLargeFile(element));
            LOG_DEBUG(L"json result: fkey=" << LogText(file.fkey) << L", fname=" << LogText(file.fname) << L", fsize="
                                            << file.fsize << L", fmd5=" << LogText(file.fmd5) << L", fsha1="
                                            << LogText(file.fsha1) << L", createtime=" << LogText(file.createtime)
                                            << L", finish=" << file.finish << L", leftminute=" << file.leftminute);
        }
        LOG_DEBUG(L"json result: result=" << code << L", errorinfo=\"" << errorinfo << L"\", vecLargeFileList.size()="
                                          << files.size());
    });
}

int CSFSJsonHelper::ParseDepotInfo(const std::string& body, int& code, const char*& uid, double& totalSpace,
                                   double& totalSize, double& freeSpace, const char*& errorinfo, const char*& failure)
{
    return ReadReply(body, code, failure, [&](const Json::Value& reply) {
        uid = RequireString(reply["uid"], "get uid error");
        totalSpace = RequirePresent(reply["totalspace"], "get totalspace error").asDouble();
        totalSize = RequirePresent(reply["totalsize"], "get totalsize error").asDouble();
        freeSpace = RequirePresent(reply["freespace"], "get freespace error").asDouble();
        errorinfo = RequireString(reply["errorinfo"], "get errorinfo error");
        LOG_DEBUG(L"json result: result=" << code << L", uid=" << uid << L", totalspace=" << totalSpace
                                          << L", totalsize=" << totalSize << L", freespace=" << freeSpace
                                          << L", errorinfo=\"" << errorinfo << L"\"");
    });
}

int CSFSJsonHelper::ParseApiResponse(const std::string& body, int& code, const char*& fkey, const char*& ticket,
                                     const char*& message, const char*& failure)
{
    const auto read = [&](const Json::Value& reply) {
        fkey = RequireString(reply["fkey"], "get fkey error");
        ticket = RequireString(reply["ticket"], "get ticket error");
        const unsigned int fsize = RequirePresent(reply["fsize"], "get fsize error").asUInt();
        message = RequireString(reply["msg"], "get errorinfo error");
        LOG_DEBUG(L"json result: result=" << code << L", fkey=" << fkey << L", ticket=" << ticket << L", fsize="
                                          << fsize << L",  errorinfo=\"" << message << L"\"");
    };
    return ReadReply(body, code, failure, read, {.key = "code", .failure = "get json code error"});
}

} // namespace quorvex
