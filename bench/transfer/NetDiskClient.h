#pragma once

#include "CheckResult.h"

#include <quorvex/NetDisk.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace quorvex::bench
{

/// The module's client of the network disk, logged in to a server on this machine.
class NetDiskClient
{
public:
    explicit NetDiskClient(std::uint16_t port) : m_disk((L"http://127.0.0.1:" + std::to_wstring(port)).c_str())
    {
        CheckResult(m_disk.UserLogin(L"s"), "UserLogin");
    }

    const netdisk::CNetDisk* operator->() const { return &m_disk; }

    void Upload(const std::filesystem::path& file) const
    {
        wchar_t key[66];
        CheckResult(m_disk.FileUpload(file.parent_path().c_str(), file.filename().c_str(), key, 33), "FileUpload");
    }

    void Download(const std::filesystem::path& file) const
    {
        CheckResult(m_disk.FileDownload(L"k", file.parent_path().c_str(), file.filename().c_str()), "FileDownload");
    }

    void UploadBlock(std::span<char> block, std::uint32_t position) const
    {
        CheckResult(m_disk.LargeFileUpload(L"k", block.data(), static_cast<unsigned long>(block.size()), position),
                    "LargeFileUpload");
    }

    void DownloadBlock(std::span<char> block, std::uint32_t position) const
    {
        auto size = static_cast<unsigned long>(block.size());
        CheckResult(m_disk.LargeFileDownload(L"k", position, block.data(), size), "LargeFileDownload");
        CheckWholeBlock(size == block.size());
    }

private:
    netdisk::CNetDisk m_disk;
};

} // namespace quorvex::bench
