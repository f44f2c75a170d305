#include "support/DiskCalls.h"

namespace quorvex::services::test
{

namespace
{

using Names = std::vector<std::string>;

// Alice shares, bob holds the code.
class SharesTest : public ServiceFixture
{
protected:
    static constexpr std::int64_t Lifetime = 60;

    std::string ShareFile(const std::string& content = "content")
    {
        key_ = PutFile(alice_, "f.txt", content);
        return Share(alice_, {key_}, Lifetime).Text("pcode");
    }

    Reply Defer(ServiceClient& client, const std::string& code, const std::string& seconds)
    {
        return client.PostJson("/object/pcode/defer", R"({"pcode":")" + code + R"(","defersecond":)" + seconds + "}");
    }

    static Reply Delete(ServiceClient& client, const Names& codes)
    {
        return client.PostJson("/object/pcode/del", ArrayBody("pcodes", codes));
    }

    ServiceClient alice_ = LoggedIn();
    ServiceClient bob_ = LoggedIn("bob");
    std::string key_;
};

} // namespace

TEST_F(SharesTest, TheHolderSeesTheFiles)
{
    const std::string first = PutFile(alice_, "a.txt", "content");
    const std::string second = PutFile(alice_, "b.txt", "more", AddFolder(alice_, "folder"));
    const Reply created = Share(alice_, {second, first, second});
    EXPECT_EQ(created.status, 200);
    const std::string code = created.Text("pcode");
    EXPECT_EQ(code.size(), 32U);

    const Json::Value files = ShareInfo(bob_, code).Json()["files"];
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0]["fid"].asString(), first);
    EXPECT_EQ(files[0]["name"].asString(), "a.txt");
    EXPECT_EQ(files[0]["size"].asUInt(), 7U);
    EXPECT_EQ(files[0]["md5"].asString(), Md5Of("content"));
    EXPECT_EQ(files[0]["cflag"].asInt(), 1);
    EXPECT_EQ(files[1]["fid"].asString(), second);
}

TEST_F(SharesTest, TheHolderDownloadsWholeAndInParts)
{
    const std::string content = SampleBytes(300'000);
    const std::string code = ShareFile(content);
    const Reply whole = Fetch(bob_, code, key_);
    EXPECT_EQ(whole.status, 200);
    EXPECT_TRUE(whole.body == content);
    EXPECT_EQ(whole.Header("Content-Disposition"), "attachment;filename=\"f.txt;md5=" + Md5Of(content));
    const Reply part = Fetch(bob_, code, key_, "bytes=1000-200999");
    EXPECT_EQ(part.status, 206);
    EXPECT_EQ(part.Header("Content-Range"), "bytes 1000-200999/300000");
    EXPECT_TRUE(part.body == content.substr(1000, 200'000));
    EXPECT_EQ(Fetch(bob_, code, key_, "bytes=300000-").status, 416);
    EXPECT_EQ(bob_.Download(key_).status, 404);
}

TEST_F(SharesTest, DownloadsAreCounted)
{
    const std::string code = ShareFile();
    Fetch(bob_, code, key_);
    Fetch(bob_, code, key_, "bytes=0-0");
    Fetch(bob_, code, key_, "bytes=99-");
    Fetch(alice_, code, key_);
    const Json::Value share = alice_.Get("/object/pcode/list?type=0").Json()["pcodes"][0];
    EXPECT_EQ(share["downcount"].asUInt(), 2U);
    EXPECT_EQ(share["createtime"].asInt64(), now_.load());
    EXPECT_EQ(share["deadline"].asInt64(), now_ + Lifetime);
    EXPECT_EQ(ListFolder(alice_).Json()["files"][0]["downcount"].asUInt(), 2U);
}

TEST_F(SharesTest, ACodeEndsAtItsDeadline)
{
    const std::string code = ShareFile();
    now_ += Lifetime - 1;
    EXPECT_EQ(ShareInfo(bob_, code).status, 200);
    ++now_;
    const Reply info = ShareInfo(bob_, code);
    EXPECT_EQ(info.status, 404);
    EXPECT_FALSE(info.Text("msg").empty());
    EXPECT_EQ(Fetch(bob_, code, key_).status, 404);
    EXPECT_EQ(Save(bob_, code).status, 404);
    EXPECT_EQ(Defer(alice_, code, "60").status, 404);
    EXPECT_EQ(CodesListed(alice_, "2"), Names{code});
    EXPECT_EQ(Delete(alice_, {code}).status, 200);
    EXPECT_EQ(CodesListed(alice_, "0"), Names{});
}

TEST_F(SharesTest, ACodeCanBeEndedByTheAdministrator)
{
    const std::string code = ShareFile();
    EXPECT_EQ(Admin("pcodes/expire", Body({{"pcode", code}})).status, 200);
    EXPECT_EQ(ShareInfo(bob_, code).status, 404);
    EXPECT_EQ(CodesListed(alice_, "2"), Names{code});
    EXPECT_EQ(Admin("pcodes/expire", Body({{"pcode", code}})).status, 404);
    EXPECT_EQ(Admin("pcodes/expire", "{}").status, 400);
    EXPECT_EQ(bob_.PostJson("/admin/pcodes/expire", Body({{"pcode", code}})).status, 415);
}

TEST_F(SharesTest, TheOwnerExtendsACode)
{
    const std::string code = ShareFile();
    EXPECT_EQ(Defer(alice_, code, "100").status, 200);
    now_ += Lifetime + 99;
    EXPECT_EQ(ShareInfo(bob_, code).status, 200);
    ++now_;
    EXPECT_EQ(ShareInfo(bob_, code).status, 404);
}

TEST_F(SharesTest, TimesThatAreNoneAreRefused)
{
    const std::string code = ShareFile();
    for (const char* seconds : {"0", "-1", "4294967296", "1.5", "\"60\"", "null"})
    {
        EXPECT_EQ(Defer(alice_, code, seconds).status, 400) << seconds;
        EXPECT_EQ(alice_
                      .PostJson("/object/pcode/create",
                                ArrayBody("fkeys", {key_}, std::string(",\"alivesecond\":") + seconds))
                      .status,
                  400)
            << seconds;
    }
    EXPECT_EQ(alice_.PostJson("/object/pcode/create", ArrayBody("fkeys", {key_})).status, 400);
    EXPECT_EQ(Defer(alice_, code, "4294967295").status, 200);
    EXPECT_EQ(Share(alice_, {key_}, 4'294'967'295).status, 200);
}

TEST_F(SharesTest, CodesAreListedByType)
{
    const std::string expired = ShareFile();
    now_ += Lifetime;
    const std::string alive = Share(alice_, {key_}).Text("pcode");
    EXPECT_EQ(CodesListed(alice_, "0"), (Names{alive, expired}));
    EXPECT_EQ(CodesListed(alice_, ""), (Names{alive, expired}));
    EXPECT_EQ(CodesListed(alice_, "1"), Names{alive});
    EXPECT_EQ(CodesListed(alice_, "2"), Names{expired});
    EXPECT_EQ(alice_.Get("/object/pcode/list?type=3").status, 400);
    EXPECT_EQ(alice_.Get("/object/pcode/list?type=x").status, 400);
    EXPECT_EQ(CodesListed(bob_, "0"), Names{});
}

TEST_F(SharesTest, OnlyTheOwnerDeletesAndExtends)
{
    const std::string code = ShareFile();
    EXPECT_EQ(Delete(bob_, {code}).status, 404);
    EXPECT_EQ(Defer(bob_, code, "60").status, 404);
    EXPECT_EQ(Share(bob_, {key_}).status, 404);
    EXPECT_EQ(ShareInfo(bob_, code).status, 200);
}

TEST_F(SharesTest, CodesAreDeletedAllOrNone)
{
    const std::string first = ShareFile();
    const std::string second = Share(alice_, {key_}).Text("pcode");
    EXPECT_EQ(Delete(alice_, {first, second, "none"}).status, 404);
    EXPECT_EQ(CodesListed(alice_, "1").size(), 2U);
    EXPECT_EQ(Delete(alice_, {first, second, first}).status, 200);
    EXPECT_EQ(ShareInfo(bob_, first).status, 404);
    EXPECT_EQ(CodesListed(alice_, "0"), Names{});
    EXPECT_EQ(alice_.Download(key_).status, 200);
}

TEST_F(SharesTest, OneToTwoHundredAreTakenAtATime)
{
    Names keys;
    for (int i = 0; i < 201; ++i)
    {
        keys.push_back(alice_.UploadWhole("f" + std::to_string(i), "content").Text("fkey"));
    }
    EXPECT_EQ(Share(alice_, {}).status, 400);
    EXPECT_EQ(Share(alice_, keys).status, 400);
    EXPECT_EQ(Delete(alice_, {}).status, 400);
    EXPECT_EQ(Delete(alice_, keys).status, 400);
    keys.pop_back();
    const Reply created = Share(alice_, keys);
    EXPECT_EQ(created.status, 200);
    EXPECT_EQ(ShareInfo(bob_, created.Text("pcode")).Json()["files"].size(), 200U);
    EXPECT_EQ(Save(bob_, created.Text("pcode")).Json()["fkeys"].size(), 200U);
    EXPECT_EQ(bob_.UsedSpace(), 1400U);
}

TEST_F(SharesTest, WhatCannotBeSharedIsRefused)
{
    const std::string code = ShareFile();
    const std::string unfinished = alice_.CreateLarge("big", "something else").Text("fkey");
    EXPECT_EQ(Share(alice_, {key_, unfinished}).status, 409);
    EXPECT_EQ(Share(alice_, {key_, "none"}).status, 404);
    EXPECT_EQ(Share(alice_, {key_, AddFolder(alice_, "folder")}).status, 404);
    EXPECT_EQ(alice_.PostJson("/object/pcode/create", R"({"fkeys":"k","alivesecond":1})").status, 400);
    EXPECT_EQ(alice_.PostJson("/object/pcode/create", R"({"fkeys":[1],"alivesecond":1})").status, 400);
    EXPECT_EQ(alice_.PostJson("/object/pcode/create", R"({"fkeys":["cut)").status, 400);
    EXPECT_EQ(CodesListed(alice_, "0"), Names{code});
}

TEST_F(SharesTest, ASavedFileIsTheHoldersOwn)
{
    const std::string code = ShareFile();
    const std::string folder = AddFolder(bob_, "saved");
    const Reply saved = Save(bob_, code, folder);
    EXPECT_EQ(saved.status, 200);
    EXPECT_EQ(NamesIn(bob_, folder), Names{"f.txt"});
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 1U);
    EXPECT_EQ(bob_.UsedSpace(), 7U);

    EXPECT_EQ(EraseFile(alice_, key_).status, 200);
    const std::string copy = saved.Json()["fkeys"][0].asString();
    EXPECT_EQ(bob_.Download(copy).body, "content");
    EXPECT_EQ(EraseFile(bob_, copy).status, 200);
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 0U);
}

TEST_F(SharesTest, SavingKeepsTheQuota)
{
    const std::string first = PutFile(alice_, "a", "12345");
    const std::string second = PutFile(alice_, "b", "1234");
    const std::string code = Share(alice_, {first, second}).Text("pcode");
    PutFile(bob_, "own", "12");
    struct Case
    {
        netdisk::Limits limits;
        int status;
    };
    for (const Case& item : {Case{{10, 8}, 507}, Case{{100, 4}, 413}, Case{{11, 5}, 200}})
    {
        Restart([&](Application::Options& options) { options.netDiskLimits = item.limits; });
        ServiceClient bob = LoggedIn("bob");
        EXPECT_EQ(Save(bob, code).status, item.status);
        EXPECT_EQ(bob.UsedSpace(), item.status == 200 ? 11U : 2U);
    }
}

TEST_F(SharesTest, SavingIntoAFolderThatIsNotThereIsRefused)
{
    const std::string code = ShareFile();
    EXPECT_EQ(Save(bob_, code, AddFolder(alice_, "alices")).status, 404);
    EXPECT_EQ(Save(bob_, "none").status, 404);
    EXPECT_EQ(bob_.UsedSpace(), 0U);
    EXPECT_EQ(bob_.PostJson("/object/pcode/save", R"({"fo_id":"0"})").status, 400);
    EXPECT_EQ(bob_.PostJson("/object/pcode/save", Body({{"pcode", code}})).status, 200);
}

TEST_F(SharesTest, ADeletedFileIsOutOfReachUntilItIsRestored)
{
    const std::string code = ShareFile();
    RecycleFile(alice_, key_);
    EXPECT_TRUE(ShareInfo(bob_, code).Json()["files"].empty());
    EXPECT_EQ(Fetch(bob_, code, key_).status, 404);
    Recover(alice_, ItemNamed(alice_, "f.txt"));
    EXPECT_EQ(Fetch(bob_, code, key_).body, "content");
    EXPECT_EQ(EraseFile(alice_, key_).status, 200);
    EXPECT_EQ(ShareInfo(bob_, code).body, R"({"files":[]})");
}

TEST_F(SharesTest, SavingLeavesOutWhatIsOutOfReach)
{
    const std::string first = PutFile(alice_, "a", "12345");
    const std::string folder = AddFolder(alice_, "folder");
    const std::string second = PutFile(alice_, "b", "1234", folder);
    const std::string code = Share(alice_, {first, second}).Text("pcode");
    RecycleFile(alice_, first);
    EXPECT_EQ(Save(bob_, code).Json()["fkeys"].size(), 1U);
    EXPECT_EQ(NamesIn(bob_), Names{"b"});
    EXPECT_EQ(bob_.UsedSpace(), 4U);

    RecycleFolder(alice_, folder);
    const Reply none = Save(bob_, code);
    EXPECT_EQ(none.status, 404);
    EXPECT_EQ(none.Text("msg"), "none of the share code's files is within reach");
    Recover(alice_, ItemNamed(alice_, "a"));
    EXPECT_EQ(Save(bob_, code).status, 200);
    EXPECT_EQ(NamesIn(bob_), (Names{"a", "b"}));

    EXPECT_EQ(EraseFile(alice_, first).status, 200);
    EXPECT_EQ(EraseFolder(alice_, folder).status, 200);
    EXPECT_EQ(Save(bob_, code).status, 404);
}

TEST_F(SharesTest, ACodeOpensOnlyItsFiles)
{
    const std::string code = ShareFile();
    const std::string other = PutFile(alice_, "other", "secret");
    EXPECT_EQ(Fetch(bob_, code, other).status, 404);
    EXPECT_EQ(Fetch(bob_, "none", key_).status, 404);
    EXPECT_EQ(bob_.Get("/object/pcode/down").status, 404);
    EXPECT_EQ(ShareInfo(bob_, "").status, 404);
}

TEST_F(SharesTest, WantALogin)
{
    const std::string code = ShareFile();
    ServiceClient stranger(application_->Port());
    EXPECT_EQ(ShareInfo(stranger, code).status, 403);
    EXPECT_EQ(Fetch(stranger, code, key_).status, 403);
    EXPECT_EQ(Save(stranger, code).status, 403);
    EXPECT_EQ(stranger.Get("/object/pcode/list?type=0").status, 403);
}

} // namespace quorvex::services::test
