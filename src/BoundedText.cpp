#include "BoundedText.h"

#include <algorithm>

namespace quorvex
{

namespace
{

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// @return how many bytes a character has that begins with this one
std::size_t CharacterLength(char lead)
{
    const auto byte = static_cast<unsigned char>(lead);
    return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
}

} // namespace

std::size_t WholeUtf8(std::string_view text, std::size_t count)
{
    static constexpr std::size_t kLongestWithoutEnd = 3;

    if (count == text.size() || !IsContinuation(text[count]))
    {
        return count;
    }
    for (std::size_t back = 1; back <= std::min(count, kLongestWithoutEnd); ++back)
    {
        const char byte = text[count - back];
        if (!IsContinuation(byte))
        {
            return CharacterLength(byte) > back ? count - back : count;
        }
    }
    return count;
}

} // namespace quorvex
