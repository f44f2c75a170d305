#include "support/LogCapture.h"

#include "support/Text.h"

#include <ferrolink/log.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iterator>
#include <utility>

namespace support
{
namespace
{

struct Prefix
{
    std::string_view text;
    std::string_view level;
    unsigned bit;
};

constexpr std::array<Prefix, 4> prefixes{{
    {"[TRACE] ", "TRACE", 1},
    {"[DEBUG] ", "DEBUG", 2},
    {"[INFO] ", "INFO", 2},
    {"[ERROR] ", "ERROR", 8},
}};

} // namespace

bool isSourceTag(std::string_view tag)
{
    static constexpr std::string_view start = ".\\src\\";
    if (!tag.starts_with(start) || tag.size() == start.size() || tag.back() == '\\' ||
        tag.find("..") != std::string_view::npos)
        return false;
    return std::ranges::all_of(
        tag, [](unsigned char c) { return std::isalnum(c) != 0 || c == '_' || c == '.' || c == '\\'; });
}

LogLine parseLogLine(unsigned level, std::string_view line)
{
    LogLine parsed;
    parsed.message = line;
    const auto prefix =
        std::ranges::find_if(prefixes, [&](const Prefix& candidate) { return line.starts_with(candidate.text); });
    if (prefix == prefixes.end())
    {
        parsed.defect = "unknown prefix";
        return parsed;
    }
    parsed.level = prefix->level;
    line.remove_prefix(prefix->text.size());
    parsed.message = line;
    if (prefix->bit != level)
        parsed.defect = "prefix and level bit " + std::to_string(level) + " do not fit";

    const auto tail = line.rfind("\t[");
    if (tail == std::string_view::npos || !line.ends_with("]\n"))
    {
        parsed.defect = "no tail";
        return parsed;
    }
    const std::string_view inside = line.substr(tail + 2, line.size() - tail - 4);
    const auto colon = inside.rfind(':');
    const std::string_view number = colon == std::string_view::npos ? "" : inside.substr(colon + 1);
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), parsed.number);
    parsed.tag = inside.substr(0, colon);
    if (!isSourceTag(parsed.tag) || error != std::errc{} || end != number.data() + number.size() || parsed.number == 0)
        parsed.defect = "bad tail";
    parsed.message = line.substr(0, tail);
    return parsed;
}

LogCapture::LogCapture(unsigned levels)
{
    frl_log_set_callback(&LogCapture::receive, this);
    frl_log_set_level(levels);
}

LogCapture::~LogCapture()
{
    frl_log_set_level(0);
    frl_log_set_callback(nullptr, nullptr);
}

void LogCapture::receive(void* context, unsigned level, const wchar_t* line, std::size_t length)
{
    static_cast<LogCapture*>(context)->m_lines.push_back(parseLogLine(level, toUtf8({line, length})));
}

std::vector<std::string> LogCapture::messages(std::string_view level) const
{
    std::vector<std::string> found;
    for (const LogLine& line : m_lines)
        if (line.level == level)
            found.push_back(line.message);
    return found;
}

} // namespace support
