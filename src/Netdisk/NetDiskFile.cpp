#include <quorvex/NetDisk.h>

#include "../ChecksumHelper.h"
#include "../NoThrow.h"
#include "NetDiskExchange.h"

namespace quorvex::netdisk
{

namespace
{

constexpr wchar_t kDownloadPath[] = L"file/down?fkey=%s";

} // namespace

int CNetDisk::FileUpload(const wchar_t* localFolder, const wchar_t* fileName, wchar_t* fileKeyOut,
                         unsigned long fileKeyOutSize) const
{
    return FileUploadWithRetry(L"file/upload", localFolder, fileName, fileName, fileKeyOut, fileKeyOutSize);
}

int CNetDisk::FileUploadWithRetry(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                                  const wchar_t* announcedName, wchar_t* fileKeyOut, unsigned long fileKeyOutSize) const
{
    return NoThrow(L"CNetDisk::FileUploadWithRetry()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::FileUploadWithRetry(lpszObject=" << objectPath << L",lpszLocalFolder=" << localFolder
                                                               << L",lpszFileName=" << fileName << L",lpszName="
                                                               << announcedName << L")");
        std::string reply;
        int result = Exchange{*this}.TransferWithRelogin(
            RetryOn{500}, L"session expired when do file upload, try relogin to server", reply, [&] {
                return Exchange::Outcome{
                    m_pHttpHelper->FileUpload(objectPath, localFolder, fileName, announcedName, reply)};
            });
        if (result != Result::Ok)
        {
            return result;
        }
        int fsize = 0;
        int cflag = 0;
        result = CNetDiskJsonHelper().UploadReply(reply, fileKeyOut, fileKeyOutSize, fsize, cflag);
        if (result == Result::Ok && cflag == 0)
        {
            LOG_ERROR(L"file not complete");
        }
        return result;
    });
}

int CNetDisk::FileDownload(const wchar_t* fileKey, const wchar_t* localFolder, const wchar_t* fileName) const
{
    return FileDownloadWithRetry(kDownloadPath, fileKey, localFolder, fileName);
}

int CNetDisk::FileDownloadWithRetry(const wchar_t* objectFormat, const wchar_t* fileKey, const wchar_t* localFolder,
                                    const wchar_t* fileName) const
{
    return NoThrow(L"CNetDisk::FileDownloadWithRetry()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::FileDownloadWithRetry(lpszObject=" << objectFormat << L",lpszFkey=" << fileKey
                                                                 << L",lpszLocalFolder=" << localFolder
                                                                 << L",lpszFileName=" << fileName << L")");
        return Exchange{*this}.DownloadWithRelogin(FormatObjectPath(objectFormat, fileKey), localFolder, fileName);
    });
}

int CNetDisk::FileModify(const wchar_t* fileKey, const wchar_t* folderId, const wchar_t* name) const
{
    return NoThrow(L"CNetDisk::FileModify()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::FileModify(lpszFkey=" << fileKey << L",lpszFoID=" << folderId << L",lpszName=" << name
                                                    << L")");
        JsonBody<256> body;
        body << "{\"fkey\":\"" << fileKey << "\",\"fo_id\":\"" << folderId << "\",\"name\":\"" << name << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"file/modi", body.c_str(), reply); });
    });
}

int CNetDisk::FileDelete(const wchar_t* fileKey) const
{
    return NoThrow(L"CNetDisk::FileDelete()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::FileDelete(lpszFkey=" << fileKey << L")");
        JsonBody<256> body;
        body << "{\"fkey\":\"" << fileKey << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500}, reply, [&] { return m_pHttpHelper->RequestPost(L"file/del", body.c_str(), reply); });
    });
}

int CNetDisk::FileDelete4ever(const wchar_t* fileKey) const
{
    return NoThrow(L"CNetDisk::FileDelete4ever()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::FileDelete4ever(lpszFkey=" << fileKey << L")");
        JsonBody<256> body;
        body << "{\"fkey\":\"" << fileKey << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500}, reply, [&] { return m_pHttpHelper->RequestPost(L"file/del4ever", body.c_str(), reply); });
    });
}

int CNetDisk::FileGetChecksum(const wchar_t* folder, const wchar_t* fileName, unsigned long& fileSize,
                              wchar_t* md5Out) const
{
    return NoThrow(L"CNetDisk::FileGetChecksum()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::FileGetChecksum(lpszFolder=" << folder << L",lpszFileName=" << fileName << L")");
        char md5[kMd5TextSize] = {};
        auto size = static_cast<std::uint32_t>(fileSize);
        FileMd5(fileName, folder, md5, size);
        fileSize = size;
        CopyToWide(md5, md5Out, kMd5TextSize);
        return Result::Ok;
    });
}

int CNetDisk::LargeFileCreate(const wchar_t* localFolder, const wchar_t* fileName, wchar_t* fileKeyOut,
                              unsigned long fileKeyOutSize, int& complete) const
{
    return NoThrow(L"CNetDisk::LargeFileCreate()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::LargeFileCreate(lpszLocalFolder=" << localFolder << L",lpszFileName=" << fileName
                                                                << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        char md5[kMd5TextSize] = {};
        std::uint32_t fileSize = 0;
        if (const int result = FileMd5(fileName, localFolder, md5, fileSize); result != Result::Ok)
        {
            LOG_ERROR(L"GetFileInfo() fail, return " << result);
            return result;
        }

        std::string reply;
        const int result = exchange.SendWithRelogin(
            RetryOn{500}, reply, [&] { return m_pHttpHelper->FileCreate(fileName, fileSize, md5, reply); },
            [&] {
                // The download's wording is what the log has always said here.
                return exchange.ReloginOrFail(L"session expired when do file download, try relogin to server");
            });
        if (result != Result::Ok)
        {
            return result;
        }
        int fsize = 0;
        return CNetDiskJsonHelper().UploadReply(reply, fileKeyOut, fileKeyOutSize, fsize, complete);
    });
}

int CNetDisk::LargeFileUpload(const wchar_t* fileKey, void* data, unsigned long size, unsigned long pos) const
{
    return NoThrow(L"CNetDisk::LargeFileUpload()", [&]() -> int {
        if (data == nullptr && size != 0)
        {
            LOG_ERROR(L"CNetDisk::LargeFileUpload() data is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CNetDisk::LargeFileUpload(lpszFkey=" << fileKey << L",size=" << size << L",pos=" << pos << L")");
        const std::span block(static_cast<const char*>(data), size);

        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(RetryOn{500}, reply, [&] {
            return m_pHttpHelper->FileCreate(fileKey, static_cast<std::uint32_t>(pos), block, reply);
        });
        if (result != Result::Ok)
        {
            return result;
        }
        CNetDiskJsonHelper helper;
        const char* fkey = nullptr;
        int fsize = 0;
        if (const int parsed = helper.BlockReply(reply, fkey, fsize); parsed != Result::Ok)
        {
            return parsed;
        }
        if (static_cast<std::uint32_t>(fsize) != size)
        {
            LOG_ERROR(L"LargeFileUpload size not match, resp=" << reply);
            return Result::BadAnswer;
        }
        return Result::Ok;
    });
}

int CNetDisk::LargeFileFinish(const wchar_t* fileKey) const
{
    return NoThrow(L"CNetDisk::LargeFileFinish()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::LargeFileFinish(lpszFkey=" << fileKey << L")");
        JsonBody<256> body;
        body << "{\"fkey\":\"" << fileKey << "\"}";

        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"file/uploade", body.c_str(), reply); });
        if (result != Result::Ok)
        {
            return result;
        }
        CNetDiskJsonHelper helper;
        const char* fkey = nullptr;
        int fsize = 0;
        return helper.BlockReply(reply, fkey, fsize);
    });
}

int CNetDisk::LargeFileGetInfo(const wchar_t* fileKey, wchar_t* fileNameOut, unsigned long fileNameOutSize,
                               unsigned long& totalSize, wchar_t* secondValueOut) const
{
    return NoThrow(L"CNetDisk::LargeFileGetInfo()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::LargeFileGetInfo(lpszFkey=" << fileKey << L")");
        const ObjectPath path = FormatObjectPath(kDownloadPath, fileKey);

        std::uint32_t size = 0;
        std::wstring fileName;
        std::wstring secondValue;
        const std::string noReply;
        const int result = Exchange{*this}.SendWithRelogin(RetryOn{500, 404}, noReply, [&] {
            return m_pHttpHelper->GetFileInfo(path.c_str(), size, fileName, secondValue);
        });
        if (result != Result::Ok)
        {
            return result;
        }
        totalSize = size;
        CopyWide(fileName, fileNameOut, fileNameOutSize);
        CopyWide(secondValue, secondValueOut, fileNameOutSize);
        return Result::Ok;
    });
}

int CNetDisk::LargeFileDownload(const wchar_t* fileKey, unsigned long pos, void* buffer, unsigned long& size) const
{
    return NoThrow(L"CNetDisk::LargeFileDownload()", [&]() -> int {
        if (buffer == nullptr && size != 0)
        {
            LOG_ERROR(L"CNetDisk::LargeFileDownload() buffer is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CNetDisk::LargeFileDownload(lpszFkey=" << fileKey << L",pos=" << pos << L",size=" << size << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        exchange.LoginIfNeeded();
        return exchange.DownloadRange(FormatObjectPath(kDownloadPath, fileKey), pos, buffer, size);
    });
}

} // namespace quorvex::netdisk
