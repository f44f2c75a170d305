#include "Times.h"

#include <array>
#include <charconv>
#include <ctime>

namespace quorvex::console
{
namespace
{

struct Unit
{
    char letter;
    const char* name;
    std::uint32_t seconds;
};

constexpr std::array<Unit, 4> kUnits{
    {{'d', "day", 86400}, {'h', "hour", 3600}, {'m', "minute", 60}, {'s', "second", 1}}};

} // namespace

std::optional<std::uint32_t> ParseSpan(std::string_view text)
{
    for (const Unit& unit : kUnits)
    {
        if (text.empty() || text.back() != unit.letter)
            continue;
        const char* const end = text.data() + text.size() - 1;
        std::uint32_t count = 0;
        const auto [stop, error] = std::from_chars(text.data(), end, count);
        if (error != std::errc() || stop != end || count == 0 || count > UINT32_MAX / unit.seconds)
            return std::nullopt;
        return count * unit.seconds;
    }
    return std::nullopt;
}

std::string SpanText(std::uint32_t seconds)
{
    const Unit* unit = kUnits.data();
    while (seconds == 0 ? unit->seconds != 1 : seconds % unit->seconds != 0)
        ++unit;
    const std::uint32_t count = seconds / unit->seconds;
    return std::to_string(count) + ' ' + unit->name + (count == 1 ? "" : "s");
}

std::string RoughSpanText(std::int64_t minutes)
{
    for (const Unit& unit : kUnits)
    {
        const std::int64_t count = minutes * 60 / unit.seconds;
        if (count >= 2 || unit.letter == 'm')
            return std::to_string(count) + ' ' + unit.name + (count == 1 ? "" : "s");
    }
    return {};
}

std::string LocalTimeText(std::int64_t seconds)
{
    const __time64_t time = seconds;
    std::tm local{};
    std::array<char, 32> text{};
    if (seconds <= 0 || _localtime64_s(&local, &time) != 0)
        return {};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

} // namespace quorvex::console
