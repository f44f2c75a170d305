#include "storage/ClientText.h"

#include "common/FileName.h"
#include "common/HttpAnswers.h"
#include "common/Text.h"

#include <algorithm>
#include <string>

namespace quorvex::services::storage
{

namespace
{

// Code page 437: the signs from 0x01 on, which stand where other code pages have control characters, and those from
// 0x80 on.
constexpr std::u16string_view LowSigns =
    u"\u263A\u263B\u2665\u2666\u2663\u2660\u2022\u25D8\u25CB\u25D9\u2642\u2640\u266A\u266B\u263C\u25BA"
    u"\u25C4\u2195\u203C\u00B6\u00A7\u25AC\u21A8\u2191\u2193\u2192\u2190\u221F\u2194\u25B2\u25BC";
constexpr std::u16string_view HighSigns =
    u"\u00C7\u00FC\u00E9\u00E2\u00E4\u00E0\u00E5\u00E7\u00EA\u00EB\u00E8\u00EF\u00EE\u00EC\u00C4\u00C5"
    u"\u00C9\u00E6\u00C6\u00F4\u00F6\u00F2\u00FB\u00F9\u00FF\u00D6\u00DC\u00A2\u00A3\u00A5\u20A7\u0192"
    u"\u00E1\u00ED\u00F3\u00FA\u00F1\u00D1\u00AA\u00BA\u00BF\u2310\u00AC\u00BD\u00BC\u00A1\u00AB\u00BB"
    u"\u2591\u2592\u2593\u2502\u2524\u2561\u2562\u2556\u2555\u2563\u2551\u2557\u255D\u255C\u255B\u2510"
    u"\u2514\u2534\u252C\u251C\u2500\u253C\u255E\u255F\u255A\u2554\u2569\u2566\u2560\u2550\u256C\u2567"
    u"\u2568\u2564\u2565\u2559\u2558\u2552\u2553\u256B\u256A\u2518\u250C\u2588\u2584\u258C\u2590\u2580"
    u"\u03B1\u00DF\u0393\u03C0\u03A3\u03C3\u00B5\u03C4\u03A6\u0398\u03A9\u03B4\u221E\u03C6\u03B5\u2229"
    u"\u2261\u00B1\u2265\u2264\u2320\u2321\u00F7\u2248\u00B0\u2219\u00B7\u221A\u207F\u00B2\u25A0\u00A0";
constexpr char16_t House = u'\u2302';

static_assert(LowSigns.size() == 0x1F && HighSigns.size() == 0x80);

// All of these signs lie in the basic plane, and none takes one byte.
void AppendUtf8(std::string& text, char16_t sign)
{
    const auto tail = [](unsigned bits) { return static_cast<char>(0x80U | (bits & 0x3FU)); };
    if (sign < 0x800)
    {
        text += static_cast<char>(0xC0U | (sign >> 6U));
    }
    else
    {
        text += static_cast<char>(0xE0U | (sign >> 12U));
        text += tail(static_cast<unsigned>(sign) >> 6U);
    }
    text += tail(sign);
}

} // namespace

std::string TextFromClient(std::string_view bytes)
{
    const bool isUtf8 = IsValidUtf8(bytes);
    std::string text;
    for (const char letter : bytes)
    {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte == 0x7F)
        {
            AppendUtf8(text, House);
        }
        else if (byte > 0 && byte <= LowSigns.size())
        {
            AppendUtf8(text, LowSigns[byte - 1U]);
        }
        else if (byte >= 0x80 && !isUtf8)
        {
            AppendUtf8(text, HighSigns[byte - 0x80U]);
        }
        else
        {
            text += letter;
        }
    }
    return text;
}

void RequireKey(std::string_view key)
{
    RequireName(key);
    if (CutToUtf16Units(key, MaxKeyLength).size() < key.size())
    {
        throw HttpError(Status::BadRequest, "the name is too long for a key");
    }
}

std::string ListedName(std::string_view name)
{
    std::size_t size = std::min(name.size(), MaxKeyLength);
    // A following byte means that the cut would go through a character.
    while (size < name.size() && size > 0 && (static_cast<unsigned char>(name[size]) & 0xC0U) == 0x80U)
    {
        --size;
    }
    return std::string(name.substr(0, size));
}

} // namespace quorvex::services::storage
