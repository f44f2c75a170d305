#include "support/RawHttp.h"
#include "support/StorageCalls.h"
#include "support/Together.h"

#include <map>
#include <mutex>

namespace quorvex::services::test
{

namespace
{

class StorageFilesTest : public ServiceFixture
{
protected:
    std::size_t BlobFiles() const { return CountFiles(options_.dataFolder / "blobs"); }
    std::size_t TemporaryFiles() const { return CountFiles(options_.dataFolder / "tmp"); }

    // The query's bytes as they are.
    RawAnswer GetRaw(const std::string& target, const ServiceClient& client)
    {
        return Exchange(application_->Port(), "GET " + target + " HTTP/1.1\r\nHost: h\r\nCookie: " + client.Cookie() +
                                                  "\r\nConnection: close\r\n\r\n");
    }
};

void ExpectUpload(const Reply& reply, int result, const std::string& key, std::size_t size)
{
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(ResultOf(reply), result) << reply.body;
    EXPECT_EQ(reply.Text("fkey"), key);
    EXPECT_EQ(reply.Json()["fsize"].asUInt(), size);
    EXPECT_TRUE(reply.Json()["errorinfo"].isString());
}

constexpr const char* Accented = "caf\xC3\xA9.png";

} // namespace

TEST_F(StorageFilesTest, APictureIsKeyedByItsName)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    for (const std::size_t size : {0U, 1U, 262'144U, 1'000'003U})
    {
        const std::string name = "p" + std::to_string(size) + ".png";
        const std::string content = SampleBytes(size, 3);
        ExpectUpload(PutPicture(alice, name, content), 200, name, size);
        const Reply reply = GetPicture(bob, name);
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.Header("Content-Length"), std::to_string(size));
        EXPECT_EQ(reply.Header("Content-Encoding"), "");
        EXPECT_TRUE(reply.body == content) << size;
    }
}

TEST_F(StorageFilesTest, APictureHeldAlreadyIsToldSo)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    ExpectUpload(PutPicture(alice, "p.png", "content"), 200, "p.png", 7);
    ExpectUpload(PutPicture(alice, "p.png", "content"), 409, "p.png", 7);
    ExpectUpload(PutPicture(bob, "p.png", "content"), 409, "p.png", 7);
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(UsedInDepot(alice), 7U);
    EXPECT_EQ(UsedInDepot(bob), 0U);
}

TEST_F(StorageFilesTest, OnlyItsOwnerReplacesAPicture)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    PutPicture(alice, "p.png", "old");
    ExpectUpload(PutPicture(alice, "p.png", "newer"), 200, "p.png", 5);
    EXPECT_EQ(GetPicture(bob, "p.png").body, "newer");
    const Reply refused = PutPicture(bob, "p.png", "other");
    ExpectUpload(refused, 423, "", 0);
    EXPECT_EQ(refused.Text("errorinfo"), "a file of another user has this name");
    EXPECT_EQ(GetPicture(bob, "p.png").body, "newer");
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(UsedInDepot(alice), 5U);
}

TEST_F(StorageFilesTest, NamesFromFormsAndQueriesMeet)
{
    ServiceClient client = LoggedIn();
    // In the OEM code page, in UTF-8, and the signs that stand where control characters would.
    ExpectUpload(PutPicture(client, "caf\x82.png", "oem"), 200, Accented, 3);
    EXPECT_EQ(GetPicture(client, Accented).body, "oem");
    ExpectUpload(PutPicture(client, Accented, "utf8"), 200, Accented, 4);
    EXPECT_EQ(GetPicture(client, Accented).body, "utf8");
    EXPECT_EQ(GetRaw("/storage/ops/down.php?k=caf\x82.png", client).body, "utf8");
    for (const char* name :
         {"\xE4\xB8\xAD\xE6\x96\x87.png", "\xD1\x84\xD0\xBE\xD1\x82\xD0\xBE.png", "\xF0\x9F\x98\x80.png"})
    {
        ExpectUpload(PutPicture(client, name, name), 200, name, std::string(name).size());
        EXPECT_EQ(GetPicture(client, name).body, name);
    }
    ExpectUpload(PutPicture(client, "\x01\x03.png", "signs"), 200, "\xE2\x98\xBA\xE2\x99\xA5.png", 5);
    EXPECT_EQ(GetPicture(client, "\xE2\x98\xBA\xE2\x99\xA5.png").body, "signs");
}

TEST_F(StorageFilesTest, WhatTheCodePageLacksArrivesAsQuestionMarks)
{
    ServiceClient client = LoggedIn();
    ExpectUpload(PutPicture(client, "????.png", "cyrillic"), 200, "????.png", 8);
    EXPECT_EQ(GetRaw("/storage/ops/down.php?k=????.png", client).body, "cyrillic");
    ExpectUpload(PutPicture(client, "????.png", "chinese"), 200, "????.png", 7);
}

TEST_F(StorageFilesTest, AKeyMayHoldWhatQueriesUseOtherwise)
{
    ServiceClient client = LoggedIn();
    for (const std::string name :
         {"a&b=c.png", "100%.png", "a+b.png", "a b.png", "a?k=b.png", "???", "a#b.png", "q\"q.png"})
    {
        ExpectUpload(PutPicture(client, name, name), 200, name, name.size());
        std::string target = "/storage/ops/down.php?k=";
        for (const char letter : name)
        {
            target += letter == ' ' ? std::string("%20") : std::string(1, letter);
        }
        EXPECT_EQ(GetRaw(target, client).body, name);
    }
}

TEST_F(StorageFilesTest, NamesThatCannotBeKeysAreRefused)
{
    ServiceClient client = LoggedIn();
    ExpectUpload(PutPicture(client, std::string(64, 'k'), "x"), 200, std::string(64, 'k'), 1);
    for (const std::string& name :
         {std::string(), std::string("../up"), std::string("a\\b"), std::string(65, 'k'), std::string("a\0b", 3)})
    {
        ExpectUpload(PutPicture(client, name, "x"), 400, "", 0);
        ExpectUpload(PutEmoticon(client, name, "x"), 400, "", 0);
    }
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(StorageFilesTest, BrokenFormsAreRefused)
{
    ServiceClient client = LoggedIn();
    const std::string path = "/storage/ops/upload_rest.php";
    const std::string whole = WholeForm("p.png", "content");
    ExpectUpload(client.PostJson(path, whole.substr(0, whole.size() - 10), BlockFormType), 400, "", 0);
    ExpectUpload(client.PostJson(path, whole, "text/plain"), 400, "", 0);
    ExpectUpload(client.PostJson(path, ChunkForm("key", 0, 0, "x"), BlockFormType), 400, "", 0);
    EXPECT_EQ(GetPicture(client, "p.png").status, 404);
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(StorageFilesTest, UnknownKeysAreNotFound)
{
    ServiceClient client = LoggedIn();
    EXPECT_EQ(GetPicture(client, "nothing").status, 404);
    EXPECT_EQ(client.Get("/storage/ops/down.php").status, 404);
    EXPECT_EQ(GetEmoticon(client, "1", "nothing").status, 404);
    EXPECT_EQ(ResultOf(RemoveEmoticon(client, "nothing")), 404);
    EXPECT_EQ(ResultOf(client.Get("/storage/ods/remove_rest.php")), 404);
    EXPECT_EQ(client.Get("/storage/ops/nothing.php").status, 404);
    EXPECT_EQ(client.Get("/storage/ops/downXphp?k=a").status, 404);
}

TEST_F(StorageFilesTest, MoreThanThereIsRoomForIsRefused)
{
    Restart([](Application::Options& options) {
        options.storageLimits.quota = 1'000'000;
        options.storageLimits.maxFileSize = 600'000;
    });
    ServiceClient client = LoggedIn();
    ExpectUpload(PutPicture(client, "large", std::string(600'001, 'x')), 413, "", 0);
    ExpectUpload(PutPicture(client, "p", std::string(600'000, 'x')), 200, "p", 600'000);
    const Reply full = PutEmoticon(client, "e", std::string(400'001, 'y'));
    ExpectUpload(full, 507, "", 0);
    EXPECT_EQ(full.Text("errorinfo"), "the disk has no room for the file");
    ExpectUpload(PutEmoticon(client, "e", std::string(400'000, 'y')), 200, "e", 400'000);
    EXPECT_EQ(UsedInDepot(client), 1'000'000U);
    EXPECT_EQ(TemporaryFiles(), 0U);
    ServiceClient other = LoggedIn("bob");
    ExpectUpload(PutEmoticon(other, "e", std::string(400'001, 'y')), 200, "e", 400'001);
}

TEST_F(StorageFilesTest, EmoticonsAreEachUsersOwn)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    ExpectUpload(PutEmoticon(alice, "smile.gif", "alice's"), 200, "smile.gif", 7);
    ExpectUpload(PutEmoticon(bob, "smile.gif", "bob's"), 200, "smile.gif", 5);
    ExpectUpload(PutEmoticon(bob, "smile.gif", "bob's"), 409, "smile.gif", 5);
    ExpectUpload(PutEmoticon(alice, "\x82.gif", "accent"), 200, "\xC3\xA9.gif", 6);
    EXPECT_EQ(GetEmoticon(bob, "1", "smile.gif").body, "alice's");
    EXPECT_EQ(GetEmoticon(bob, "2", "smile.gif").body, "bob's");
    EXPECT_EQ(GetEmoticon(bob, "", "smile.gif").body, "bob's");
    EXPECT_EQ(GetEmoticon(bob, "1", "\xC3\xA9.gif").body, "accent");
    for (const char* uid : {"3", "0", "-1", "x", "1x", "99999999999999999999", "9223372036854775808"})
    {
        EXPECT_EQ(GetEmoticon(bob, uid, "smile.gif").status, 404) << uid;
    }
    EXPECT_EQ(GetPicture(bob, "smile.gif").status, 404);
}

TEST_F(StorageFilesTest, EmoticonsAreListedAndRemoved)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    EXPECT_EQ(ListEmoticons(alice).body, R"({"errorinfo":"","files":[],"result":200})");
    const std::string longName = std::string(63, 'n') + "\xC3\xA9";
    PutEmoticon(alice, "b.gif", "bb");
    PutEmoticon(alice, "a.gif", "a");
    PutEmoticon(alice, longName, "long");
    PutEmoticon(bob, "c.gif", "c");
    const Json::Value listing = ListEmoticons(alice).Json();
    EXPECT_EQ(listing["result"].asInt(), 200);
    EXPECT_EQ(listing["errorinfo"].asString(), "");
    ASSERT_EQ(listing["files"].size(), 3U);
    EXPECT_EQ(listing["files"][0]["fkey"].asString(), "a.gif");
    EXPECT_EQ(listing["files"][0]["fname"].asString(), "a.gif");
    EXPECT_EQ(listing["files"][1]["fsize"].asUInt(), 2U);
    EXPECT_EQ(listing["files"][2]["fkey"].asString(), longName);
    EXPECT_EQ(listing["files"][2]["fname"].asString(), std::string(63, 'n'));

    EXPECT_EQ(ResultOf(RemoveEmoticon(bob, "a.gif")), 404);
    const Reply removed = RemoveEmoticon(alice, "a.gif");
    EXPECT_EQ(ResultOf(removed), 200);
    EXPECT_EQ(removed.Text("errorinfo"), "");
    EXPECT_EQ(ResultOf(RemoveEmoticon(alice, "a.gif")), 404);
    EXPECT_EQ(GetEmoticon(bob, "1", "a.gif").status, 404);
    EXPECT_EQ(ListEmoticons(alice).Json()["files"].size(), 2U);
    EXPECT_EQ(UsedInDepot(alice), 6U);
}

TEST_F(StorageFilesTest, EqualContentIsSharedWithTheDisk)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("disk", "same").Text("fkey");
    PutPicture(client, "p", "same");
    PutEmoticon(client, "e", "same");
    PutInDepot(client, "d", "same");
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(UsedInDepot(client), 12U);
    EXPECT_EQ(client.UsedSpace(), 4U);
    client.PostJson("/object/file/del4ever", KeyBody(key));
    RemoveEmoticon(client, "e");
    EXPECT_EQ(GetPicture(client, "p").body, "same");
}

TEST_F(StorageFilesTest, StayOverARestart)
{
    ServiceClient client = LoggedIn();
    PutPicture(client, "p", "picture");
    PutEmoticon(client, "e", "emoticon");
    Restart();
    ServiceClient again = LoggedIn();
    EXPECT_EQ(GetPicture(again, "p").body, "picture");
    EXPECT_EQ(GetEmoticon(again, "", "e").body, "emoticon");
}

TEST_F(StorageFilesTest, OneOfManyWhoTakeANameAtOnceGetsIt)
{
    constexpr int count = 8;
    std::vector<ServiceClient> clients;
    for (int i = 0; i < count; ++i)
    {
        clients.push_back(LoggedIn("user" + std::to_string(i)));
    }
    std::mutex mutex;
    std::map<int, int> results;
    Together(count, [&](int i) {
        const int result =
            ResultOf(PutPicture(clients[static_cast<std::size_t>(i)], "p", SampleBytes(50'000, unsigned(i))));
        const std::lock_guard lock(mutex);
        ++results[result];
    });
    EXPECT_EQ(results[200], 1);
    EXPECT_EQ(results[423], count - 1);
    EXPECT_EQ(BlobFiles(), 1U);
}

TEST_F(StorageFilesTest, ADownloadIsOneOrTheOtherWhileThePictureIsReplaced)
{
    constexpr int count = 6;
    const std::string contents[] = {SampleBytes(200'000, 1), SampleBytes(200'000, 2)};
    std::vector<ServiceClient> clients;
    for (int i = 0; i < count; ++i)
    {
        clients.push_back(LoggedIn());
    }
    PutPicture(clients[0], "p", contents[0]);
    Together(count, [&](int i) {
        ServiceClient& client = clients[static_cast<std::size_t>(i)];
        for (int round = 0; round < 10; ++round)
        {
            if (i < 2)
            {
                const int result = ResultOf(PutPicture(client, "p", contents[i]));
                EXPECT_TRUE(result == 200 || result == 409) << result;
                continue;
            }
            const Reply reply = GetPicture(client, "p");
            EXPECT_TRUE(reply.body == contents[0] || reply.body == contents[1]) << reply.status;
        }
    });
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(UsedInDepot(clients[0]), 200'000U);
}

} // namespace quorvex::services::test
