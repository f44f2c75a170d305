#include <quorvex/NetDisk.h>

#include "../NoThrow.h"
#include "NetDiskExchange.h"

namespace quorvex::netdisk
{

namespace
{

// Room for 200 keys of 32 characters with what stands between them.
using CodeListBody = JsonBody<7456>;

bool IsCountValid(std::size_t count)
{
    return count >= 1 && count <= 200;
}

/// Adds one text field of each record, with what stands between two.
template <class Record, std::size_t Size>
void AddCodes(CodeListBody& body, const std::vector<Record>& records, wchar_t (Record::*code)[Size])
{
    const char* separator = "";
    for (const Record& record : records)
    {
        body << separator << FieldText(record.*code);
        separator = "\",\"";
    }
}

ObjectPath DownloadPath(const wchar_t* pcode, const wchar_t* fileId)
{
    ObjectPath path;
    path << L"pcode/down?pcode=" << pcode << L"&fid=" << fileId;
    return path;
}

} // namespace

int CNetDisk::PcodeCreate(std::vector<_FileInfo>& files, unsigned long aliveSeconds, wchar_t* pcodeOut,
                          unsigned long pcodeOutSize) const
{
    return NoThrow(L"CNetDisk::PcodeCreate()", [&]() -> int {
        if (!IsCountValid(files.size()))
        {
            LOG_ERROR(L"CNetDisk::PcodeCreate() file key num is not correct");
            return Result::FileKeyCountInvalid;
        }
        LOG_TRACE(L"CNetDisk::PcodeCreate(files=" << files.size() << L",aliveSeconds=" << aliveSeconds << L")");
        CodeListBody body;
        body << "{\"fkeys\":[\"";
        AddCodes(body, files, &_FileInfo::fkey);
        body << "\"],\"alivesecond\":" << aliveSeconds << "}";

        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"pcode/create", body.c_str(), reply); });
        if (result != Result::Ok)
        {
            return result;
        }
        CNetDiskJsonHelper helper;
        const char* pcode = nullptr;
        if (const int parsed = helper.PcodeCreatedReply(reply, pcode); parsed != Result::Ok)
        {
            return parsed;
        }
        CopyToWide(pcode, pcodeOut, pcodeOutSize);
        return Result::Ok;
    });
}

int CNetDisk::PcodeDelete(std::vector<_PcodeInfo>& pcodes) const
{
    return NoThrow(L"CNetDisk::PcodeDelete()", [&]() -> int {
        if (!IsCountValid(pcodes.size()))
        {
            LOG_ERROR(L"CNetDisk::PcodeDelete() pcode num is not correct");
            return Result::PcodeInvalid;
        }
        LOG_TRACE(L"CNetDisk::PcodeDelete(pcodes=" << pcodes.size() << L")");
        CodeListBody body;
        body << "{\"pcodes\":[\"";
        AddCodes(body, pcodes, &_PcodeInfo::pcode);
        body << "\"]}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"pcode/del", body.c_str(), reply); });
    });
}

int CNetDisk::PcodeList(unsigned long type, std::vector<_PcodeInfo>& pcodes) const
{
    return NoThrow(L"CNetDisk::PcodeList()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::PcodeList(type=" << type << L")");
        ObjectPath path;
        path << L"pcode/list?type=" << type;

        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestGet(path.c_str(), reply); });
        return result != Result::Ok ? result : CNetDiskJsonHelper().PcodeListing(reply, pcodes);
    });
}

int CNetDisk::PcodeInfo(const wchar_t* pcode, std::vector<_FileInfo>& files) const
{
    return NoThrow(L"CNetDisk::PcodeInfo()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::PcodeInfo(lpszPcode=" << pcode << L")");
        ObjectPath path;
        path << L"pcode/info?pcode=" << pcode;

        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestGet(path.c_str(), reply); });
        return result != Result::Ok ? result : CNetDiskJsonHelper().PcodeContents(reply, files);
    });
}

int CNetDisk::PcodeDefer(const wchar_t* pcode, unsigned long deferSeconds) const
{
    return NoThrow(L"CNetDisk::PcodeDefer()", [&]() -> int {
        if (pcode == nullptr)
        {
            LOG_ERROR(L"CNetDisk::PcodeDefer() pcode is not correct");
            return Result::PcodeInvalid;
        }
        LOG_TRACE(L"CNetDisk::PcodeDefer(lpszPcode=" << pcode << L",deferSeconds=" << deferSeconds << L")");
        JsonBody<256> body;
        body << "{\"pcode\":\"" << pcode << "\",\"defersecond\":" << deferSeconds << "}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"pcode/defer", body.c_str(), reply); });
    });
}

int CNetDisk::PcodeSave(const wchar_t* pcode, const wchar_t* folderId) const
{
    return NoThrow(L"CNetDisk::PcodeSave()", [&]() -> int {
        if (pcode == nullptr)
        {
            LOG_ERROR(L"CNetDisk::PcodeSave() pcode is not correct");
            return Result::PcodeInvalid;
        }
        LOG_TRACE(L"CNetDisk::PcodeSave(lpszPcode=" << pcode << L",lpszFoID=" << folderId << L")");
        JsonBody<256> body;
        body << "{\"pcode\":\"" << pcode << "\",\"fo_id\":\"" << folderId << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"pcode/save", body.c_str(), reply); });
    });
}

int CNetDisk::PcodeDown(const wchar_t* pcode, const wchar_t* fileId, const wchar_t* localFolder,
                        const wchar_t* fileName) const
{
    return NoThrow(L"CNetDisk::PcodeDown()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::PcodeDown(lpszPcode=" << pcode << L",lpszFid=" << fileId << L",lpszLocalFolder="
                                                    << localFolder << L",lpszFileName=" << fileName << L")");
        return Exchange{*this}.DownloadWithRelogin(DownloadPath(pcode, fileId), localFolder, fileName);
    });
}

int CNetDisk::LargePcodeDown(const wchar_t* pcode, const wchar_t* fileId, unsigned long pos, void* buffer,
                             unsigned long& size) const
{
    return NoThrow(L"CNetDisk::LargePcodeDown()", [&]() -> int {
        if (buffer == nullptr && size != 0)
        {
            LOG_ERROR(L"CNetDisk::LargePcodeDown() buffer is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CNetDisk::LargePcodeDown(lpszPcode=" << pcode << L",lpszFid=" << fileId << L",pos=" << pos
                                                         << L",size=" << size << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.PrepareTransfer(); result != Result::Ok)
        {
            return result;
        }
        return exchange.DownloadRange(DownloadPath(pcode, fileId), pos, buffer, size);
    });
}

} // namespace quorvex::netdisk
