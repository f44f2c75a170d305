#pragma once

namespace quorvex::Platform
{

/// The calling thread's last error code.
unsigned long LastError();
void SetLastError(unsigned long code);

/// The last error codes that the module itself tells apart or sets.
inline constexpr unsigned long kFileTooLarge = 223;       // ERROR_FILE_TOO_LARGE
inline constexpr unsigned long kFileIsEmpty = 1006;       // ERROR_FILE_INVALID
inline constexpr unsigned long kInsufficientBuffer = 122; // ERROR_INSUFFICIENT_BUFFER
inline constexpr unsigned long kEndOfFile = 38;           // ERROR_HANDLE_EOF
inline constexpr unsigned long kInvalidName = 123;        // ERROR_INVALID_NAME
inline constexpr unsigned long kHeaderNotFound = 12150;   // ERROR_WINHTTP_HEADER_NOT_FOUND

/// The system's text for an error code, in a buffer of the system's that lives as long as this object.
class SystemErrorText
{
public:
    explicit SystemErrorText(unsigned long code);
    ~SystemErrorText();
    SystemErrorText(const SystemErrorText&) = delete;
    SystemErrorText& operator=(const SystemErrorText&) = delete;

    /// Null when the system has no text for the code.
    const wchar_t* Text() const { return m_text; }

private:
    wchar_t* m_text = nullptr;
};

} // namespace quorvex::Platform
