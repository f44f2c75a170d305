#ifndef FERROLINK_LOG_H
#define FERROLINK_LOG_H

/// @file
/// The host's logging service. The C functions are the whole binary interface; the C++ helper below is compiled
/// into its user, so both sides may be built by different compilers.
///
/// Every function may be called from any thread, throws nothing and leaves the thread's last-error code as it was.

#include "export.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /// Level bits; a set of them is or-ed together. Bit 4 belongs to the host.
    enum frl_log_level
    {
        FRL_LOG_TRACE = 1,
        FRL_LOG_DEBUG = 2,
        FRL_LOG_ERROR = 8
    };

    /// Receives one whole line.
    /// @param context what was given to frl_log_set_callback
    /// @param level   the line's level bit
    /// @param line    the text, its newline included; not terminated by a zero; valid during the call only
    /// @param length  number of wide characters in line
    typedef void (*frl_log_callback)(void* context, unsigned level, const wchar_t* line, size_t length);

    /// @return the set of enabled level bits; 0, nothing enabled, until frl_log_set_level is called
    FERROLINK_API unsigned frl_log_get_level(void);

    /// Enables exactly the given level bits, for every thread at once.
    /// @param levels the bits; 0 for none
    FERROLINK_API void frl_log_set_level(unsigned levels);

    /// Hands one line to where lines go. It is written whole and never mixed with another thread's line. The level
    /// is not tested again: whoever starts a line has done that. A line that cannot be written is dropped, and so is
    /// one that a callback writes while it is being called.
    /// @param level  the line's level bit
    /// @param line   the text; need not be terminated by a zero; null writes nothing
    /// @param length number of wide characters in line
    FERROLINK_API void frl_log_write(unsigned level, const wchar_t* line, size_t length);

    /// Sends lines to the standard error stream, in UTF-8; this is where they go at the start.
    FERROLINK_API void frl_log_set_stderr(void);

    /// Appends lines to a file, in UTF-8. The file is created when it is missing, and others may read, write and
    /// rename it meanwhile.
    /// @param path the file; not null
    /// @return 0, or the system's error code; then lines go where they went before
    FERROLINK_API int frl_log_set_file(const wchar_t* path);

    /// Gives lines to a function, one call at a time, on the thread that wrote the line. On return from this
    /// function, or from any other that sends lines elsewhere, the former callback has been left and is not called
    /// again (unless the callback itself made the change: then it is still running, for the last time).
    /// @param callback the function, which throws nothing; null drops all lines
    /// @param context  passed to it as it is
    FERROLINK_API void frl_log_set_callback(frl_log_callback callback, void* context);

#ifdef __cplusplus
} // extern "C"

#include <cstdio>
#include <string>

namespace frl_cxx_helper
{
namespace internal
{

/// One line in the making: pieces are inserted, and the destructor hands the whole to the host.
/// Insertion never fails; text that finds no memory is left out.
class Log
{
public:
    /// @param level the line's level bit, which the caller has found enabled
    explicit Log(unsigned level) noexcept : m_level(level) {}

    /// Hands the line over.
    ~Log() { frl_log_write(m_level, m_line.data(), m_line.size()); }

    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    /// @name Texts
    /// Inserted whatever the level has become. Narrow text is UTF-8; bytes that are none become U+FFFD. A null
    /// pointer reads "(null)".
    /// @{

    /// @param text the text
    /// @return this line
    Log& operator<<(const wchar_t* text) noexcept
    {
        return text ? Guarded([&] { m_line.append(text); }) : *this << L"(null)";
    }
    Log& operator<<(const std::wstring& text) noexcept
    {
        return Guarded([&] { m_line.append(text); });
    }
    Log& operator<<(const char* text) noexcept
    {
        return text ? AppendUtf8(text, std::char_traits<char>::length(text)) : *this << L"(null)";
    }
    Log& operator<<(const std::string& text) noexcept { return AppendUtf8(text.data(), text.size()); }
    /// @}

    /// @name Characters
    /// Left out when the line's level has been disabled meanwhile.
    /// @{

    /// @param character the character
    /// @return this line
    Log& operator<<(wchar_t character) noexcept
    {
        return IsEnabled() ? Guarded([&] { m_line.push_back(character); }) : *this;
    }
    Log& operator<<(char character) noexcept { return IsEnabled() ? AppendUtf8(&character, 1) : *this; }
    /// @}

    /// @name Numbers and addresses
    /// Left out when the line's level has been disabled meanwhile.
    /// @{

    /// @param number the number, which becomes decimal
    /// @return this line
    Log& operator<<(signed char number) noexcept { return AppendSigned(number); }
    Log& operator<<(unsigned char number) noexcept { return AppendUnsigned(number); }
    Log& operator<<(short number) noexcept { return AppendSigned(number); }
    Log& operator<<(unsigned short number) noexcept { return AppendUnsigned(number); }
    Log& operator<<(int number) noexcept { return AppendSigned(number); }
    Log& operator<<(unsigned int number) noexcept { return AppendUnsigned(number); }
    Log& operator<<(long number) noexcept { return AppendSigned(number); }
    Log& operator<<(unsigned long number) noexcept { return AppendUnsigned(number); }
    Log& operator<<(long long number) noexcept { return AppendSigned(number); }
    Log& operator<<(unsigned long long number) noexcept { return AppendUnsigned(number); }

    /// With as many digits as a double holds for certain.
    /// @param number the number
    /// @return this line
    Log& operator<<(double number) noexcept
    {
        char digits[32];
        const int length = IsEnabled() ? std::snprintf(digits, sizeof(digits), "%.15g", number) : 0;
        return length > 0 ? AppendUtf8(digits, static_cast<size_t>(length)) : *this;
    }

    /// A handle or an address, as "0x" and hexadecimal digits.
    /// @param handle the handle or address
    /// @return this line
    Log& operator<<(const void* handle) noexcept { return AppendDigits(reinterpret_cast<size_t>(handle), 16, L"0x"); }
    /// @}

private:
    bool IsEnabled() const noexcept { return (frl_log_get_level() & m_level) != 0; }

    template <typename Action>
    Log& Guarded(Action append) noexcept
    {
        const size_t whole = m_line.size();
        try
        {
            append();
        }
        catch (...)
        {
            m_line.resize(whole);
        }
        return *this;
    }

    Log& AppendSigned(long long number) noexcept
    {
        const bool negative = number < 0;
        const unsigned long long magnitude = static_cast<unsigned long long>(number);
        return AppendDigits(negative ? 0 - magnitude : magnitude, 10, negative ? L"-" : L"");
    }

    Log& AppendUnsigned(unsigned long long number) noexcept { return AppendDigits(number, 10, L""); }

    Log& AppendDigits(unsigned long long number, unsigned base, const wchar_t* prefix) noexcept
    {
        if (!IsEnabled())
            return *this;
        wchar_t digits[24];
        wchar_t* const end = digits + 23;
        wchar_t* first = end;
        *end = L'\0';
        do
        {
            *--first = L"0123456789abcdef"[number % base];
            number /= base;
        } while (number != 0);
        return Guarded([&] { m_line.append(prefix).append(first); });
    }

    Log& AppendUtf8(const char* text, size_t length) noexcept
    {
        return Guarded([&] {
            m_line.reserve(m_line.size() + length);
            for (const char* at = text; at != text + length;)
                PushCodePoint(NextCodePoint(at, text + length));
        });
    }

    void PushCodePoint(unsigned long codePoint)
    {
        if (sizeof(wchar_t) == 2 && codePoint > 0xFFFF)
        {
            m_line.push_back(static_cast<wchar_t>(0xD7C0 + (codePoint >> 10)));
            m_line.push_back(static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF)));
            return;
        }
        m_line.push_back(static_cast<wchar_t>(codePoint));
    }

    /// Decodes one character and moves behind it. Of a damaged one, as much as could have begun a character counts
    /// as one U+FFFD, so that the next good byte is never swallowed.
    static unsigned long NextCodePoint(const char*& at, const char* end) noexcept
    {
        const unsigned lead = static_cast<unsigned char>(*at++);
        if (lead < 0x80)
            return lead;
        if (lead < 0xC2 || lead > 0xF4)
            return 0xFFFD;

        const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        // The second byte rules out over-long forms, surrogates and what lies beyond U+10FFFF.
        unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        unsigned long codePoint = lead & (0x3Fu >> more);
        for (int i = 0; i < more; ++i)
        {
            if (at == end)
                return 0xFFFD;
            const unsigned next = static_cast<unsigned char>(*at);
            if (next < low || next > high)
                return 0xFFFD;
            codePoint = codePoint << 6 | (next & 0x3F);
            low = 0x80;
            high = 0xBF;
            ++at;
        }
        return codePoint;
    }

    unsigned m_level;
    std::wstring m_line;
};

} // namespace internal
} // namespace frl_cxx_helper

#endif

#endif
