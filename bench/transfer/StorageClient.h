#pragma once

#include "CheckResult.h"

#include <quorvex/FileStorage.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace quorvex::bench
{

/// The module's client of the shared file storage, logged in to a server on this machine.
class StorageClient
{
public:
    explicit StorageClient(std::uint16_t port)
        : m_storage((L"http://127.0.0.1:" + std::to_wstring(port)).c_str(), nullptr)
    {
        CheckResult(m_storage.UserLogin(L"s"), "UserLogin");
    }

    void Upload(const std::filesystem::path& file) const
    {
        CheckResult(m_storage.UserPhotoUpload(file.parent_path().c_str(), file.filename().c_str(), L"data.bin"),
                    "UserPhotoUpload");
    }

    void Download(const std::filesystem::path& file) const
    {
        CheckResult(m_storage.UserPhotoDownload(file.parent_path().c_str(), L"k", file.filename().c_str()),
                    "UserPhotoDownload");
    }

    void UploadBlock(std::span<char> block, std::uint32_t position) const
    {
        CheckResult(m_storage.LargeFileUpload(L"k", block.data(), static_cast<unsigned long>(block.size()), position),
                    "LargeFileUpload");
    }

    void DownloadBlock(std::span<char> block, std::uint32_t position) const
    {
        auto size = static_cast<unsigned long>(block.size());
        CheckResult(m_storage.LargeFileDownload(L"", L"k", position, block.data(), size), "LargeFileDownload");
        CheckWholeBlock(size == block.size());
    }

private:
    CFileStorage m_storage;
};

} // namespace quorvex::bench
