#include "NetDiskJsonHelper.h"

#include "../CommonUtil.h"
#include "../JsonHelper.h"

#include <quorvex/Results.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace quorvex::netdisk
{

namespace
{

template <class Record, std::size_t Size>
void ReadText(const Json::Value& value, Record& record, wchar_t (Record::*field)[Size])
{
    quorvex::ReadText(value, Platform::CodePage::Utf8, record, field);
}

_FileInfo ReadListedFile(const Json::Value& element)
{
    _FileInfo file = {};
    ReadText(element["fkey"], file, &_FileInfo::fkey);
    ReadText(element["name"], file, &_FileInfo::name);
    file.size = element["size"].asUInt();
    file.cflag = element["cflag"].asInt();
    file.downcount = element["downcount"].asUInt();
    file.ctime = ReadInt64(element["ctime"]);
    ReadText(element["md5"], file, &_FileInfo::md5);
    return file;
}

_FileInfo ReadSharedFile(const Json::Value& element)
{
    _FileInfo file = {};
    ReadText(element["fid"], file, &_FileInfo::fkey);
    ReadText(element["name"], file, &_FileInfo::name);
    file.size = element["size"].asUInt();
    file.cflag = element["cflag"].asInt();
    ReadText(element["md5"], file, &_FileInfo::md5);
    return file;
}

_FolderInfo ReadFolder(const Json::Value& element)
{
    _FolderInfo folder = {};
    ReadText(element["fo_id"], folder, &_FolderInfo::fo_id);
    ReadText(element["name"], folder, &_FolderInfo::name);
    return folder;
}

_PcodeInfo ReadPcode(const Json::Value& element)
{
    _PcodeInfo pcode = {};
    ReadText(element["pcode"], pcode, &_PcodeInfo::pcode);
    pcode.createtime = ReadInt64(element["createtime"]);
    pcode.deadline = ReadInt64(element["deadline"]);
    pcode.downcount = element["downcount"].asUInt();
    return pcode;
}

_RItemInfo ReadRecyclebinItem(const Json::Value& element)
{
    _RItemInfo item = {};
    ReadText(element["rs_id"], item, &_RItemInfo::rs_id);
    item.rtime = ReadInt64(element["rtime"]);
    item.type = element["type"].asInt();
    ReadText(element["name"], item, &_RItemInfo::name);
    ReadText(element["fo_before"], item, &_RItemInfo::fo_before);
    return item;
}

bool IsRecord(const Json::Value&)
{
    return true;
}

bool IsRecyclebinItem(const Json::Value& element)
{
    return element.isObject() && !element["rs_id"].isNull();
}

/// A listing without the array is an empty one.
/// @param isRecord which elements to read; the others are left out
template <class Record>
void AppendRecords(const Json::Value& listing, Record (*read)(const Json::Value&), std::vector<Record>& records,
                   bool (*isRecord)(const Json::Value&) = IsRecord)
{
    // An item of a few bytes becomes a record of 8 KiB.
    static constexpr std::size_t kMostRecords = (std::size_t{1} << 30U) / sizeof(Record);

    if (!listing.isArray())
    {
        return;
    }
    const auto count = static_cast<std::size_t>(std::count_if(listing.begin(), listing.end(), isRecord));
    if (count > kMostRecords)
    {
        LOG_ERROR(L"too long a listing, size=" << count << L", limit=" << kMostRecords);
        throw UnusableReply();
    }
    records.reserve(records.size() + count);
    for (const Json::Value& element : listing)
    {
        if (isRecord(element))
        {
            records.push_back(read(element));
        }
    }
}

} // namespace

template <class Read>
int CNetDiskJsonHelper::ReadReply(const std::string& body, Read read)
{
    try
    {
        if (ParseJson(body, m_root))
        {
            read(std::as_const(m_root));
            return Result::Ok;
        }
    }
    catch (const UnusableReply&)
    {
        return Result::BadAnswer;
    }
    catch (const Json::Exception&)
    {
        // Nested too deeply, or a value of the wrong type.
    }
    LOG_ERROR(L"parse json error");
    return Result::BadAnswer;
}

void CNetDiskJsonHelper::ErrorReply(int code, const std::string& body)
{
    try
    {
        if (ParseJson(body, m_root) && m_root.isObject() && m_root["msg"].isString())
        {
            LOG_ERROR(m_root["msg"].asCString());
            return;
        }
    }
    catch (const Json::Exception&)
    {
        // Nested too deeply; the body is logged as it is.
    }
    LOG_ERROR(L"Response code=" << code << L", errorinfo=" << body);
}

int CNetDiskJsonHelper::LoginReply(const std::string& body, int& uapUid, const char*& uapSid,
                                   const char*& userCenterLogin)
{
    return ReadReply(body, [&](const Json::Value& root) {
        const Json::Value& uid = Require(root, "uap_uid", L"get uap_uid error");
        const Json::Value& sid = Require(root, "uap_sid", L"get uap_sid error");
        const Json::Value& login = root["QVUserCenterLogin"];
        const int uidValue = uid.asInt();
        const char* const sidText = sid.asCString();
        const char* const loginText = login.isNull() ? "" : login.asCString();
        LOG_DEBUG(L"json result: uap_uid=" << uidValue << L", uap_sid=" << sidText);
        uapUid = uidValue;
        uapSid = sidText;
        userCenterLogin = loginText;
    });
}

int CNetDiskJsonHelper::SessionCheckReply(const std::string& body, int& uapUid)
{
    return ReadReply(body, [&](const Json::Value& root) {
        // The session's key is named on purpose: this is how a rejected session shows in the log.
        const Json::Value& uid = Require(root, "uap_uid", L"get uap_sid error");
        uapUid = uid.asInt();
        LOG_DEBUG(L"json result: uap_uid=" << uapUid);
    });
}

int CNetDiskJsonHelper::UploadReply(const std::string& body, wchar_t* fileKeyOut, unsigned long fileKeyOutSize,
                                    int& fsize, int& cflag)
{
    return ReadReply(body, [&](const Json::Value& root) {
        const Json::Value& key = Require(root, "fkey", L"get fkey error");
        const Json::Value& size = Require(root, "fsize", L"get fsize error");
        const Json::Value& flag = Require(root, "cflag", L"get cflag error");
        const char* const keyText = key.asCString();
        const int sizeValue = size.asInt();
        const int flagValue = flag.asInt();
        LOG_DEBUG(L"json result: fkey=" << keyText << L", fsize=" << sizeValue << L", cflag=" << flagValue);
        CopyToWide(keyText, fileKeyOut, std::size_t{2} * fileKeyOutSize);
        fsize = sizeValue;
        cflag = flagValue;
    });
}

int CNetDiskJsonHelper::BlockReply(const std::string& body, const char*& fkey, int& fsize)
{
    return ReadReply(body, [&](const Json::Value& root) {
        const Json::Value& key = Require(root, "fkey", L"get fkey error");
        const Json::Value& size = Require(root, "fsize", L"get fsize error");
        const char* const keyText = key.asCString();
        fsize = size.asInt();
        fkey = keyText;
        LOG_DEBUG(L"json result: fkey=" << fkey << L", fsize=" << fsize);
    });
}

int CNetDiskJsonHelper::FolderCreatedReply(const std::string& body, const char*& folderId)
{
    return ReadReply(body, [&](const Json::Value& root) {
        const Json::Value& id = Require(root, "fo_id", L"get fo_id error");
        folderId = id.asCString();
        LOG_DEBUG(L"json result: fo_id=" << folderId);
    });
}

int CNetDiskJsonHelper::FolderListing(const std::string& body, std::vector<_FileInfo>& files,
                                      std::vector<_FolderInfo>& folders)
{
    return ReadReply(body, [&](const Json::Value& root) {
        AppendRecords(root["files"], ReadListedFile, files);
        AppendRecords(root["folders"], ReadFolder, folders);
        LOG_DEBUG(L"json result: files=" << files.size() << L", folders=" << folders.size());
    });
}

int CNetDiskJsonHelper::PcodeCreatedReply(const std::string& body, const char*& pcode)
{
    return ReadReply(body, [&](const Json::Value& root) {
        const Json::Value& code = Require(root, "pcode", L"get pcode error");
        pcode = code.asCString();
        LOG_DEBUG(L"json result: pcode=" << pcode);
    });
}

int CNetDiskJsonHelper::PcodeListing(const std::string& body, std::vector<_PcodeInfo>& pcodes)
{
    return ReadReply(body, [&](const Json::Value& root) {
        AppendRecords(root["pcodes"], ReadPcode, pcodes);
        LOG_DEBUG(L"json result: pcodes=" << pcodes.size());
    });
}

int CNetDiskJsonHelper::PcodeContents(const std::string& body, std::vector<_FileInfo>& files)
{
    return ReadReply(body, [&](const Json::Value& root) {
        AppendRecords(root["files"], ReadSharedFile, files);
        LOG_DEBUG(L"json result: files=" << files.size());
    });
}

int CNetDiskJsonHelper::Capacity(const std::string& body, std::int64_t& totalSpace, std::int64_t& usedSpace,
                                 std::uint32_t& maxFileSize)
{
    return ReadReply(body, [&](const Json::Value& root) {
        const Json::Value& total = Require(root, "total_space", L"get total_space error");
        const Json::Value& used = Require(root, "used_space", L"get used_space error");
        const Json::Value& maximum = Require(root, "max_file_size", L"get max_file_size error");
        const std::int64_t totalValue = ReadInt64(total);
        const std::int64_t usedValue = ReadInt64(used);
        maxFileSize = maximum.asUInt();
        totalSpace = totalValue;
        usedSpace = usedValue;
        LOG_DEBUG(L"json result: total_space=" << totalSpace << L", used_space=" << usedSpace << L", max_file_size="
                                               << maxFileSize);
    });
}

int CNetDiskJsonHelper::RecyclebinListing(const std::string& body, std::vector<_RItemInfo>& items)
{
    return ReadReply(body, [&](const Json::Value& root) {
        AppendRecords(root["data"], ReadRecyclebinItem, items, IsRecyclebinItem);
        LOG_DEBUG(L"json result: data=" << items.size());
    });
}

} // namespace quorvex::netdisk
