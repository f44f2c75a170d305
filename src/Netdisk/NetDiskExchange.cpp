#include "NetDiskExchange.h"

namespace quorvex::netdisk
{

int CNetDisk::Exchange::DownloadWithRelogin(const ObjectPath& path, const wchar_t* localFolder,
                                            const wchar_t* fileName) const
{
    const std::string noReply;
    return TransferWithRelogin(
        RetryOn{500, 404}, L"session expired when do file download, try relogin to server", noReply, [&] {
            std::uint32_t statusCode = 0;
            const int result = disk.m_pHttpHelper->FileDownload(path.c_str(), localFolder, fileName, statusCode);
            return result == Result::DownloadRefused ? Outcome{result, static_cast<int>(statusCode)} : Outcome{result};
        });
}

int CNetDisk::Exchange::DownloadRange(const ObjectPath& path, unsigned long pos, void* buffer,
                                      unsigned long& size) const
{
    std::uint32_t transferSize = 0;
    const std::string noReply;
    const int result = SendTwice(
        RetryOn{500, 404}, noReply,
        [&] {
            transferSize = static_cast<std::uint32_t>(size);
            return disk.m_pHttpHelper->BufferDownload(path.c_str(), static_cast<std::uint32_t>(pos), transferSize,
                                                      buffer);
        },
        [this] { return ReloginAnyway(); });
    if (result == Result::Ok)
    {
        size = transferSize;
    }
    return result;
}

} // namespace quorvex::netdisk
