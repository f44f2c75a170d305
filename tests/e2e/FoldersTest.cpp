#include "DiskFixture.h"

namespace quorvex::e2e
{

namespace
{

constexpr const char* kChinese = "\xE4\xB8\xAD\xE6\x96\x87";
constexpr const char* kCyrillic = "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB\xD1\x8B";
constexpr const char* kEmoji = "\xF0\x9F\x98\x80 \xF0\x9F\x8E\x89";

class Folders : public DiskFixture
{
protected:
    std::string Make(const std::string& name, const std::string& parent = "0") const
    {
        const Json::Value made = Done({"mkdir", name, "--parent", parent});
        EXPECT_EQ(made["name"].asString(), name);
        EXPECT_NE(made["id"].asString(), "");
        return made["id"].asString();
    }

    Json::Value List(const std::string& id = "0") const { return Done({"ls", id}); }
};

} // namespace

TEST_F(Folders, NewDiskIsEmpty)
{
    const Json::Value top = Done({"ls"});
    EXPECT_EQ(top["id"].asString(), "0");
    EXPECT_TRUE(top["folders"].isArray());
    EXPECT_TRUE(top["folders"].empty());
    EXPECT_TRUE(top["files"].isArray());
    EXPECT_TRUE(top["files"].empty());
    EXPECT_EQ(Shown({"ls"}), "0 folders, 0 files, 0 bytes\n");
}

TEST_F(Folders, TreeComesBackWithNamesOfEveryScript)
{
    const std::string chinese = Make(kChinese);
    const std::string cyrillic = Make(kCyrillic, chinese);
    const std::string emoji = Make(kEmoji, cyrillic);
    const std::string fileName = std::string("na\xC3\xAFve ") + kChinese + ' ' + kEmoji + ".txt";
    const std::string key = PutContent(fileName, Pattern(4321), {"--folder", emoji});

    const Json::Value tree = Done({"tree"});
    EXPECT_EQ(tree["files"].size(), 0U);
    const Json::Value* each = &tree;
    for (const auto& [id, name] : {std::pair{chinese, kChinese}, {cyrillic, kCyrillic}, {emoji, kEmoji}})
    {
        ASSERT_EQ((*each)["folders"].size(), 1U);
        each = &(*each)["folders"][0];
        EXPECT_EQ((*each)["id"].asString(), id);
        EXPECT_EQ((*each)["name"].asString(), name);
    }
    EXPECT_TRUE((*each)["folders"].empty());
    ASSERT_EQ((*each)["files"].size(), 1U);
    EXPECT_EQ((*each)["files"][0]["name"].asString(), fileName);
    EXPECT_EQ((*each)["files"][0]["key"].asString(), key);
    EXPECT_EQ(Done({"tree", cyrillic})["folders"][0]["name"].asString(), kEmoji);
    EXPECT_EQ(Get(key), Pattern(4321));
}

TEST_F(Folders, ListingTellsAllOfAFile)
{
    const Json::Value put = Put(Write("film.bin", Pattern(70000)));
    ASSERT_EQ(Get(put["key"].asString()), Pattern(70000));
    const Json::Value listed = List();
    ASSERT_EQ(listed["files"].size(), 1U);
    const Json::Value& file = listed["files"][0];
    EXPECT_EQ(file["key"], put["key"]);
    EXPECT_EQ(file["name"].asString(), "film.bin");
    EXPECT_EQ(file["size"].asUInt64(), 70000U);
    EXPECT_EQ(file["md5"], put["md5"]);
    EXPECT_TRUE(file["complete"].asBool());
    EXPECT_GE(file["downloads"].asUInt64(), 1U);
    EXPECT_GT(file["created"].asInt64(), 1700000000);
}

TEST_F(Folders, PeopleReadColumnsAndLines)
{
    const std::string id = Make(kCyrillic);
    const std::string key = PutContent("a.txt", Pattern(2048));
    const std::string listing = Shown({"ls"});
    EXPECT_EQ(listing.rfind("ID ", 0), 0U) << listing;
    EXPECT_NE(listing.find(std::string(kCyrillic) + "/\n"), std::string::npos) << listing;
    EXPECT_NE(listing.find("  2.0 KiB  20"), std::string::npos) << listing;
    EXPECT_NE(listing.find("  a.txt\n1 folder, 1 file, 2.0 KiB\n"), std::string::npos) << listing;
    EXPECT_EQ(Shown({"tree"}), std::string("/\n\xE2\x94\x9C\xE2\x94\x80 ") + kCyrillic + "/  [" + id +
                                   "]\n\xE2\x94\x94\xE2\x94\x80 a.txt  2.0 KiB  [" + key +
                                   "]\n1 folder, 1 file, 2.0 KiB\n");
}

TEST_F(Folders, NameWithQuotesIsNoJson)
{
    const std::string name = "the \"best\", {really}";
    const std::string id = Make(name);
    EXPECT_EQ(List()["folders"][0]["name"].asString(), name);
    Done({"mv", "--dir", id, "--name", name + '!'});
    EXPECT_EQ(List()["folders"][0]["name"].asString(), name + '!');
}

TEST_F(Folders, FolderIsRenamedAndMovedWithWhatItHolds)
{
    const std::string from = Make("from");
    const std::string to = Make("to");
    const std::string moved = Make("old", from);
    PutContent("inside.txt", "text", {"--folder", moved});

    Done({"mv", "--dir", moved, "--name", kEmoji});
    EXPECT_EQ(List(from)["folders"][0]["name"].asString(), kEmoji);
    Done({"mv", "--dir", moved, "--folder", to});
    EXPECT_TRUE(List(from)["folders"].empty());
    EXPECT_EQ(List(to)["folders"][0]["id"].asString(), moved);
    EXPECT_EQ(List(to)["folders"][0]["name"].asString(), kEmoji);
    EXPECT_EQ(List(moved)["files"][0]["name"].asString(), "inside.txt");
    Done({"mv", "--dir", moved, "--name", "last", "--folder", "0"});
    EXPECT_TRUE(List(to)["folders"].empty());
    EXPECT_EQ(List()["folders"].size(), 3U);
}

TEST_F(Folders, FolderDoesNotGoBelowItself)
{
    const std::string outer = Make("outer");
    const std::string inner = Make("inner", outer);
    EXPECT_EQ(Refused({"mv", "--dir", outer, "--folder", inner}), 409);
    EXPECT_EQ(Refused({"mv", "--dir", outer, "--folder", outer}), 409);
    EXPECT_EQ(List(outer)["folders"][0]["id"].asString(), inner);
}

TEST_F(Folders, FileIsMovedFromFolderToFolder)
{
    const std::string first = Make("first");
    const std::string second = Make("second");
    const std::string key = PutContent("file.txt", "content", {"--folder", first});
    EXPECT_EQ(List(first)["files"].size(), 1U);
    Done({"mv", key, "--folder", second, "--name", "renamed.txt"});
    EXPECT_EQ(List(first)["files"].size(), 0U);
    EXPECT_EQ(List(second)["files"][0]["name"].asString(), "renamed.txt");
    Done({"mv", key, "--folder", "0"});
    EXPECT_EQ(List()["files"][0]["key"].asString(), key);
    EXPECT_EQ(Get(key), "content");
}

TEST_F(Folders, FolderRemovedForEverGivesItsSpaceBack)
{
    const std::uint64_t before = Used();
    const std::string outer = Make("outer");
    const std::string inner = Make("inner", outer);
    PutContent("one.bin", Pattern(1000), {"--folder", outer});
    const std::string key = PutContent("two.bin", Pattern(20000), {"--folder", inner});
    EXPECT_EQ(Used(), before + 21000);
    Done({"rm", "--dir", outer, "--forever"});
    EXPECT_EQ(Used(), before);
    EXPECT_EQ(Refused({"ls", inner}), 404);
    EXPECT_EQ(Refused({"info", key}), 404);
    EXPECT_TRUE(Done({"trash"})["items"].empty());
}

TEST_F(Folders, UnknownFoldersArePlainFailures)
{
    EXPECT_EQ(Refused({"ls", "nosuch"}), 404);
    EXPECT_EQ(Refused({"tree", "nosuch"}), 404);
    EXPECT_EQ(Refused({"mkdir", "n", "--parent", "nosuch"}), 404);
    EXPECT_EQ(Refused({"mv", "--dir", "nosuch", "--name", "n"}), 404);
    EXPECT_EQ(Refused({"rm", "--dir", "nosuch"}), 404);
    const ConsoleRun put = Run({"put", Write("file.txt", "text"), "--folder", "nosuch"});
    EXPECT_EQ(put.exitStatus, 1);
    const std::string key = List()["files"][0]["key"].asString();
    EXPECT_NE(put.Json()["message"].asString().find(key), std::string::npos) << put.output;
}

TEST_F(Folders, AnotherAccountSeesNothingOfThem)
{
    const std::string id = Make("private");
    EXPECT_TRUE(Done({"ls"}, kBob)["folders"].empty());
    EXPECT_EQ(Refused({"ls", id}, kBob), 404);
    EXPECT_EQ(Refused({"rm", "--dir", id}, kBob), 404);
}

} // namespace quorvex::e2e
