#include "Text.h"

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

} // namespace quorvex::console
