#include "CodePage.h"

#include <windows.h>

#include <algorithm>
#include <climits>

namespace quorvex::Platform
{

namespace
{

// The system counts in int; a longer text cannot be converted in one call.
template <class Text>
bool IsConvertible(const Text& text)
{
    return !text.empty() && text.size() <= static_cast<std::size_t>(INT_MAX);
}

std::size_t Convert(std::string_view text, CodePage codePage, wchar_t* out, std::size_t room)
{
    const std::size_t capacity = std::min(room, static_cast<std::size_t>(INT_MAX));
    return static_cast<std::size_t>(::MultiByteToWideChar(
        static_cast<UINT>(codePage), 0, text.data(), static_cast<int>(text.size()), out, static_cast<int>(capacity)));
}

std::size_t Convert(std::wstring_view text, CodePage codePage, char* out, std::size_t room)
{
    const std::size_t capacity = std::min(room, static_cast<std::size_t>(INT_MAX));
    return static_cast<std::size_t>(::WideCharToMultiByte(static_cast<UINT>(codePage), 0, text.data(),
                                                          static_cast<int>(text.size()), out,
                                                          static_cast<int>(capacity), nullptr, nullptr));
}

// A room of size zero would make the system count instead of convert.
template <class Out, class In>
std::basic_string<Out> ConvertWhole(std::basic_string_view<In> text, CodePage codePage)
{
    std::basic_string<Out> converted;
    if (IsConvertible(text))
    {
        converted.resize(Convert(text, codePage, static_cast<Out*>(nullptr), 0));
        if (!converted.empty())
        {
            converted.resize(Convert(text, codePage, converted.data(), converted.size()));
        }
    }
    return converted;
}

} // namespace

std::wstring ToWide(std::string_view text, CodePage codePage)
{
    return ConvertWhole<wchar_t>(text, codePage);
}

std::string ToNarrow(std::wstring_view text, CodePage codePage)
{
    return ConvertWhole<char>(text, codePage);
}

std::size_t ToWide(std::string_view text, CodePage codePage, std::span<wchar_t> room)
{
    if (!IsConvertible(text) || room.empty())
    {
        return 0;
    }
    std::size_t filled = Convert(text, codePage, room.data(), room.size());
    if (filled == 0)
    {
        filled = ToWide(text, codePage).copy(room.data(), room.size());
    }
    // Nothing whole ends with half a character; some systems cut there themselves.
    return filled != 0 && IsHighSurrogate(room[filled - 1]) ? filled - 1 : filled;
}

std::size_t ToNarrow(std::wstring_view text, CodePage codePage, std::span<char> room)
{
    if (!IsConvertible(text) || room.empty())
    {
        return 0;
    }
    if (const std::size_t filled = Convert(text, codePage, room.data(), room.size()); filled != 0)
    {
        return filled;
    }
    // How many bytes a character takes is the code page's matter, so the cut is found character by character.
    std::size_t filled = 0;
    while (!text.empty() && filled < room.size())
    {
        const std::size_t units = IsHighSurrogate(text[0]) && text.size() > 1 && IsLowSurrogate(text[1]) ? 2 : 1;
        const std::size_t bytes = Convert(text.substr(0, units), codePage, room.data() + filled, room.size() - filled);
        if (bytes == 0)
        {
            break;
        }
        filled += bytes;
        text.remove_prefix(units);
    }
    return filled;
}

} // namespace quorvex::Platform
