#include "Completion.h"
#include "CommandLine.h"

#include <gtest/gtest.h>

namespace quorvex::console
{
namespace
{

/// What the script has behind a key in one of its tables.
std::string Entry(const std::string& script, const std::string& table, const std::string& key)
{
    const std::size_t start = script.find("\n" + table + "() {");
    const std::size_t end = script.find("esac", start);
    const std::string place = "\n    " + key + ") REPLY='";
    const std::size_t found = script.find(place, start);
    if (start == std::string::npos || found >= end)
        return "none";
    const std::size_t text = found + place.size();
    return script.substr(text, script.find('\'', text) - text);
}

TEST(Completion, HasEveryCommandWithEveryOption)
{
    const std::vector<CommandInfo> commands = AllCommands();
    const std::string script = BashCompletion(commands);
    ASSERT_GT(commands.size(), 50u);
    for (const CommandInfo& command : commands)
    {
        const std::string options = ' ' + Entry(script, "_quorvex_options", '\'' + command.words + '\'') + ' ';
        for (const ArgumentInfo& option : command.options)
            for (const std::string& name : option.names)
                EXPECT_NE(options.find(' ' + name + ' '), std::string::npos) << command.words << name;
        if (command.words.empty())
            continue;
        const std::size_t blank = command.words.rfind(' ');
        const std::string group = blank == std::string::npos ? std::string() : command.words.substr(0, blank);
        const std::string name = command.words.substr(blank == std::string::npos ? 0 : blank + 1);
        const std::string siblings = ' ' + Entry(script, "_quorvex_commands", '\'' + group + '\'') + ' ';
        EXPECT_NE(siblings.find(' ' + name + ' '), std::string::npos) << command.words;
    }
}

TEST(Completion, KnowsChoicesFilesAndWhatCannotBeGuessed)
{
    const std::string script = BashCompletion(AllCommands());
    EXPECT_EQ(Entry(script, "_quorvex_value", "'/--log'"), "words trace debug info error off");
    EXPECT_EQ(Entry(script, "_quorvex_value", "'depot/--generation'"), "words 1 2 3");
    EXPECT_EQ(Entry(script, "_quorvex_value", "'netdisk shares/--type'"), "words all alive expired");
    EXPECT_EQ(Entry(script, "_quorvex_value", "'/--log-file'"), "file");
    EXPECT_EQ(Entry(script, "_quorvex_value", "'netdisk get/--out'"), "file");
    EXPECT_EQ(Entry(script, "_quorvex_value", "'/--user'"), "any");
    EXPECT_EQ(Entry(script, "_quorvex_value", "'/--json'"), "none");
    EXPECT_EQ(Entry(script, "_quorvex_argument", "'netdisk put/'*"), "file");
    EXPECT_EQ(Entry(script, "_quorvex_argument", "'netdisk blocks send/'0"), "any");
    EXPECT_EQ(Entry(script, "_quorvex_argument", "'netdisk blocks send/'1"), "file");
    EXPECT_EQ(Entry(script, "_quorvex_argument", "'completion/'0"), "words bash");
}

TEST(Completion, IsMadeOfTheGrammarThatItIsGiven)
{
    const CommandInfo program{"", "", true, {{{"--lamp"}, "on|off", {"on", "off"}, false}}, {}};
    const CommandInfo command{"shine", "", false, {}, {{{}, "FILE", {}, true}}};
    const std::string script = BashCompletion({program, command});
    EXPECT_EQ(Entry(script, "_quorvex_commands", "''"), "shine");
    EXPECT_EQ(Entry(script, "_quorvex_value", "'/--lamp'"), "words on off");
    EXPECT_EQ(Entry(script, "_quorvex_argument", "'shine/'*"), "file");
}

} // namespace
} // namespace quorvex::console
