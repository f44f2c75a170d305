#include "LineFile.h"

#include <memory>
#include <new>

#include <windows.h>

namespace ferrolink
{
namespace
{

void WriteBytes(HANDLE file, const wchar_t* line, int length) noexcept
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, line, length, nullptr, 0, nullptr, nullptr);
    if (size <= 0)
        return;
    const std::unique_ptr<char[]> bytes(new (std::nothrow) char[static_cast<std::size_t>(size)]);
    if (!bytes)
        return;
    WideCharToMultiByte(CP_UTF8, 0, line, length, bytes.get(), size, nullptr, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes.get(), static_cast<DWORD>(size), &written, nullptr);
}

} // namespace

int LineFile::Open(const wchar_t* path) noexcept
{
    // With append access alone the system places each write at the file's end, also beside other writers.
    const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return static_cast<int>(GetLastError());
    UseStandardError();
    m_file = file;
    return 0;
}

void LineFile::UseStandardError() noexcept
{
    if (m_file != nullptr)
        CloseHandle(m_file);
    m_file = nullptr;
}

void LineFile::Write(const wchar_t* line, std::size_t length) noexcept
{
    constexpr std::size_t kLongest = 0x10000000;
    if (length == 0 || length > kLongest)
        return;
    if (m_file != nullptr)
        return WriteBytes(m_file, line, static_cast<int>(length));

    const HANDLE standardError = GetStdHandle(STD_ERROR_HANDLE);
    DWORD value = 0;
    // A console has a code page of its own; only its wide interface shows every script.
    if (GetConsoleMode(standardError, &value))
        WriteConsoleW(standardError, line, static_cast<DWORD>(length), &value, nullptr);
    else
        WriteBytes(standardError, line, static_cast<int>(length));
}

LastErrorKeeper::LastErrorKeeper() noexcept : m_code(GetLastError())
{
}

LastErrorKeeper::~LastErrorKeeper()
{
    SetLastError(m_code);
}

} // namespace ferrolink
