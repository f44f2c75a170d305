#include "support/Text.h"

#include <windows.h>

namespace support
{

std::string toUtf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    std::string utf8(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr);
    return utf8;
}

std::wstring toWide(std::string_view utf8)
{
    const int length = static_cast<int>(utf8.size());
    std::wstring text(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0)),
                      L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), static_cast<int>(text.size()));
    return text;
}

std::string escaped(std::string_view bytes)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        switch (c)
        {
        case '\r':
            text += "\\r";
            break;
        case '\n':
            text += "\\n";
            break;
        case '\t':
            text += "\\t";
            break;
        case '\\':
            text += "\\\\";
            break;
        default:
            if (byte >= 0x20 && byte < 0x7F)
                text += c;
            else
                text.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
        }
    }
    return text;
}

} // namespace support
