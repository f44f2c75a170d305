#include "common/Text.h"

#include <algorithm>
#include <charconv>

namespace quorvex::services
{

namespace
{

char LowerCase(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// The length of the sequence that a first byte announces, 0 when no sequence begins so.
std::size_t SequenceLength(unsigned char first)
{
    if (first < 0x80)
    {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0)
    {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0)
    {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

// Over-long forms, surrogates and values past the last code point show in the second byte.
bool IsSecondByteAllowed(unsigned char first, unsigned char second)
{
    switch (first)
    {
    case 0xE0:
        return second >= 0xA0;
    case 0xED:
        return second < 0xA0;
    case 0xF0:
        return second >= 0x90;
    case 0xF4:
        return second < 0x90;
    default:
        return true;
    }
}

} // namespace

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos)
    {
        return {};
    }
    return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view lowercasePrefix)
{
    return text.size() >= lowercasePrefix.size() &&
           std::equal(lowercasePrefix.begin(), lowercasePrefix.end(), text.begin(),
                      [](char expected, char actual) { return expected == LowerCase(actual); });
}

std::optional<std::uint64_t> ParseUnsigned(std::string_view digits)
{
    std::uint64_t value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, value);
    if (error != std::errc() || rest != end)
    {
        return std::nullopt;
    }
    return value;
}

bool IsValidUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const auto first = static_cast<unsigned char>(text[0]);
        const std::size_t length = SequenceLength(first);
        if (length == 0 || length > text.size())
        {
            return false;
        }
        if (length > 1 && !IsSecondByteAllowed(first, static_cast<unsigned char>(text[1])))
        {
            return false;
        }
        const std::string_view rest = text.substr(1, length - 1);
        if (!std::all_of(rest.begin(), rest.end(),
                         [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }))
        {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string_view CutToUtf16Units(std::string_view text, std::size_t units)
{
    std::size_t end = 0;
    while (end < text.size())
    {
        const std::size_t length = SequenceLength(static_cast<unsigned char>(text[end]));
        const std::size_t taken = length == 4 ? 2 : 1;
        if (taken > units)
        {
            break;
        }
        units -= taken;
        end += length;
    }
    return text.substr(0, end);
}

} // namespace quorvex::services
