#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quorvex::Platform
{

enum class CodePage : unsigned int
{
    Ansi = 0,
    Oem = 1,
    Utf8 = 65001
};

/// Whether a character's second half follows.
constexpr bool IsHighSurrogate(wchar_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

/// Whether it is a character's second half.
constexpr bool IsLowSurrogate(wchar_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// What cannot be converted at all gives an empty text.
std::wstring ToWide(std::string_view text, CodePage codePage);
std::string ToNarrow(std::wstring_view text, CodePage codePage);

/// Converts into a given room, without a terminating zero. A text that does not fit is cut, never within a
/// character.
/// @return how many elements of the room were filled
std::size_t ToWide(std::string_view text, CodePage codePage, std::span<wchar_t> room);
std::size_t ToNarrow(std::wstring_view text, CodePage codePage, std::span<char> room);

} // namespace quorvex::Platform
