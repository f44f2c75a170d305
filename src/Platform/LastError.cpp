#include "LastError.h"

#include <windows.h>
#include <winhttp.h>

namespace quorvex::Platform
{

static_assert(kFileTooLarge == ERROR_FILE_TOO_LARGE);
static_assert(kFileIsEmpty == ERROR_FILE_INVALID);
static_assert(kInsufficientBuffer == ERROR_INSUFFICIENT_BUFFER);
static_assert(kEndOfFile == ERROR_HANDLE_EOF);
static_assert(kInvalidName == ERROR_INVALID_NAME);
static_assert(kHeaderNotFound == ERROR_WINHTTP_HEADER_NOT_FOUND);

unsigned long LastError()
{
    return ::GetLastError();
}

void SetLastError(unsigned long code)
{
    ::SetLastError(code);
}

SystemErrorText::SystemErrorText(unsigned long code)
{
    // With ALLOCATE_BUFFER the system stores a pointer where a buffer is expected otherwise.
    if (::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                         nullptr, code, 0, reinterpret_cast<wchar_t*>(&m_text), 0, nullptr) == 0)
    {
        m_text = nullptr;
    }
}

SystemErrorText::~SystemErrorText()
{
    if (m_text != nullptr)
    {
        ::LocalFree(m_text);
    }
}

} // namespace quorvex::Platform
