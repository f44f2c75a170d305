#include "CommandLine.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorvex::console
{
namespace
{

class CommandLineTest : public testing::Test
{
protected:
    void SetUp() override
    {
        _wputenv(L"QUORVEX_SERVER=");
        _wputenv(L"QUORVEX_PASSWORD=");
    }
    void TearDown() override { SetUp(); }

    Invocation Parsed(const std::vector<std::string>& arguments)
    {
        const auto invocation = ParseCommandLine(arguments, m_answer);
        EXPECT_TRUE(invocation.has_value()) << m_answer.text;
        return invocation.value_or(Invocation());
    }

    /// What is complained about; empty when the command line is right.
    std::string Complaint(const std::vector<std::string>& arguments)
    {
        const auto invocation = ParseCommandLine(arguments, m_answer);
        EXPECT_FALSE(invocation.has_value());
        EXPECT_EQ(m_answer.exitStatus, 2);
        return m_answer.text;
    }

    Answer m_answer;
};

TEST_F(CommandLineTest, ReadsOptionsBeforeAndBehindTheCommand)
{
    const Invocation before =
        Parsed({"--server", "http://a/b", "--user", "ann", "--password", "p w", "netdisk", "put", "a.txt"});
    const Invocation behind =
        Parsed({"netdisk", "put", "a.txt", "--server", "http://a/b", "--user", "ann", "--password", "p w"});
    for (const Invocation& each : {before, behind})
    {
        EXPECT_EQ(each.command, &PutCommand);
        EXPECT_EQ(each.options.server, "http://a/b");
        EXPECT_EQ(each.options.user, "ann");
        EXPECT_EQ(each.options.password, "p w");
        EXPECT_EQ(each.options.file, "a.txt");
    }
}

TEST_F(CommandLineTest, KnowsEveryCommand)
{
    const std::vector<std::pair<std::vector<std::string>, Command>> commands{
        {{"login"}, &LoginCommand},
        {{"put", "f"}, &PutCommand},
        {{"get", "k"}, &GetCommand},
        {{"info", "k"}, &InfoCommand},
        {{"mv", "k", "--name", "n"}, &MoveCommand},
        {{"rm", "k"}, &RemoveCommand},
        {{"quota"}, &QuotaCommand},
        {{"checksum", "f"}, &ChecksumCommand},
    };
    for (const auto& [words, command] : commands)
    {
        std::vector<std::string> arguments{"netdisk"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        arguments.insert(arguments.end(), {"--session", "s"});
        EXPECT_EQ(Parsed(arguments).command, command) << words.front();
        arguments.emplace_back("--help");
        EXPECT_FALSE(ParseCommandLine(arguments, m_answer).has_value());
        EXPECT_EQ(m_answer.exitStatus, 0);
        EXPECT_NE(m_answer.text.find("Examples:\n  quorvex netdisk " + words.front()), std::string::npos);
    }
}

TEST_F(CommandLineTest, TakesAPathWithSlashesAsAFile)
{
    EXPECT_EQ(Parsed({"netdisk", "checksum", "/home/me/file"}).options.file, "/home/me/file");
    EXPECT_EQ(Parsed({"netdisk", "checksum", "--", "-file"}).options.file, "-file");
}

TEST_F(CommandLineTest, ReadsSizesWithUnits)
{
    const Options options =
        Parsed({"netdisk", "put", "f", "--session", "s", "--block-size", "64KiB", "--large-from", "0"}).options;
    EXPECT_EQ(options.blockSize, 65536u);
    EXPECT_EQ(options.largeFrom, 0u);
    const Options defaults = Parsed({"netdisk", "get", "k", "--session", "s"}).options;
    EXPECT_EQ(defaults.blockSize, 4u << 20);
    EXPECT_EQ(defaults.largeFrom, 8u << 20);
}

TEST_F(CommandLineTest, RefusesBlockSizesOutOfRange)
{
    for (const char* const size : {"0", "257MiB", "-1", "many"})
        EXPECT_NE(Complaint({"netdisk", "put", "f", "--session", "s", "--block-size", size}), "") << size;
}

TEST_F(CommandLineTest, WantsExactlyOneLogin)
{
    EXPECT_NE(Complaint({"netdisk", "quota"}).find("--session"), std::string::npos);
    EXPECT_NE(Complaint({"netdisk", "quota", "--user", "u"}).find("--password"), std::string::npos);
    EXPECT_NE(Complaint({"netdisk", "quota", "--password", "p"}).find("--user"), std::string::npos);
    EXPECT_NE(Complaint({"netdisk", "quota", "--session", "s", "--user", "u", "--password", "p"}), "");
    EXPECT_NE(Complaint({"netdisk", "quota", "--session", "s", "--ticket", "a:b"}), "");
    EXPECT_NE(Complaint({"netdisk", "quota", "--ticket", "a:b", "--user", "u", "--password", "p"}), "");
    EXPECT_NE(Complaint({"netdisk", "quota", "--ticket", "ab"}).find("BLOWFISH:TICKET"), std::string::npos);
    EXPECT_EQ(Parsed({"netdisk", "quota", "--ticket", "a:b:c"}).options.ticket, "a:b:c");
}

TEST_F(CommandLineTest, TakesServerAndPasswordFromTheEnvironment)
{
    _wputenv(L"QUORVEX_SERVER=http://env/x");
    _wputenv(L"QUORVEX_PASSWORD=caf\xE9");
    const Options fromEnvironment = Parsed({"netdisk", "quota", "--user", "u"}).options;
    EXPECT_EQ(fromEnvironment.server, "http://env/x");
    EXPECT_EQ(fromEnvironment.password, "caf\xC3\xA9");
    const Options given =
        Parsed({"netdisk", "quota", "--user", "u", "--password", "p", "--server", "http://given"}).options;
    EXPECT_EQ(given.server, "http://given");
    EXPECT_EQ(given.password, "p");
}

TEST_F(CommandLineTest, RefusesKeysThatWouldChangeTheRequest)
{
    for (const char* const key : {"a/b", "a&b=c", "a b", "a\"b", "..", "", "123456789012345678901234567890123"})
        EXPECT_NE(Complaint({"netdisk", "info", key, "--session", "s"}), "") << key;
    const std::string longest = "12345678901234567890123456789-_Z";
    EXPECT_EQ(Parsed({"netdisk", "info", longest, "--session", "s"}).options.key, longest);
}

TEST_F(CommandLineTest, RefusesWhatItDoesNotKnow)
{
    EXPECT_NE(Complaint({}), "");
    EXPECT_NE(Complaint({"netdisk"}), "");
    EXPECT_NE(Complaint({"netdisk", "fly", "--session", "s"}), "");
    EXPECT_NE(Complaint({"netdisk", "put", "--session", "s"}), "");
    EXPECT_NE(Complaint({"netdisk", "put", "a", "b", "--session", "s"}), "");
    EXPECT_NE(Complaint({"netdisk", "mv", "k", "--session", "s"}), "");
    EXPECT_NE(Complaint({"netdisk", "quota", "--session", "s", "--log", "loud"}), "");
    EXPECT_NE(Complaint({"netdisk", "quota", "--session", "s", "--unknown"}), "");
}

TEST_F(CommandLineTest, AnswersHelpAndVersion)
{
    EXPECT_FALSE(ParseCommandLine({"--version"}, m_answer).has_value());
    EXPECT_EQ(m_answer.exitStatus, 0);
    EXPECT_EQ(m_answer.text.rfind("quorvex ", 0), 0u);
    EXPECT_FALSE(ParseCommandLine({"--help"}, m_answer).has_value());
    EXPECT_EQ(m_answer.exitStatus, 0);
    EXPECT_NE(m_answer.text.find("--server"), std::string::npos);
}

} // namespace
} // namespace quorvex::console
