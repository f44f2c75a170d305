#include "Text.h"

#include <algorithm>

#include <windows.h>

namespace quorvex::console
{

std::string ToUtf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::optional<std::wstring> ToWide(std::string_view text)
{
    if (text.empty())
        return std::wstring();
    const int size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
    if (length == 0)
        return std::nullopt;
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, wide.data(), length);
    return wide;
}

std::wstring Wide(std::string_view text)
{
    return ToWide(text).value_or(std::wstring());
}

std::string FromSystem(std::string_view text)
{
    if (ToWide(text))
        return std::string(text);
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), size)));
    return ToUtf8(wide);
}

std::wstring JsonEscaped(std::string_view text)
{
    std::wstring escaped;
    for (const wchar_t character : Wide(text))
    {
        if (character < L' ')
        {
            const wchar_t digits[] = L"0123456789abcdef";
            escaped += L"\\u00";
            escaped += digits[character >> 4];
            escaped += digits[character & 15];
            continue;
        }
        if (character == L'"' || character == L'\\')
            escaped += L'\\';
        escaped += character;
    }
    return escaped;
}

std::wstring QueryEscaped(std::string_view text)
{
    constexpr std::wstring_view plain = L"-._~";
    std::wstring escaped;
    for (const wchar_t character : Wide(text))
    {
        const bool isPlain = character >= 0x80 || (character >= L'0' && character <= L'9') ||
                             (character >= L'A' && character <= L'Z') || (character >= L'a' && character <= L'z') ||
                             plain.find(character) != std::wstring_view::npos;
        if (isPlain)
        {
            escaped += character;
            continue;
        }
        const wchar_t digits[] = L"0123456789ABCDEF";
        escaped += L'%';
        escaped += digits[character >> 4];
        escaped += digits[character & 15];
    }
    return escaped;
}

std::string Printable(std::string_view text)
{
    std::wstring wide = Wide(text);
    const auto isControl = [](wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); };
    std::replace_if(wide.begin(), wide.end(), isControl, L'\xFFFD');
    return ToUtf8(wide);
}

std::size_t WidthOf(std::string_view text)
{
    std::size_t width = 0;
    for (const char each : text)
    {
        const auto byte = static_cast<unsigned char>(each);
        const bool continues = (byte & 0xC0) == 0x80;
        width += continues ? 0 : byte > 0xE0 ? 2 : 1;
    }
    return width;
}

} // namespace quorvex::console
