#include "File.h"

#include <windows.h>

#include <utility>

namespace quorvex::Platform
{

File::~File()
{
    Close();
}

bool File::OpenToRead(const wchar_t* path, Share share, Access access)
{
    return Open(path, GENERIC_READ, share == Share::Nothing ? 0 : FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
                access == Access::Normal ? FILE_ATTRIBUTE_NORMAL : FILE_FLAG_RANDOM_ACCESS);
}

bool File::OpenToWrite(const wchar_t* path, Existing existing)
{
    return Open(path, GENERIC_READ | GENERIC_WRITE, 0, existing == Existing::Kept ? OPEN_ALWAYS : CREATE_ALWAYS,
                FILE_ATTRIBUTE_NORMAL);
}

bool File::Open(const wchar_t* path, unsigned long access, unsigned long share, unsigned long creation,
                unsigned long flags)
{
    Close();
    void* const handle = ::CreateFileW(path, access, share, nullptr, creation, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    m_handle = handle;
    return true;
}

bool File::Size(std::uint64_t& size) const
{
    DWORD high = 0;
    ::SetLastError(NO_ERROR);
    const DWORD low = ::GetFileSize(m_handle, &high);
    if (low == INVALID_FILE_SIZE && ::GetLastError() != NO_ERROR)
    {
        return false;
    }
    size = (std::uint64_t{high} << 32) | low;
    return true;
}

bool File::Read(void* buffer, std::uint32_t room, std::uint32_t& read) const
{
    DWORD count = 0;
    const bool done = ::ReadFile(m_handle, buffer, room, &count, nullptr) != FALSE;
    read = count;
    return done;
}

bool File::Write(const void* data, std::uint32_t size, std::uint32_t& written) const
{
    DWORD count = 0;
    const bool done = ::WriteFile(m_handle, data, size, &count, nullptr) != FALSE;
    written = count;
    return done;
}

bool File::Close()
{
    void* const handle = std::exchange(m_handle, nullptr);
    return handle == nullptr || ::CloseHandle(handle) != FALSE;
}

bool FileSize(const wchar_t* path, std::uint64_t& size)
{
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    if (::GetFileAttributesExW(path, GetFileExInfoStandard, &attributes) == 0)
    {
        return false;
    }
    size = (std::uint64_t{attributes.nFileSizeHigh} << 32U) | attributes.nFileSizeLow;
    return true;
}

} // namespace quorvex::Platform
