#include "CommandLine.h"
#include "NetDiskCommands.h"

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
        EXPECT_EQ(each.options.files, std::vector<std::string>{"a.txt"});
        EXPECT_EQ(each.words, "netdisk put");
    }
}

TEST_F(CommandLineTest, KnowsEveryCommand)
{
    const std::vector<std::pair<std::vector<std::string>, Command>> commands{
        {{"login"}, &LoginCommand},
        {{"logout"}, &LogoutCommand},
        {{"put", "f"}, &PutCommand},
        {{"get", "k"}, &GetCommand},
        {{"info", "k"}, &InfoCommand},
        {{"mv", "k", "--name", "n"}, &MoveCommand},
        {{"rm", "k"}, &RemoveCommand},
        {{"ls"}, &ListCommand},
        {{"tree"}, &TreeCommand},
        {{"mkdir", "n"}, &MakeFolderCommand},
        {{"trash"}, &TrashCommand},
        {{"restore", "i"}, &RestoreCommand},
        {{"purge", "i"}, &PurgeCommand},
        {{"share", "k"}, &ShareCommand},
        {{"shares"}, &SharesCommand},
        {{"unshare", "c"}, &UnshareCommand},
        {{"extend", "c", "--by", "1d"}, &ExtendCommand},
        {{"save", "c"}, &SaveCommand},
        {{"fetch", "c"}, &FetchCommand},
        {{"quota"}, &QuotaCommand},
        {{"checksum", "f"}, &ChecksumCommand},
        {{"blocks", "create", "f"}, &CreateBlocksCommand},
        {{"blocks", "send", "k", "f"}, &SendBlockCommand},
        {{"blocks", "finish", "k"}, &FinishBlocksCommand},
        {{"blocks", "read", "k", "--out", "f"}, &ReadBlockCommand},
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
        EXPECT_NE(m_answer.text.find("Examples:\n  quorvex netdisk " + words.front()), std::string::npos)
            << m_answer.text;
    }
}

TEST_F(CommandLineTest, TakesAPathWithSlashesAsAFile)
{
    EXPECT_EQ(Parsed({"netdisk", "checksum", "/home/me/file"}).options.files.front(), "/home/me/file");
    EXPECT_EQ(Parsed({"netdisk", "checksum", "--", "-file"}).options.files.front(), "-file");
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
    EXPECT_EQ(Parsed({"netdisk", "info", longest, "--session", "s"}).options.keys.front(), longest);
}

TEST_F(CommandLineTest, RefusesIdsAndCodesThatWouldChangeTheRequest)
{
    const std::vector<std::vector<std::string>> lines{{"ls", "a&b"},
                                                      {"tree", "../a"},
                                                      {"mkdir", "n", "--parent", "\""},
                                                      {"mv", "k", "--folder", "/"},
                                                      {"put", "f", "--folder", " "},
                                                      {"restore", ""},
                                                      {"purge", "a b"},
                                                      {"share", "k", "a\"b"},
                                                      {"unshare", "c", "c/"},
                                                      {"extend", "c=", "--by", "1d"},
                                                      {"save", "c", "--folder", "?"},
                                                      {"save", "c&"},
                                                      {"fetch", "#"},
                                                      {"fetch", "c", "--fid", "&"}};
    for (std::vector<std::string> line : lines)
    {
        line.insert(line.begin(), "netdisk");
        line.insert(line.end(), {"--session", "s"});
        EXPECT_NE(Complaint(line).find("1 to 32 letters"), std::string::npos) << line[1] << m_answer.text;
    }
}

TEST_F(CommandLineTest, WorksAtTheTopUnlessAFolderIsGiven)
{
    for (const std::vector<std::string>& line :
         std::vector<std::vector<std::string>>{{"ls"}, {"tree"}, {"mkdir", "n"}, {"save", "c"}})
    {
        std::vector<std::string> arguments{"netdisk"};
        arguments.insert(arguments.end(), line.begin(), line.end());
        arguments.insert(arguments.end(), {"--session", "s"});
        EXPECT_EQ(Parsed(arguments).options.inFolder, "0") << line.front();
    }
    EXPECT_EQ(Parsed({"netdisk", "ls", "7a", "--session", "s"}).options.inFolder, "7a");
    EXPECT_EQ(Parsed({"netdisk", "tree", "7a", "--session", "s"}).options.inFolder, "7a");
    EXPECT_EQ(Parsed({"netdisk", "mkdir", "n", "--parent", "7a", "--session", "s"}).options.inFolder, "7a");
    EXPECT_EQ(Parsed({"netdisk", "save", "c", "--folder", "7a", "--session", "s"}).options.inFolder, "7a");
    EXPECT_EQ(Parsed({"netdisk", "put", "f", "--session", "s"}).options.folder, "");
    EXPECT_EQ(Parsed({"netdisk", "put", "f", "--folder", "7a", "--session", "s"}).options.folder, "7a");
}

TEST_F(CommandLineTest, NamesAFolderByItsIdWhenToldTo)
{
    const Options move = Parsed({"netdisk", "mv", "--dir", "7a", "--name", "n", "--session", "s"}).options;
    EXPECT_TRUE(move.isFolder);
    EXPECT_EQ(move.key, "7a");
    EXPECT_TRUE(Parsed({"netdisk", "rm", "7a", "-d", "--session", "s"}).options.isFolder);
    EXPECT_FALSE(Parsed({"netdisk", "rm", "7a", "--session", "s"}).options.isFolder);
}

TEST_F(CommandLineTest, TakesSeveralFilesKeysAndIds)
{
    const std::vector<std::string> three{"a", "b", "c"};
    const auto given = [&](const std::string& command) {
        return Parsed({"netdisk", command, "a", "b", "c", "--session", "s"}).options;
    };
    for (const char* const command : {"put", "checksum"})
        EXPECT_EQ(given(command).files, three) << command;
    for (const char* const command : {"get", "info", "rm"})
        EXPECT_EQ(given(command).keys, three) << command;
    for (const char* const command : {"restore", "purge"})
        EXPECT_EQ(given(command).items, three) << command;
}

TEST_F(CommandLineTest, ReadsWhichPieceOfAFileIsMeant)
{
    const Options piece =
        Parsed({"netdisk", "blocks", "read", "k", "--offset", "4MiB", "--length", "64KiB", "-o", "f", "--session", "s"})
            .options;
    EXPECT_EQ(piece.offset, 4u << 20);
    EXPECT_EQ(piece.length, 64u << 10);
    EXPECT_EQ(piece.out, "f");
    EXPECT_EQ(Parsed({"netdisk", "blocks", "send", "k", "f", "--session", "s"}).options.offset, 0u);
    for (const char* const option : {"--offset=4GiB", "--length=0", "--length=257MiB"})
        EXPECT_NE(Complaint({"netdisk", "blocks", "send", "k", "f", option, "--session", "s"}), "") << option;
    EXPECT_NE(Complaint({"netdisk", "blocks", "read", "k", "--session", "s"}).find("--out"), std::string::npos);
}

TEST_F(CommandLineTest, NeedsNoServerForWhatStandsAlone)
{
    const Invocation md5 = Parsed({"md5", "a", "b"});
    EXPECT_EQ(md5.words, "md5");
    EXPECT_EQ(md5.service, nullptr);
    EXPECT_EQ(md5.options.files, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Parsed({"completion", "bash"}).options.shell, "bash");
    EXPECT_NE(Complaint({"completion", "dos"}), "");
    EXPECT_NE(Complaint({"completion"}), "");
}

TEST_F(CommandLineTest, LetsTheDoctorComeWithoutALogin)
{
    const Options options = Parsed({"doctor", "--storage", "http://s", "--search", "http://o"}).options;
    EXPECT_EQ(options.server, "http://127.0.0.1:8080/object");
    EXPECT_EQ(options.storage, "http://s");
    EXPECT_EQ(options.search, "http://o");
}

TEST_F(CommandLineTest, TakesSeveralKeysAndCodes)
{
    const Options share = Parsed({"netdisk", "share", "a", "b", "c", "--for", "24h", "--session", "s"}).options;
    EXPECT_EQ(share.keys, (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(share.span, 86400u);
    EXPECT_EQ(Parsed({"netdisk", "share", "--session", "s", "a"}).options.span, 604800u);
    const Options unshare = Parsed({"netdisk", "unshare", "x", "y", "--session", "s"}).options;
    EXPECT_EQ(unshare.pcodes, (std::vector<std::string>{"x", "y"}));
    EXPECT_NE(Complaint({"netdisk", "share", "--session", "s"}), "");
    EXPECT_NE(Complaint({"netdisk", "unshare", "--session", "s"}), "");
}

TEST_F(CommandLineTest, ReadsLengthsOfTime)
{
    EXPECT_EQ(Parsed({"netdisk", "extend", "c", "--by", "90s", "--session", "s"}).options.span, 90u);
    EXPECT_NE(Complaint({"netdisk", "extend", "c", "--session", "s"}).find("--by"), std::string::npos);
    for (const char* const span : {"0d", "7", "d", "tomorrow", "50000d"})
    {
        EXPECT_NE(Complaint({"netdisk", "extend", "c", "--by", span, "--session", "s"}).find("90s, 15m"),
                  std::string::npos);
        EXPECT_NE(Complaint({"netdisk", "share", "k", "--for", span, "--session", "s"}).find("90s, 15m"),
                  std::string::npos);
    }
}

TEST_F(CommandLineTest, KnowsTheTypesOfShareCodes)
{
    EXPECT_EQ(Parsed({"netdisk", "shares", "--session", "s"}).options.shareType, "all");
    EXPECT_EQ(Parsed({"netdisk", "shares", "--type", "expired", "--session", "s"}).options.shareType, "expired");
    EXPECT_NE(Complaint({"netdisk", "shares", "--type", "2", "--session", "s"}), "");
}

TEST_F(CommandLineTest, ReadsWhatToFetch)
{
    const Options options =
        Parsed({"netdisk", "fetch", "c", "--fid", "2", "-o", "out", "--block-size", "1MiB", "--session", "s"}).options;
    EXPECT_EQ(options.pcode, "c");
    EXPECT_EQ(options.fileId, "2");
    EXPECT_EQ(options.out, "out");
    EXPECT_EQ(options.blockSize, 1u << 20);
    EXPECT_FALSE(options.listOnly);
    EXPECT_TRUE(Parsed({"netdisk", "fetch", "c", "--list", "--session", "s"}).options.listOnly);
}

TEST_F(CommandLineTest, RefusesWhatItDoesNotKnow)
{
    EXPECT_NE(Complaint({}), "");
    EXPECT_NE(Complaint({"netdisk"}), "");
    EXPECT_NE(Complaint({"netdisk", "fly", "--session", "s"}), "");
    EXPECT_NE(Complaint({"netdisk", "put", "--session", "s"}), "");
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
