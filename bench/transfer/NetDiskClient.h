#pragma once

#include <quorvex/NetDisk.h>

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace quorvex::bench
{

/// Throws when an operation of the module gives another result than 0.
inline void CheckResult(int result, const char* operation)
{
    if (result != 0)
    {
        throw std::runtime_error(std::string(operation) + " gave result " + std::to_string(result));
    }
}

/// The module's client, logged in to a server on this machine.
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

private:
    netdisk::CNetDisk m_disk;
};

} // namespace quorvex::bench
