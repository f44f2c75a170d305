#include "CommandLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace quorvex::console
{
namespace
{

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The arguments in a line of a shell, whose quotation marks hold words together.
std::vector<std::string> Arguments(const std::string& line)
{
    std::vector<std::string> arguments(1);
    bool isQuoted = false;
    for (const char letter : line)
    {
        if (letter == '"')
            isQuoted = !isQuoted;
        else if (letter == ' ' && !isQuoted)
            arguments.emplace_back();
        else
            arguments.back() += letter;
    }
    return arguments;
}

std::string HelpOf(const std::string& words)
{
    std::vector<std::string> arguments = words.empty() ? std::vector<std::string>() : Arguments(words);
    arguments.emplace_back("--help");
    Answer answer;
    EXPECT_FALSE(ParseCommandLine(arguments, answer).has_value());
    EXPECT_EQ(answer.exitStatus, 0) << words;
    return answer.text;
}

/// The lines that a help ends with, behind "Examples:".
std::vector<std::string> ExamplesIn(const std::string& help)
{
    std::vector<std::string> lines = Lines(help);
    while (!lines.empty() && lines.back().empty())
        lines.pop_back();
    const auto title = std::find(lines.begin(), lines.end(), "Examples:");
    return title == lines.end() ? std::vector<std::string>() : std::vector<std::string>(title + 1, lines.end());
}

TEST(Help, OfEveryCommandEndsWithOneOrTwoExamples)
{
    for (const CommandInfo& command : AllCommands())
    {
        const std::vector<std::string> examples = ExamplesIn(HelpOf(command.words));
        EXPECT_GE(examples.size(), 1u) << command.words;
        EXPECT_LE(examples.size(), 2u) << command.words;
        const std::string start = "  quorvex " + command.words;
        for (const std::string& each : examples)
            EXPECT_EQ(each.rfind(start, 0), 0u) << command.words << ": " << each;
    }
}

TEST(Help, HasExamplesThatTheProgramTakes)
{
    const std::string program = "  quorvex ";
    for (const CommandInfo& command : AllCommands())
    {
        for (const std::string& each : ExamplesIn(HelpOf(command.words)))
        {
            const std::string line = each.substr(program.size(), each.find(" > ") - program.size());
            Answer answer;
            const auto invocation = ParseCommandLine(Arguments(line), answer);
            ASSERT_TRUE(invocation.has_value()) << each << ": " << answer.text;
            EXPECT_EQ(invocation->words.rfind(command.words, 0), 0u) << each;
        }
    }
}

TEST(Help, DescribesEveryCommandAndArgument)
{
    for (const CommandInfo& command : AllCommands())
    {
        EXPECT_FALSE(command.description.empty()) << command.words;
        const std::string help = HelpOf(command.words);
        for (const ArgumentInfo& option : command.options)
            EXPECT_NE(help.find(option.names.back()), std::string::npos) << command.words << option.names.back();
    }
}

} // namespace
} // namespace quorvex::console
