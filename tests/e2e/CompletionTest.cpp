#include "DiskFixture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>

namespace quorvex::e2e
{

namespace
{

using Words = std::vector<std::string>;

/// bash with the script that the console prints.
class Completion : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const ConsoleRun run = RunConsole({"completion", "bash"});
        ASSERT_EQ(run.exitStatus, 0) << run.errors;
        std::ofstream(folder.Path() / "completion.bash", std::ios::binary) << run.output;
        std::ofstream(folder.Path() / "report.pdf") << "text";
        std::ofstream(folder.Path() / "a b.txt") << "text";
    }

    /// What bash runs with the script, in the folder.
    std::string Bash(const std::string& commands) const
    {
        const std::filesystem::path file = folder.Path() / "commands.bash";
        std::ofstream(file) << "set -eu\ncd '" << folder.Path().string() << "'\nsource ./completion.bash\n" << commands;
        const std::string line = "bash --norc --noprofile '" + file.string() + "' 2>&1";
        const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(line.c_str(), "r"), &::pclose);
        std::string output;
        std::array<char, 4096> piece{};
        while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), pipe.get()))
        {
            output.append(piece.data(), count);
        }
        return output;
    }

    /// What the last of the words can become.
    Words Completed(const Words& words) const
    {
        std::string commands = "COMP_WORDS=(";
        for (const std::string& word : words)
        {
            commands += " '" + word + '\'';
        }
        commands +=
            " )\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_quorvex\nprintf '%s\\n' ${COMPREPLY[@]+\"${COMPREPLY[@]}\"}\n";
        std::istringstream stream(Bash(commands));
        Words found;
        for (std::string line; std::getline(stream, line);)
        {
            if (!line.empty())
            {
                found.push_back(line);
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    services::test::TemporaryFolder folder;
};

bool Has(const Words& words, const std::string& word)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

} // namespace

TEST_F(Completion, KnowsTheCommands)
{
    EXPECT_EQ(Completed({"quorvex", "net"}), Words{"netdisk"});
    EXPECT_EQ(Completed({"quorvex", "netdisk", "un"}), Words{"unshare"});
    EXPECT_EQ(Completed({"quorvex", "storage", "emoticons", ""}), (Words{"get", "ls", "put", "rm"}));
    EXPECT_EQ(Completed({"quorvex", "--json", "--user", "ann", "dep"}), Words{"depot"});
    EXPECT_EQ(Completed({"quorvex", "depot", "--generation", "2", "blocks", "fi"}), Words{"finish"});
    EXPECT_EQ(Completed({"quorvex", "completion", ""}), Words{"bash"});
    EXPECT_EQ(Completed({"quorvex", "nonsense", "pu"}), Words());
}

TEST_F(Completion, KnowsTheOptionsOfACommandAndOfTheGroupsAboveIt)
{
    const Words options = Completed({"quorvex", "depot", "get", "--"});
    for (const char* const option : {"--uid", "--generation", "--server", "--json", "--help"})
    {
        EXPECT_TRUE(Has(options, option)) << option;
    }
    EXPECT_FALSE(Has(options, "--folder"));
    EXPECT_EQ(Completed({"quorvex", "netdisk", "put", "a.txt", "--blo"}), Words{"--block-size"});
}

TEST_F(Completion, KnowsTheValuesOfOptions)
{
    EXPECT_EQ(Completed({"quorvex", "--log", "t"}), Words{"trace"});
    EXPECT_EQ(Completed({"quorvex", "netdisk", "shares", "--type", ""}), (Words{"alive", "all", "expired"}));
    EXPECT_EQ(Completed({"quorvex", "storage", "login", "--generation", ""}), (Words{"1", "2", "3"}));
    EXPECT_EQ(Completed({"quorvex", "netdisk", "ls", "--user", ""}), Words());
}

TEST_F(Completion, ReadsOptionsThatBashHasTakenApart)
{
    EXPECT_EQ(Completed({"quorvex", "--log", "=", "de"}), Words{"debug"});
    EXPECT_EQ(Completed({"quorvex", "--log", "="}), (Words{"debug", "error", "info", "off", "trace"}));
    EXPECT_EQ(Completed({"quorvex", "--log", "=", "trace", "sea"}), Words{"search"});
}

TEST_F(Completion, KnowsFiles)
{
    EXPECT_EQ(Completed({"quorvex", "netdisk", "put", "rep"}), Words{"report.pdf"});
    EXPECT_EQ(Completed({"quorvex", "netdisk", "put", "report.pdf", "a"}), Words{"a b.txt"});
    EXPECT_EQ(Completed({"quorvex", "--log-file", "rep"}), Words{"report.pdf"});
    EXPECT_EQ(Completed({"quorvex", "netdisk", "get", "0a1b", "--out", "rep"}), Words{"report.pdf"});
    EXPECT_EQ(Completed({"quorvex", "netdisk", "blocks", "send", "0a1b", "rep"}), Words{"report.pdf"});
    EXPECT_EQ(Completed({"quorvex", "netdisk", "blocks", "send", "rep"}), Words());
    EXPECT_EQ(Completed({"quorvex", "netdisk", "get", "rep"}), Words());
    EXPECT_EQ(Completed({"quorvex", "md5", "--", "rep"}), Words{"report.pdf"});
}

TEST_F(Completion, ServesEachNameOfTheProgram)
{
    for (const char* const program : {"quorvex", "quorvex.exe", "./quorvex", "./run"})
    {
        EXPECT_NE(Bash("complete -p " + std::string(program)).find("-F _quorvex"), std::string::npos) << program;
        EXPECT_EQ(Completed({program, "netdisk", "quo"}), Words{"quota"});
    }
}

} // namespace quorvex::e2e
