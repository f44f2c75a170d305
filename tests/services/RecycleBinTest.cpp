#include "support/DiskCalls.h"

namespace quorvex::services::test
{

namespace
{

using Names = std::vector<std::string>;

class RecycleBinTest : public ServiceFixture
{
protected:
    ServiceClient client_ = LoggedIn();
};

} // namespace

TEST_F(RecycleBinTest, ListsWhatWasDeletedAndFromWhere)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    const std::string file = PutFile(client_, "f", "content", b);
    const std::string top = PutFile(client_, "top", "content");
    RecycleFile(client_, top);
    ++now_;
    RecycleFile(client_, file);
    ++now_;
    RecycleFolder(client_, b);

    const Json::Value data = ListBin(client_);
    ASSERT_EQ(data.size(), 3U);
    EXPECT_EQ(data[0]["name"].asString(), "b");
    EXPECT_EQ(data[0]["type"].asInt(), 2);
    EXPECT_EQ(data[0]["fo_before"].asString(), "/a");
    EXPECT_EQ(data[0]["rtime"].asInt64(), now_.load());
    EXPECT_EQ(data[0]["rs_id"].asString().size(), 32U);
    EXPECT_EQ(data[1]["name"].asString(), "f");
    EXPECT_EQ(data[1]["type"].asInt(), 1);
    EXPECT_EQ(data[1]["fo_before"].asString(), "/a/b");
    EXPECT_EQ(data[2]["name"].asString(), "top");
    EXPECT_EQ(data[2]["fo_before"].asString(), "/");
}

TEST_F(RecycleBinTest, AFileComesBackToItsFolder)
{
    const std::string folder = AddFolder(client_, "a");
    const std::string key = PutFile(client_, "f", "content", folder);
    EXPECT_EQ(RecycleFile(client_, key).status, 200);
    EXPECT_EQ(NamesIn(client_, folder), Names{});
    EXPECT_EQ(client_.UsedSpace(), 7U);

    const std::string item = ItemNamed(client_, "f");
    EXPECT_EQ(Recover(client_, item).status, 200);
    EXPECT_EQ(NamesIn(client_, folder), Names{"f"});
    EXPECT_EQ(client_.Download(key).body, "content");
    EXPECT_TRUE(ListBin(client_).empty());
    EXPECT_EQ(Recover(client_, item).status, 404);
}

TEST_F(RecycleBinTest, WhatComesBackFindsItsFolderWhereverThatIs)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    RecycleFolder(client_, AddFolder(client_, "c", b));
    RecycleFile(client_, PutFile(client_, "f", "content", b));
    // Under the path that the bin remembers there is another folder by now.
    EXPECT_EQ(
        client_.PostJson("/object/folder/modi", Body({{"fo_id", b}, {"name", "moved"}, {"parent_fo_id", "0"}})).status,
        200);
    const std::string other = AddFolder(client_, "b", a);

    EXPECT_EQ(Recover(client_, ItemNamed(client_, "f")).status, 200);
    EXPECT_EQ(Recover(client_, ItemNamed(client_, "c")).status, 200);
    EXPECT_EQ(NamesIn(client_), (Names{"a/", "moved/"}));
    EXPECT_EQ(NamesIn(client_, b), (Names{"c/", "f"}));
    EXPECT_EQ(NamesIn(client_, other), Names{});
}

TEST_F(RecycleBinTest, AFolderIsOneItemAndComesBackWithAllThatWasInIt)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    const std::string c = AddFolder(client_, "c", b);
    const std::string key = PutFile(client_, "f", "content", c);
    EXPECT_EQ(RecycleFolder(client_, b).status, 200);
    EXPECT_EQ(ListBin(client_).size(), 1U);
    EXPECT_EQ(NamesIn(client_, a), Names{});
    EXPECT_EQ(ListFolder(client_, b).status, 404);
    EXPECT_EQ(ListFolder(client_, c).status, 404);
    EXPECT_EQ(client_.Download(key).status, 404);
    EXPECT_EQ(MoveFolder(client_, a, c).status, 404);
    EXPECT_EQ(RecycleFolder(client_, c).status, 404);
    EXPECT_EQ(client_.UsedSpace(), 7U);

    EXPECT_EQ(Recover(client_, ItemNamed(client_, "b")).status, 200);
    EXPECT_EQ(NamesIn(client_, a), Names{"b/"});
    EXPECT_EQ(NamesIn(client_, b), Names{"c/"});
    EXPECT_EQ(NamesIn(client_, c), Names{"f"});
    EXPECT_EQ(client_.Download(key).body, "content");
}

TEST_F(RecycleBinTest, WhatComesBackBeforeItsFolderLandsAtTheTop)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    RecycleFile(client_, PutFile(client_, "f", "content", a));
    RecycleFolder(client_, b);
    RecycleFolder(client_, a);

    EXPECT_EQ(Recover(client_, ItemNamed(client_, "f")).status, 200);
    EXPECT_EQ(Recover(client_, ItemNamed(client_, "b")).status, 200);
    EXPECT_EQ(NamesIn(client_), (Names{"b/", "f"}));
    EXPECT_EQ(Recover(client_, ItemNamed(client_, "a")).status, 200);
    EXPECT_EQ(NamesIn(client_), (Names{"a/", "b/", "f"}));
    EXPECT_EQ(NamesIn(client_, a), Names{});
}

TEST_F(RecycleBinTest, WhatComesBackAfterItsFolderLandsInIt)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    RecycleFile(client_, PutFile(client_, "f", "content", b));
    RecycleFolder(client_, b);
    RecycleFolder(client_, a);
    for (const char* name : {"a", "b", "f"})
    {
        EXPECT_EQ(Recover(client_, ItemNamed(client_, name)).status, 200) << name;
    }
    EXPECT_EQ(NamesIn(client_), Names{"a/"});
    EXPECT_EQ(NamesIn(client_, a), Names{"b/"});
    EXPECT_EQ(NamesIn(client_, b), Names{"f"});
}

TEST_F(RecycleBinTest, WhatComesBackToAMissingFolderLandsAtTheTop)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    const std::string key = PutFile(client_, "f", "content", a);
    RecycleFile(client_, key);
    RecycleFolder(client_, b);
    EXPECT_EQ(EraseFolder(client_, a).status, 200);

    EXPECT_EQ(ListBin(client_).size(), 2U);
    EXPECT_EQ(ListBin(client_)[0]["fo_before"].asString(), "/a");
    EXPECT_EQ(Recover(client_, ItemNamed(client_, "f")).status, 200);
    EXPECT_EQ(Recover(client_, ItemNamed(client_, "b")).status, 200);
    EXPECT_EQ(NamesIn(client_), (Names{"b/", "f"}));
    EXPECT_EQ(client_.Download(key).body, "content");
}

TEST_F(RecycleBinTest, AnErasedItemGivesItsSpaceBack)
{
    const std::string a = AddFolder(client_, "a");
    PutFile(client_, "f", "content", AddFolder(client_, "b", a));
    const std::string key = PutFile(client_, "g", "12345");
    RecycleFolder(client_, a);
    RecycleFile(client_, key);
    EXPECT_EQ(client_.UsedSpace(), 12U);

    const std::string item = ItemNamed(client_, "a");
    EXPECT_EQ(EraseItem(client_, item).status, 200);
    EXPECT_EQ(client_.UsedSpace(), 5U);
    EXPECT_EQ(EraseItem(client_, ItemNamed(client_, "g")).status, 200);
    EXPECT_EQ(client_.UsedSpace(), 0U);
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 0U);
    EXPECT_TRUE(ListBin(client_).empty());
    EXPECT_EQ(EraseItem(client_, item).status, 404);
    EXPECT_EQ(client_.PostJson("/object/recyclebin/del", "{}").status, 400);
}

TEST_F(RecycleBinTest, WhatIsInItCanBeErasedByItsOwnKeyToo)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    const std::string key = PutFile(client_, "f", "content", a);
    PutFile(client_, "g", "12345", b);
    PutFile(client_, "h", "123", a);
    RecycleFolder(client_, a);

    EXPECT_EQ(EraseFile(client_, key).status, 200);
    EXPECT_EQ(client_.UsedSpace(), 8U);
    EXPECT_EQ(EraseFolder(client_, b).status, 200);
    EXPECT_EQ(client_.UsedSpace(), 3U);
    EXPECT_EQ(ListBin(client_).size(), 1U);
    EXPECT_EQ(Recover(client_, ItemNamed(client_, "a")).status, 200);
    EXPECT_EQ(NamesIn(client_, a), Names{"h"});

    RecycleFolder(client_, a);
    EXPECT_EQ(EraseFolder(client_, a).status, 200);
    EXPECT_TRUE(ListBin(client_).empty());
    EXPECT_EQ(client_.UsedSpace(), 0U);
}

TEST_F(RecycleBinTest, TakesFromTheQuota)
{
    Restart([](Application::Options& options) { options.netDiskLimits.quota = 10; });
    ServiceClient client = LoggedIn();
    RecycleFile(client, client.UploadWhole("f", "12345678").Text("fkey"));
    EXPECT_EQ(client.UploadWhole("g", "123").status, 507);
    EXPECT_EQ(EraseItem(client, ItemNamed(client, "f")).status, 200);
    EXPECT_EQ(client.UploadWhole("g", "123").status, 200);
}

TEST_F(RecycleBinTest, IsItsOwnersAlone)
{
    ServiceClient bob = LoggedIn("bob");
    RecycleFile(client_, PutFile(client_, "f", "content"));
    const std::string item = ItemNamed(client_, "f");
    EXPECT_TRUE(ListBin(bob).empty());
    EXPECT_EQ(Recover(bob, item).status, 404);
    EXPECT_EQ(EraseItem(bob, item).status, 404);
    EXPECT_EQ(ListBin(client_).size(), 1U);
}

TEST_F(RecycleBinTest, CutsPathsToWhatTheRecordsHold)
{
    std::string parent = "0";
    for (int i = 0; i < 20; ++i)
    {
        parent = AddFolder(client_, std::string(250, 'n'), parent);
    }
    RecycleFolder(client_, parent);
    EXPECT_EQ(ListBin(client_)[0]["fo_before"].asString().size(), 4096U);
    EXPECT_EQ(ListBin(client_)[0]["name"].asString().size(), 64U);
}

} // namespace quorvex::services::test
