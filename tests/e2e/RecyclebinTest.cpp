#include "DiskFixture.h"

namespace quorvex::e2e
{

namespace
{

class Recyclebin : public DiskFixture
{
protected:
    /// The bin's only item.
    Json::Value Item() const
    {
        const Json::Value trash = Done({"trash"});
        EXPECT_EQ(trash["items"].size(), 1U) << trash;
        return trash["items"][0];
    }

    std::string MakeFolderThere(const std::string& name, const std::string& parent = "0") const
    {
        return Done({"mkdir", name, "--parent", parent})["id"].asString();
    }
};

} // namespace

TEST_F(Recyclebin, NewOneIsEmpty)
{
    EXPECT_TRUE(Done({"trash"})["items"].isArray());
    EXPECT_TRUE(Done({"trash"})["items"].empty());
    EXPECT_EQ(Shown({"trash"}), "the recycle bin is empty\n");
}

TEST_F(Recyclebin, FileIsRestoredToWhereItWas)
{
    const std::string outer = MakeFolderThere("\xE4\xB8\xAD\xE6\x96\x87");
    const std::string inner = MakeFolderThere("\xF0\x9F\x98\x80", outer);
    const std::string name = "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB.txt";
    const std::string key = PutContent(name, Pattern(5000), {"--folder", inner});

    Done({"rm", key});
    EXPECT_TRUE(Done({"ls", inner})["files"].empty());
    const Json::Value item = Item();
    EXPECT_EQ(item["type"].asString(), "file");
    EXPECT_EQ(item["name"].asString(), name);
    EXPECT_EQ(item["from"].asString(), "/\xE4\xB8\xAD\xE6\x96\x87/\xF0\x9F\x98\x80");
    EXPECT_GT(item["removed"].asInt64(), 1700000000);

    Done({"restore", item["id"].asString()});
    EXPECT_TRUE(Done({"trash"})["items"].empty());
    const Json::Value restored = Done({"ls", inner});
    ASSERT_EQ(restored["files"].size(), 1U);
    EXPECT_EQ(restored["files"][0]["name"].asString(), name);
    EXPECT_EQ(Get(restored["files"][0]["key"].asString()), Pattern(5000));
}

TEST_F(Recyclebin, FolderIsRestoredWithEverythingInIt)
{
    const std::string outer = MakeFolderThere("outer");
    const std::string inner = MakeFolderThere("inner", outer);
    const std::string key = PutContent("deep.txt", "text", {"--folder", inner});

    Done({"rm", "--dir", outer});
    EXPECT_TRUE(Done({"ls"})["folders"].empty());
    EXPECT_EQ(Refused({"ls", inner}), 404);
    const Json::Value item = Item();
    EXPECT_EQ(item["type"].asString(), "folder");
    EXPECT_EQ(item["name"].asString(), "outer");

    Done({"restore", item["id"].asString()});
    const Json::Value tree = Done({"tree"});
    EXPECT_EQ(tree["folders"][0]["name"].asString(), "outer");
    EXPECT_EQ(tree["folders"][0]["folders"][0]["name"].asString(), "inner");
    EXPECT_EQ(tree["folders"][0]["folders"][0]["files"][0]["name"].asString(), "deep.txt");
    EXPECT_EQ(Get(key), "text");
}

TEST_F(Recyclebin, PurgeGivesTheSpaceBack)
{
    const std::uint64_t before = Used();
    const std::string file = PutContent("file.bin", Pattern(30000));
    const std::string folderId = MakeFolderThere("folder");
    PutContent("inside.bin", Pattern(4000), {"--folder", folderId});
    Done({"rm", file});
    Done({"rm", "--dir", folderId});
    EXPECT_EQ(Used(), before + 34000);

    const Json::Value trash = Done({"trash"});
    ASSERT_EQ(trash["items"].size(), 2U);
    for (const Json::Value& item : trash["items"])
    {
        Done({"purge", item["id"].asString()});
    }
    EXPECT_EQ(Used(), before);
    EXPECT_TRUE(Done({"trash"})["items"].empty());
    EXPECT_EQ(Refused({"info", file}), 404);
}

TEST_F(Recyclebin, PurgedOrUnknownItemsArePlainFailures)
{
    Done({"rm", PutContent("file.bin", "text")});
    const std::string id = Item()["id"].asString();
    EXPECT_EQ(Refused({"restore", id}, kBob), 404);
    EXPECT_EQ(Refused({"purge", id}, kBob), 404);
    Done({"purge", id});
    EXPECT_EQ(Refused({"restore", id}), 404);
    EXPECT_EQ(Refused({"purge", id}), 404);
    EXPECT_EQ(Refused({"restore", "nosuch"}), 404);
}

TEST_F(Recyclebin, PeopleReadColumns)
{
    Done({"rm", PutContent("file.bin", "text")});
    const std::string shown = Shown({"trash"});
    EXPECT_EQ(shown.rfind("ID ", 0), 0U) << shown;
    EXPECT_NE(shown.find("  file  20"), std::string::npos) << shown;
    EXPECT_NE(shown.find("  file.bin  /\n"), std::string::npos) << shown;
}

} // namespace quorvex::e2e
