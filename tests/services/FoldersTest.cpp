#include "support/DiskCalls.h"

namespace quorvex::services::test
{

namespace
{

using Names = std::vector<std::string>;

class FoldersTest : public ServiceFixture
{
protected:
    ServiceClient client_ = LoggedIn();
};

} // namespace

TEST_F(FoldersTest, AnEmptyDiskIsAnEmptyListing)
{
    const Reply reply = ListFolder(client_);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, R"({"files":[],"folders":[]})");
    EXPECT_EQ(client_.Get("/object/folder/list").body, reply.body);
}

TEST_F(FoldersTest, AListingShowsFilesAndFoldersInFull)
{
    const std::string folder = AddFolder(client_, "docs");
    const std::string inner = AddFolder(client_, "inner", folder);
    const std::string key = PutFile(client_, "f.txt", "content", folder);
    client_.Download(key);
    client_.Download(key, "bytes=0-0");

    const Json::Value listing = ListFolder(client_, folder).Json();
    ASSERT_EQ(listing["files"].size(), 1U);
    const Json::Value& file = listing["files"][0];
    EXPECT_EQ(file["fkey"].asString(), key);
    EXPECT_EQ(file["name"].asString(), "f.txt");
    EXPECT_EQ(file["size"].asUInt(), 7U);
    EXPECT_EQ(file["cflag"].asInt(), 1);
    EXPECT_EQ(file["downcount"].asUInt(), 1U);
    EXPECT_EQ(file["ctime"].asInt64(), now_.load());
    EXPECT_EQ(file["md5"].asString(), Md5Of("content"));
    ASSERT_EQ(listing["folders"].size(), 1U);
    EXPECT_EQ(listing["folders"][0]["fo_id"].asString(), inner);
    EXPECT_EQ(listing["folders"][0]["name"].asString(), "inner");
    EXPECT_EQ(NamesIn(client_), Names{"docs/"});
    EXPECT_EQ(folder.size(), 32U);
}

TEST_F(FoldersTest, AnUnfinishedFileIsListedAsSuch)
{
    client_.CreateLarge("big", "content");
    const Json::Value file = ListFolder(client_).Json()["files"][0];
    EXPECT_EQ(file["name"].asString(), "big");
    EXPECT_EQ(file["cflag"].asInt(), 0);
}

TEST_F(FoldersTest, AnAbsentOrEmptyParentIsTheTop)
{
    EXPECT_EQ(client_.PostJson("/object/folder/add", R"({"name":"a","parent_fo_id":""})").status, 200);
    EXPECT_EQ(client_.PostJson("/object/folder/add", R"({"name":"b"})").status, 200);
    EXPECT_EQ(NamesIn(client_), (Names{"a/", "b/"}));
}

TEST_F(FoldersTest, WhatCannotBeMadeIsRefused)
{
    EXPECT_EQ(client_.PostJson("/object/folder/add", Body({{"name", ""}})).status, 400);
    EXPECT_EQ(client_.PostJson("/object/folder/add", Body({{"name", "a/b"}})).status, 400);
    EXPECT_EQ(client_.PostJson("/object/folder/add", Body({{"parent_fo_id", "0"}})).status, 400);
    EXPECT_EQ(client_.PostJson("/object/folder/add", Body({{"name", "a"}, {"parent_fo_id", "none"}})).status, 404);
    EXPECT_EQ(NamesIn(client_), Names{});
}

TEST_F(FoldersTest, AnEmptyValueChangesNothing)
{
    const std::string parent = AddFolder(client_, "parent");
    const std::string id = AddFolder(client_, "old", parent);
    const auto modify = [&](const std::string& name, const std::string& place) {
        return client_.PostJson("/object/folder/modi", Body({{"fo_id", id}, {"name", name}, {"parent_fo_id", place}}))
            .status;
    };
    EXPECT_EQ(modify("new", ""), 200);
    EXPECT_EQ(NamesIn(client_, parent), Names{"new/"});
    EXPECT_EQ(modify("", "0"), 200);
    EXPECT_EQ(NamesIn(client_, parent), Names{});
    EXPECT_EQ(NamesIn(client_), (Names{"new/", "parent/"}));
    EXPECT_EQ(modify("both", parent), 200);
    EXPECT_EQ(NamesIn(client_, parent), Names{"both/"});
}

TEST_F(FoldersTest, AnUnusableChangeIsRefusedAsAWhole)
{
    const std::string id = AddFolder(client_, "old");
    const auto modify = [&](const std::string& folder, const std::string& name, const std::string& place) {
        return client_
            .PostJson("/object/folder/modi", Body({{"fo_id", folder}, {"name", name}, {"parent_fo_id", place}}))
            .status;
    };
    EXPECT_EQ(modify(id, "a\\\\b", ""), 400);
    EXPECT_EQ(modify(id, "new", "none"), 404);
    EXPECT_EQ(modify("none", "new", ""), 404);
    EXPECT_EQ(modify("0", "new", ""), 400);
    EXPECT_EQ(modify(id, "new", id), 409);
    EXPECT_EQ(NamesIn(client_), Names{"old/"});
}

TEST_F(FoldersTest, AFolderCannotBeMovedIntoItself)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    const std::string c = AddFolder(client_, "c", b);
    EXPECT_EQ(MoveFolder(client_, a, a).status, 409);
    EXPECT_EQ(MoveFolder(client_, a, b).status, 409);
    const Reply reply = MoveFolder(client_, a, c);
    EXPECT_EQ(reply.status, 409);
    EXPECT_FALSE(reply.Text("msg").empty());
    EXPECT_EQ(MoveFolder(client_, c, a).status, 200);
    EXPECT_EQ(NamesIn(client_, a), (Names{"b/", "c/"}));
    EXPECT_EQ(MoveFolder(client_, b, c).status, 200);
    EXPECT_EQ(NamesIn(client_, c), Names{"b/"});
}

TEST_F(FoldersTest, FilesMoveBetweenFolders)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b");
    const std::string key = PutFile(client_, "f", "content", a);
    EXPECT_EQ(NamesIn(client_, a), Names{"f"});
    EXPECT_EQ(client_.PostJson("/object/file/modi", Body({{"fkey", key}, {"fo_id", b}, {"name", "g"}})).status, 200);
    EXPECT_EQ(NamesIn(client_, a), Names{});
    EXPECT_EQ(NamesIn(client_, b), Names{"g"});
    EXPECT_EQ(client_.PostJson("/object/file/modi", Body({{"fkey", key}, {"fo_id", "0"}})).status, 200);
    EXPECT_EQ(NamesIn(client_), (Names{"a/", "b/", "g"}));
}

TEST_F(FoldersTest, EqualNamesAreKeptApartByTheirIds)
{
    const std::string first = AddFolder(client_, "same");
    const std::string second = AddFolder(client_, "same");
    EXPECT_NE(first, second);
    PutFile(client_, "f", "content", second);
    EXPECT_EQ(NamesIn(client_), (Names{"same/", "same/"}));
    EXPECT_EQ(NamesIn(client_, first), Names{});
    EXPECT_EQ(NamesIn(client_, second), Names{"f"});
}

TEST_F(FoldersTest, AListingCutsNamesToWhatTheRecordsHold)
{
    const std::string emoji = "\xF0\x9F\x98\x80";
    const std::string cut = std::string(63, 'x');
    AddFolder(client_, cut + emoji);
    const std::string key = PutFile(client_, std::string(64, 'y') + "z", "content");
    EXPECT_EQ(NamesIn(client_), (Names{cut + "/", std::string(64, 'y')}));
    EXPECT_NE(client_.Download(key).Header("Content-Disposition").find("yz;"), std::string::npos);
}

TEST_F(FoldersTest, ForEverGivesTheSpaceOfTheWholeTreeBack)
{
    const std::string a = AddFolder(client_, "a");
    const std::string b = AddFolder(client_, "b", a);
    PutFile(client_, "f", "1234567", a);
    const std::string inner = PutFile(client_, "g", "12345", b);
    const std::string rest = PutFile(client_, "rest", "123");
    EXPECT_EQ(client_.UsedSpace(), 15U);

    EXPECT_EQ(EraseFolder(client_, a).status, 200);
    EXPECT_EQ(client_.UsedSpace(), 3U);
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 1U);
    EXPECT_EQ(ListFolder(client_, b).status, 404);
    EXPECT_EQ(client_.Download(inner).status, 404);
    EXPECT_EQ(client_.Download(rest).body, "123");
    EXPECT_TRUE(ListBin(client_).empty());
    EXPECT_EQ(EraseFolder(client_, a).status, 404);
}

TEST_F(FoldersTest, AnUnfinishedFileGoesWithItsFolder)
{
    const std::string folder = AddFolder(client_, "a");
    const std::string key = client_.CreateLarge("big", "content").Text("fkey");
    EXPECT_EQ(client_.UploadBlock(key, 0, "con").status, 200);
    EXPECT_EQ(client_.PostJson("/object/file/modi", Body({{"fkey", key}, {"fo_id", folder}})).status, 200);
    EXPECT_EQ(RecycleFolder(client_, folder).status, 200);
    EXPECT_EQ(client_.UsedSpace(), 0U);
    EXPECT_EQ(CountFiles(options_.dataFolder / "partial"), 0U);
    EXPECT_EQ(client_.UploadBlock(key, 3, "tent").status, 404);
}

TEST_F(FoldersTest, TheTopStaysAsItIs)
{
    EXPECT_EQ(RecycleFolder(client_, "0").status, 400);
    EXPECT_EQ(EraseFolder(client_, "0").status, 400);
    EXPECT_EQ(RecycleFolder(client_, "none").status, 404);
    EXPECT_EQ(client_.PostJson("/object/folder/del", "{}").status, 400);
}

TEST_F(FoldersTest, AreTheirOwnersAlone)
{
    ServiceClient bob = LoggedIn("bob");
    const std::string id = AddFolder(client_, "private");
    const std::string key = PutFile(bob, "f", "content");
    EXPECT_EQ(ListFolder(bob, id).status, 404);
    EXPECT_EQ(MoveFolder(bob, id, "0").status, 404);
    EXPECT_EQ(RecycleFolder(bob, id).status, 404);
    EXPECT_EQ(EraseFolder(bob, id).status, 404);
    EXPECT_EQ(bob.PostJson("/object/folder/add", Body({{"name", "a"}, {"parent_fo_id", id}})).status, 404);
    EXPECT_EQ(bob.PostJson("/object/file/modi", Body({{"fkey", key}, {"fo_id", id}})).status, 404);
    EXPECT_EQ(NamesIn(bob), Names{"f"});
    EXPECT_EQ(NamesIn(client_), Names{"private/"});
}

TEST_F(FoldersTest, WantALogin)
{
    ServiceClient stranger(application_->Port());
    EXPECT_EQ(ListFolder(stranger).status, 403);
    EXPECT_EQ(stranger.PostJson("/object/folder/add", Body({{"name", "a"}})).status, 403);
    EXPECT_EQ(stranger.Get("/object/recyclebin/list").status, 403);
}

TEST_F(FoldersTest, StayWhenTheServicesStartAgain)
{
    const std::string folder = AddFolder(client_, "a");
    PutFile(client_, "f", "content", folder);
    Restart();
    ServiceClient client = LoggedIn();
    EXPECT_EQ(NamesIn(client), Names{"a/"});
    EXPECT_EQ(NamesIn(client, folder), Names{"f"});
}

} // namespace quorvex::services::test
