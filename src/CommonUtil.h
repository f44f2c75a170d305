#pragma once

#include "Platform/CodePage.h"
#include "SourceTag.h"

#include <ferrolink/log.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// The log statements, the error-text routine and the small text helpers that every part of the module uses.
namespace quorvex
{

/// The level bits of the host's logging service. Bit 4 is none of the module's.
inline constexpr unsigned int kLogTrace = 1;
inline constexpr unsigned int kLogDebug = 2;
inline constexpr unsigned int kLogError = 8;

/// One line of the log. `pieces` are joined by <<, as for a stream, and nothing of them is evaluated while the
/// level is off.
#define QUORVEX_LOG(levelBit, prefix, pieces)                                                        \
    do                                                                                               \
    {                                                                                                \
        if ((::frl_log_get_level() & (levelBit)) != 0)                                               \
        {                                                                                            \
            static constexpr ::quorvex::SourceTag quorvexTag(__FILE__);                              \
            ::frl_cxx_helper::internal::Log quorvexLine(levelBit);                                   \
            quorvexLine << prefix << pieces << "\t[" << quorvexTag.text << ':' << __LINE__ << "]\n"; \
        }                                                                                            \
    } while (false)

#define LOG_TRACE(pieces) QUORVEX_LOG(::quorvex::kLogTrace, L"[TRACE] ", pieces)
#define LOG_DEBUG(pieces) QUORVEX_LOG(::quorvex::kLogDebug, L"[DEBUG] ", pieces)
#define LOG_INFO(pieces) QUORVEX_LOG(::quorvex::kLogDebug, L"[INFO] ", pieces)
#define LOG_ERROR(pieces) QUORVEX_LOG(::quorvex::kLogError, L"[ERROR] ", pieces)

/// Describes the thread's last error in the log, in the name of this place.
#define LOG_LAST_ERROR()                                            \
    do                                                              \
    {                                                               \
        static constexpr ::quorvex::SourceTag quorvexTag(__FILE__); \
        ::quorvex::LogErrorText(quorvexTag.text, __LINE__);         \
    } while (false)

/// The line of a failed system call, followed by the description of its error. The host's log may make system
/// calls of its own, so the error is held across the first line.
#define LOG_FAILED_CALL(pieces)                         \
    do                                                  \
    {                                                   \
        const ::quorvex::LastErrorKeeper quorvexKeeper; \
        LOG_ERROR(pieces);                              \
        quorvexKeeper.Restore();                        \
        LOG_LAST_ERROR();                               \
    } while (false)

/// Holds the thread's last error code.
class LastErrorKeeper
{
public:
    LastErrorKeeper();
    void Restore() const;

private:
    unsigned long m_code;
};

/// The error-text routine: one ERROR line with the thread's last error code and the system's text for it.
/// @param callerTag  source-file tag of the caller
/// @param callerLine line of the call
void LogErrorText(const char* callerTag, int callerLine);

/// The one text behind every GetLastErrMsg: always empty, never null.
const wchar_t* LastErrMsg();

/// A fresh token of 40 random letters and digits, to part the pieces of a multipart body.
std::string BoundaryToken();

/// Every byte that is not an ASCII letter or digit becomes "%" and two uppercase hexadecimal digits.
std::string PercentEncode(std::string_view text);

/// The text of a record's array, which may be filled to its last place.
template <std::size_t Size>
std::wstring_view FieldText(const wchar_t (&field)[Size])
{
    const std::wstring_view whole(field, Size);
    return whole.substr(0, whole.find(L'\0'));
}

/// Hands a text to the caller: one that does not fit is cut, never within a character, and it always ends with a
/// zero. Nothing is written without a buffer or room.
/// @param capacity room of the buffer in characters, the zero included
void CopyToWide(std::string_view text, wchar_t* out, std::size_t capacity,
                Platform::CodePage codePage = Platform::CodePage::Utf8);
void CopyWide(std::wstring_view text, wchar_t* out, std::size_t capacity);

/// @param capacity room of the buffer in bytes, the zero included
void CopyToUtf8(std::wstring_view text, char* out, std::size_t capacity);

/// @return an owned copy; null for null
std::unique_ptr<wchar_t[]> CopyText(const wchar_t* text);
std::unique_ptr<char[]> CopyText(const char* text);

std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);

} // namespace quorvex
