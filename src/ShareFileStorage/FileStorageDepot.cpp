#include <quorvex/FileStorage.h>

#include "../JsonHelper.h"
#include "../NoThrow.h"
#include "DepotForm.h"
#include "FileStorageExchange.h"
#include "SFSJsonHelper.h"

#include <span>
#include <utility>

namespace quorvex
{

int CFileStorage::LargeFileCreate(const wchar_t* folder, const wchar_t* fileName, wchar_t* keyOut,
                                  unsigned long keyOutLen) const
{
    return NoThrow(L"CFileStorage::LargeFileCreate()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::LargeFileCreate()");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        const DepotForm form = CreateForm(folder, fileName);

        std::string reply;
        const auto post = [&] { return exchange.Helper().RequestPost(L"ofs/upload_c_rest.php", form.c_str(), reply); };
        CSFSJsonHelper helper;
        int code = kNoCode;
        const char* fkey = nullptr;
        const char* errorinfo = nullptr;
        const auto read = [&] {
            unsigned int fsize = 0;
            const char* failure = nullptr;
            code = kNoCode;
            return helper.ParseUploadResponse(reply, code, fkey, fsize, errorinfo, failure);
        };

        const int result = exchange.RunWithCodeRelogin(
            L"session expired when do file upload, try relogin to server", code, [&, isFirst = true]() mutable {
                // Only the first request is repeated after an HTTP 403. The download's wording is what the log has
                // always said then.
                const int sent =
                    std::exchange(isFirst, false)
                        ? exchange.RunWithRelogin(L"session expired when do file download, try relogin to server", post)
                        : post();
                return sent == Result::Ok ? read() : sent;
            });
        if (result != Result::Ok)
        {
            return result;
        }
        if (code != kCodeOk)
        {
            return RefusedBy(code, errorinfo);
        }
        CopyToWide(fkey, keyOut, keyOutLen, Platform::CodePage::Ansi);
        return Result::Ok;
    });
}

int CFileStorage::LargeFileUpload(const wchar_t* key, void* data, unsigned long size, unsigned long position) const
{
    return NoThrow(L"CFileStorage::LargeFileUpload()", [&]() -> int {
        if (data == nullptr && size != 0)
        {
            LOG_ERROR(L"CFileStorage::LargeFileUpload() data is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage::LargeFileUpload()");
        const Exchange exchange{*this};
        const std::span chunk(static_cast<const char*>(data), size);
        return exchange.SendForResult([&](std::string& reply) {
            return exchange.Helper().BufferUpload(L"ofs/upload_u_rest.php", key, static_cast<std::uint32_t>(position),
                                                  chunk, reply);
        });
    });
}

int CFileStorage::LargeFileUploadFinish(const wchar_t* key) const
{
    return NoThrow(L"CFileStorage::LargeFileUploadFinish()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::LargeFileUploadFinish()");
        const Exchange exchange{*this};
        const DepotForm form = FinishForm(key);
        return exchange.SendForResult([&](std::string& reply) {
            return exchange.Helper().RequestPost(L"ofs/upload_e_rest.php", form.c_str(), reply);
        });
    });
}

int CFileStorage::LargeFileGetInfo(const wchar_t* uid, const wchar_t* key, wchar_t* name, unsigned long nameLen,
                                   unsigned long& size, wchar_t* secondOut, wchar_t* thirdOut) const
{
    return NoThrow(L"CFileStorage::LargeFileGetInfo()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::LargeFileGetInfo()");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        CShareFileStorageHttpHelper::FileInfo info;
        if (const int result = exchange.Helper().BufferUpload(DepotPath(uid, key).c_str(), info); result != Result::Ok)
        {
            return result;
        }
        size = info.totalSize;
        CopyWide(info.name, name, nameLen);
        CopyWide(info.second, secondOut, nameLen);
        CopyWide(info.third, thirdOut, nameLen);
        return Result::Ok;
    });
}

int CFileStorage::LargeFileDownload(const wchar_t* uid, const wchar_t* key, unsigned long position, void* buffer,
                                    unsigned long& length) const
{
    return NoThrow(L"CFileStorage::LargeFileDownload()", [&]() -> int {
        if (buffer == nullptr && length != 0)
        {
            LOG_ERROR(L"CFileStorage::LargeFileDownload() buffer is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage::LargeFileDownload(uid=" << uid << L",key=" << key << L",position=" << position
                                                          << L",length=" << length << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        auto transferSize = static_cast<std::uint32_t>(length);
        const int result = exchange.Helper().BufferDownload(DepotPath(uid, key).c_str(),
                                                            static_cast<std::uint32_t>(position), transferSize, buffer);
        if (result == Result::Ok)
        {
            length = transferSize;
        }
        return result;
    });
}

int CFileStorage::LargeFileRenewTime(const wchar_t* key) const
{
    return NoThrow(L"CFileStorage::LargeFileRenewTime()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::LargeFileRenewTime()");
        const Exchange exchange{*this};
        const ObjectPath path = FormatObjectPath(L"ofs/time_rest.php?k=%s", key);
        return exchange.SendForResult(
            [&](std::string& reply) { return exchange.Helper().RequestGet(path.c_str(), reply); });
    });
}

int CFileStorage::LargeFileRemove(const wchar_t* key) const
{
    return NoThrow(L"CFileStorage::LargeFileRemove()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::LargeFileRemove()");
        const Exchange exchange{*this};
        const ObjectPath path = FormatObjectPath(L"ofs/remove_rest.php?k=%s", key);
        return exchange.SendForResult(
            [&](std::string& reply) { return exchange.Helper().RequestGet(path.c_str(), reply); });
    });
}

int CFileStorage::LargeFileGetList(std::vector<LargeFileInfo>& list) const
{
    return NoThrow(L"CFileStorage::LargeFileGetList()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::LargeFileGetList()");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        std::string reply;
        if (const int result = exchange.Helper().RequestGet(L"ofs/files_rest.php", reply); result != Result::Ok)
        {
            return result;
        }
        CSFSJsonHelper helper;
        int code = kNoCode;
        const char* errorinfo = nullptr;
        const char* failure = nullptr;
        if (const int result = helper.ParseLargeFileList(reply, code, list, errorinfo, failure); result != Result::Ok)
        {
            return result;
        }
        if (code != kCodeOk)
        {
            return RefusedBy(code, errorinfo);
        }
        LOG_TRACE(L"LargeFileGetList success, vecLargeFileList.size()=" << list.size());
        return Result::Ok;
    });
}

int CFileStorage::LargeFileDepotInfo(double& totalSpace, double& totalSize, double& freeSpace) const
{
    return NoThrow(L"CFileStorage::LargeFileDepotInfo()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::LargeFileDepotInfo()");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        std::string reply;
        if (const int result = exchange.Helper().RequestGet(L"ofs/info.php", reply); result != Result::Ok)
        {
            return result;
        }
        CSFSJsonHelper helper;
        int code = kNoCode;
        const char* uid = nullptr;
        double total = 0;
        double used = 0;
        double left = 0;
        const char* errorinfo = nullptr;
        const char* failure = nullptr;
        if (const int result = helper.ParseDepotInfo(reply, code, uid, total, used, left, errorinfo, failure);
            result != Result::Ok)
        {
            return result;
        }
        if (code != kCodeOk)
        {
            return RefusedBy(code, errorinfo);
        }
        totalSpace = total;
        totalSize = used;
        freeSpace = left;
        // The listing's name is what the log has always said here.
        LOG_TRACE(L"LargeFileGetList success, fTotalSpace=" << totalSpace << L", fTotalSize=" << totalSize
                                                            << L", fFreeSpace=" << freeSpace);
        return Result::Ok;
    });
}

} // namespace quorvex
