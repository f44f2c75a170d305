#include "CommandLine.h"

#include "DepotCommands.h"
#include "NetDiskCommands.h"
#include "StorageCommands.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

namespace quorvex::console
{
namespace
{

class StorageCommandLine : public testing::Test
{
protected:
    void SetUp() override
    {
        _wputenv(L"QUORVEX_SERVER=");
        _wputenv(L"QUORVEX_STORAGE=");
    }
    void TearDown() override { SetUp(); }

    Invocation Parsed(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.end(), {"--session", "s"});
        const auto invocation = ParseCommandLine(arguments, m_answer);
        EXPECT_TRUE(invocation.has_value()) << m_answer.text;
        return invocation.value_or(Invocation());
    }

    std::string Complaint(const std::vector<std::string>& arguments)
    {
        EXPECT_FALSE(ParseCommandLine(arguments, m_answer).has_value());
        EXPECT_EQ(m_answer.exitStatus, 2);
        return m_answer.text;
    }

    Answer m_answer;
};

TEST_F(StorageCommandLine, KnowsEveryCommand)
{
    const std::vector<std::pair<std::vector<std::string>, Command>> commands{
        {{"storage", "login"}, &StorageLoginCommand},
        {{"storage", "put-picture", "f"}, &PutPictureCommand},
        {{"storage", "get-picture", "n"}, &GetPictureCommand},
        {{"storage", "put-photo", "f"}, &PutPhotoCommand},
        {{"storage", "get-photo", "n"}, &GetPhotoCommand},
        {{"storage", "emoticons", "put", "f"}, &PutEmoticonCommand},
        {{"storage", "emoticons", "get", "n"}, &GetEmoticonCommand},
        {{"storage", "emoticons", "rm", "n"}, &RemoveEmoticonCommand},
        {{"storage", "emoticons", "ls"}, &ListEmoticonsCommand},
        {{"depot", "put", "f"}, &PutInDepotCommand},
        {{"depot", "get", "k"}, &GetFromDepotCommand},
        {{"depot", "ls"}, &ListDepotCommand},
        {{"depot", "rm", "k"}, &RemoveFromDepotCommand},
        {{"depot", "renew", "k"}, &RenewInDepotCommand},
        {{"depot", "info"}, &DepotInfoCommand},
        {{"depot", "info", "k"}, &DepotInfoCommand},
    };
    for (const auto& [words, command] : commands)
    {
        EXPECT_EQ(Parsed(words).command, command) << words[1];
        std::string example = "Examples:\n  quorvex " + words[0] + ' ' + words[1];
        if (words[1] == "emoticons")
            example += ' ' + words[2];
        std::vector<std::string> arguments = words;
        arguments.emplace_back("--help");
        EXPECT_FALSE(ParseCommandLine(arguments, m_answer).has_value());
        EXPECT_EQ(m_answer.exitStatus, 0);
        EXPECT_NE(m_answer.text.find(example), std::string::npos) << m_answer.text;
    }
}

TEST_F(StorageCommandLine, HasAServerOfItsOwn)
{
    EXPECT_EQ(Parsed({"storage", "login"}).options.server, "http://127.0.0.1:8080/storage");
    EXPECT_EQ(Parsed({"depot", "ls"}).options.server, "http://127.0.0.1:8080/storage");
    EXPECT_EQ(Parsed({"netdisk", "ls"}).options.server, "http://127.0.0.1:8080/object");
    _wputenv(L"QUORVEX_SERVER=http://disk/object");
    _wputenv(L"QUORVEX_STORAGE=http://env/storage");
    EXPECT_EQ(Parsed({"depot", "ls"}).options.server, "http://env/storage");
    EXPECT_EQ(Parsed({"netdisk", "ls"}).options.server, "http://disk/object");
    EXPECT_EQ(Parsed({"depot", "ls", "--server", "http://given"}).options.server, "http://given");
}

TEST_F(StorageCommandLine, TakesNoTickets)
{
    EXPECT_NE(Complaint({"storage", "login", "--ticket", "a:b"}).find("--ticket"), std::string::npos);
    EXPECT_NE(Complaint({"depot", "ls", "--ticket", "a:b"}).find("--ticket"), std::string::npos);
    const std::string complaint = Complaint({"storage", "login"});
    EXPECT_NE(complaint.find("--session"), std::string::npos) << complaint;
    EXPECT_EQ(complaint.find("--ticket"), std::string::npos) << complaint;
}

TEST_F(StorageCommandLine, ReadsNamesAndOwners)
{
    const Options photo = Parsed({"storage", "put-photo", "me.jpg", "--name", "ann & co.jpg"}).options;
    EXPECT_EQ(photo.file, "me.jpg");
    EXPECT_EQ(photo.name, "ann & co.jpg");
    const Options emoticon = Parsed({"storage", "emoticons", "get", "smile.gif", "--uid", "2", "-o", "out"}).options;
    EXPECT_EQ(emoticon.names, std::vector<std::string>{"smile.gif"});
    EXPECT_EQ(emoticon.uid, "2");
    EXPECT_EQ(emoticon.out, "out");
    EXPECT_EQ(Parsed({"storage", "emoticons", "get", "smile.gif"}).options.uid, "");
}

TEST_F(StorageCommandLine, TakesSeveralFilesNamesAndKeys)
{
    const std::vector<std::string> two{"a", "b"};
    EXPECT_EQ(Parsed({"storage", "put-picture", "a", "b"}).options.files, two);
    EXPECT_EQ(Parsed({"storage", "get-picture", "a", "b"}).options.names, two);
    EXPECT_EQ(Parsed({"storage", "emoticons", "put", "a", "b"}).options.files, two);
    EXPECT_EQ(Parsed({"storage", "emoticons", "rm", "a", "b"}).options.names, two);
    EXPECT_EQ(Parsed({"storage", "checksum", "a", "b"}).options.files, two);
    EXPECT_EQ(Parsed({"depot", "put", "a", "b"}).options.files, two);
    EXPECT_EQ(Parsed({"depot", "get", "a", "b"}).options.keys, two);
    EXPECT_EQ(Parsed({"depot", "rm", "a", "b"}).options.keys, two);
    EXPECT_EQ(Parsed({"depot", "renew", "a", "b"}).options.keys, two);
    EXPECT_NE(Complaint({"storage", "emoticons", "put", "a", "b", "--name", "n"}).find("one file"), std::string::npos);
}

TEST_F(StorageCommandLine, RefusesNamesThatWouldChangeTheRequest)
{
    for (const std::string name : {"", "a/b", "a\\b", "a\"b", "a\nb"})
        for (const std::vector<std::string>& line :
             std::vector<std::vector<std::string>>{{"storage", "get-picture", name},
                                                   {"storage", "get-photo", name},
                                                   {"storage", "put-photo", "f", "--name", name},
                                                   {"storage", "emoticons", "get", name},
                                                   {"storage", "emoticons", "rm", name}})
            EXPECT_NE(Complaint(line).find("1 to 64 characters"), std::string::npos) << line[1] << m_answer.text;
}

TEST_F(StorageCommandLine, RefusesKeysAndUidsThatWouldChangeTheRequest)
{
    const std::string longest(64, 'k');
    EXPECT_EQ(Parsed({"depot", "rm", longest}).options.keys.front(), longest);
    for (const std::string& key : {std::string("a&b"), std::string("../a"), std::string("a b"), std::string(65, 'k')})
        for (const char* const command : {"get", "rm", "renew", "info"})
            EXPECT_NE(Complaint({"depot", command, key}).find("1 to 64 letters"), std::string::npos) << key;
    EXPECT_NE(Complaint({"depot", "get", "k", "--uid", "2&k=x"}).find("1 to 32 letters"), std::string::npos);
}

TEST_F(StorageCommandLine, TakesEachCommandInTheGenerationsThatHaveIt)
{
    const std::vector<std::pair<std::vector<std::string>, int>> lastGenerations{
        {{"storage", "login"}, 2},
        {{"storage", "put-picture", "f"}, 3},
        {{"storage", "get-picture", "n"}, 3},
        {{"storage", "put-photo", "f"}, 1},
        {{"storage", "get-photo", "n"}, 1},
        {{"storage", "emoticons", "put", "f"}, 1},
        {{"storage", "emoticons", "get", "n"}, 1},
        {{"storage", "emoticons", "rm", "n"}, 1},
        {{"storage", "emoticons", "ls"}, 1},
        {{"depot", "put", "f"}, 3},
        {{"depot", "get", "k"}, 3},
        {{"depot", "rm", "k"}, 2},
        {{"depot", "ls"}, 1},
        {{"depot", "renew", "k"}, 1},
        {{"depot", "info"}, 1},
        {{"storage", "logout"}, 3},
        {{"depot", "blocks", "create", "f"}, 2},
        {{"depot", "blocks", "send", "k", "f"}, 2},
        {{"depot", "blocks", "finish", "k"}, 2},
        {{"depot", "blocks", "read", "k", "--out", "f"}, 3},
    };
    for (const auto& [words, last] : lastGenerations)
    {
        const bool isInGroup = words[1] == "emoticons" || words[1] == "blocks";
        const std::string operation = words[0] + ' ' + words[1] + (isInGroup ? ' ' + words[2] : std::string());
        EXPECT_EQ(Parsed(words).options.generation, 1);
        for (int generation = 1; generation <= 3; ++generation)
        {
            std::vector<std::string> line = words;
            line.insert(line.end(), {"--generation", std::to_string(generation)});
            if (generation <= last)
            {
                EXPECT_EQ(Parsed(line).options.generation, generation) << words[1];
                continue;
            }
            line.insert(line.end(), {"--session", "s"});
            const std::string complaint = Complaint(line);
            EXPECT_NE(complaint.find("generation " + std::to_string(generation) +
                                     " of the file storage has no such operation as " + operation),
                      std::string::npos)
                << complaint;
        }
    }
}

TEST_F(StorageCommandLine, KnowsThreeGenerations)
{
    EXPECT_EQ(Parsed({"depot", "--generation", "2", "put", "f"}).options.generation, 2);
    for (const char* const other : {"0", "4", "-1", "two", ""})
        EXPECT_NE(Complaint({"depot", "put", "f", "--generation", other, "--session", "s"}).find("--generation"),
                  std::string::npos)
            << other << m_answer.text;
    EXPECT_NE(Complaint({"netdisk", "ls", "--generation", "2", "--session", "s"}), "");
}

TEST_F(StorageCommandLine, LearnsWhereAccountsAre)
{
    EXPECT_EQ(Parsed({"depot", "put", "f", "--accounts", "http://disk/object"}).options.accounts, "http://disk/object");
    EXPECT_EQ(Parsed({"storage", "get-picture", "n"}).options.accounts, "");
}

TEST_F(StorageCommandLine, ReadsBlockSizes)
{
    EXPECT_EQ(Parsed({"depot", "put", "f"}).options.blockSize, 4u << 20);
    EXPECT_EQ(Parsed({"depot", "get", "k", "--block-size", "64KiB"}).options.blockSize, 65536u);
    EXPECT_NE(Complaint({"depot", "put", "f", "--block-size", "0"}), "");
}

TEST_F(StorageCommandLine, RefusesWhatItDoesNotKnow)
{
    for (const std::vector<std::string>& line : std::vector<std::vector<std::string>>{{"storage"},
                                                                                      {"storage", "fly"},
                                                                                      {"storage", "emoticons"},
                                                                                      {"storage", "put-picture"},
                                                                                      {"depot"},
                                                                                      {"depot", "put"},
                                                                                      {"depot", "get"}})
        EXPECT_NE(Complaint(line), "");
}

} // namespace
} // namespace quorvex::console
