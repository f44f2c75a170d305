#include "Platform/CodePage.h"

/// The conversions of Windows on a system without them: wide text is UTF-16, whatever room wchar_t has, damaged UTF-8
/// becomes U+FFFD, and what a narrow code page lacks a question mark. The code pages other than UTF-8 stand for any
/// with a byte a character.
namespace quorvex::Platform
{

namespace
{

constexpr char32_t kReplacement = 0xFFFD;

char32_t Decode(std::string_view& text)
{
    const auto take = [&] {
        const auto byte = static_cast<unsigned char>(text.front());
        text.remove_prefix(1);
        return static_cast<char32_t>(byte);
    };
    const char32_t lead = take();
    if (lead < 0x80)
    {
        return lead;
    }
    if (lead < 0xC2 || lead > 0xF4)
    {
        return kReplacement;
    }
    const std::size_t more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    char32_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t code = lead & (0x3FU >> more);
    for (std::size_t i = 0; i < more; ++i)
    {
        if (text.empty())
        {
            return kReplacement;
        }
        const char32_t next = static_cast<unsigned char>(text.front());
        if (next < low || next > high)
        {
            return kReplacement;
        }
        take();
        code = code << 6U | (next & 0x3FU);
        low = 0x80;
        high = 0xBF;
    }
    return code;
}

std::wstring Units(char32_t code)
{
    if (code < 0x10000)
    {
        return {static_cast<wchar_t>(code)};
    }
    return {static_cast<wchar_t>(0xD7C0 + (code >> 10U)), static_cast<wchar_t>(0xDC00 + (code & 0x3FFU))};
}

char32_t TakeCharacter(std::wstring_view& text)
{
    const auto first = static_cast<char32_t>(text.front());
    text.remove_prefix(1);
    if (IsHighSurrogate(static_cast<wchar_t>(first)) && !text.empty() && IsLowSurrogate(text.front()))
    {
        const auto second = static_cast<char32_t>(text.front());
        text.remove_prefix(1);
        return 0x10000 + ((first - 0xD800) << 10U) + (second - 0xDC00);
    }
    return first >= 0xD800 && first <= 0xDFFF ? kReplacement : first;
}

std::string Bytes(char32_t code)
{
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    const auto tail = [&](unsigned shift) { return byte(0x80 | (code >> shift & 0x3FU)); };
    if (code < 0x80)
    {
        return {byte(code)};
    }
    if (code < 0x800)
    {
        return {byte(0xC0 | code >> 6U), tail(0)};
    }
    if (code < 0x10000)
    {
        return {byte(0xE0 | code >> 12U), tail(6), tail(0)};
    }
    return {byte(0xF0 | code >> 18U), tail(12), tail(6), tail(0)};
}

std::wstring NextWide(std::string_view& text, CodePage codePage)
{
    if (codePage == CodePage::Utf8)
    {
        return Units(Decode(text));
    }
    const auto byte = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    return {static_cast<wchar_t>(byte)};
}

std::string NextNarrow(std::wstring_view& text, CodePage codePage)
{
    const char32_t code = TakeCharacter(text);
    if (codePage == CodePage::Utf8)
    {
        return Bytes(code);
    }
    return {code <= 0xFF ? static_cast<char>(static_cast<unsigned char>(code)) : '?'};
}

/// Hands over character after character until there is no room for one.
template <class In, class Next, class Element>
std::size_t Fill(In text, CodePage codePage, Next next, std::span<Element> room)
{
    std::size_t filled = 0;
    while (!text.empty())
    {
        const auto character = next(text, codePage);
        if (character.size() > room.size() - filled)
        {
            break;
        }
        filled += character.copy(room.data() + filled, character.size());
    }
    return filled;
}

} // namespace

std::wstring ToWide(std::string_view text, CodePage codePage)
{
    std::wstring wide;
    while (!text.empty())
    {
        wide += NextWide(text, codePage);
    }
    return wide;
}

std::string ToNarrow(std::wstring_view text, CodePage codePage)
{
    std::string narrow;
    while (!text.empty())
    {
        narrow += NextNarrow(text, codePage);
    }
    return narrow;
}

std::size_t ToWide(std::string_view text, CodePage codePage, std::span<wchar_t> room)
{
    return Fill(text, codePage, NextWide, room);
}

std::size_t ToNarrow(std::wstring_view text, CodePage codePage, std::span<char> room)
{
    return Fill(text, codePage, NextNarrow, room);
}

} // namespace quorvex::Platform
