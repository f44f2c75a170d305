#include "wire/Comparison.h"

#include "support/Text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace wire
{
namespace
{

std::vector<std::string> escapedLines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty())
    {
        const auto end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(support::escaped(text.substr(0, end)));
        text.remove_prefix(end);
    }
    return lines;
}

/// Long lines are shown around the place that differs.
std::string shortened(const std::string& line, std::size_t around)
{
    static constexpr std::size_t most = 400;
    if (line.size() <= most)
        return line;
    const std::size_t from = around > most / 2 ? around - most / 2 : 0;
    if (from >= line.size())
        return "... (" + std::to_string(line.size()) + " characters)";
    return (from > 0 ? "..." : "") + line.substr(from, most) + " ... (" + std::to_string(line.size()) + " characters)";
}

std::string listing(const char* title, const std::vector<std::string>& lines, std::size_t marked, std::size_t column)
{
    std::string text = std::string("  ") + title + "\n";
    for (std::size_t i = 0; i < lines.size(); ++i)
        text += (i == marked ? "  => " : "     ") + shortened(lines[i], i == marked ? column : 0) + "\n";
    if (marked >= lines.size())
        text += "  => (end)\n";
    return text;
}

std::string lineText(const support::LogLine& line)
{
    return line.level + " " + support::escaped(line.message) + "   [" + line.tag + ":" + std::to_string(line.number) +
           "]" + (line.defect.empty() ? "" : "   DEFECT: " + line.defect);
}

std::string logText(const std::vector<support::LogLine>& lines)
{
    std::string text = "  the whole log:\n";
    for (const support::LogLine& line : lines)
        text += "     " + shortened(lineText(line), 0) + "\n";
    return text;
}

} // namespace

std::string sideBySide(std::string_view expected, std::string_view actual)
{
    const std::vector<std::string> left = escapedLines(expected);
    const std::vector<std::string> right = escapedLines(actual);
    const auto [a, b] = std::ranges::mismatch(left, right);
    const auto marked = static_cast<std::size_t>(a - left.begin());
    std::size_t column = 0;
    if (a != left.end() && b != right.end())
        column = static_cast<std::size_t>(std::ranges::mismatch(*a, *b).in1 - a->begin());
    return listing("expected:", left, marked, column) + listing("actual:", right, marked, column);
}

std::string compareRequests(const std::vector<ExpectedRequest>& expected, const std::vector<std::string>& actual)
{
    std::string differences;
    std::set<std::string> boundaries;
    for (std::size_t i = 0; i < std::min(expected.size(), actual.size()); ++i)
    {
        const Pattern::Match match = expected[i].pattern.match(actual[i]);
        if (!match.matched)
            differences += "request " + std::to_string(i + 1) + " (line " + std::to_string(expected[i].line) +
                           ") differs\n" + sideBySide(expected[i].pattern.text(match.boundary), actual[i]);
        if (!match.boundary.empty() && !boundaries.insert(match.boundary).second)
            differences += "request " + std::to_string(i + 1) + " uses an earlier request's boundary\n";
    }
    for (std::size_t i = actual.size(); i < expected.size(); ++i)
        differences +=
            "request " + std::to_string(i + 1) + " (line " + std::to_string(expected[i].line) + ") did not come\n";
    return differences;
}

std::string compareLog(const CaseFile& file, const std::vector<support::LogLine>& actual)
{
    std::string differences;
    auto expected = file.log.begin();
    for (const support::LogLine& line : actual)
    {
        if (!line.defect.empty())
            differences += "a log line is not well formed: " + lineText(line) + "\n";
        const bool isListed = expected != file.log.end() && expected->level == line.level &&
                              expected->message.match(line.message).matched;
        if (isListed)
            ++expected;
        else if (std::ranges::find(file.exactLevels, line.level) != file.exactLevels.end())
            differences += "a log line is not listed here: " + lineText(line) + "\n";
    }
    if (expected != file.log.end())
        differences += "line " + std::to_string(expected->line) +
                       ": this log line was not written: " + expected->level + " " +
                       support::escaped(expected->message.text()) + "\n";
    return differences.empty() ? differences : differences + logText(actual);
}

} // namespace wire
