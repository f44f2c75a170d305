#include "support/StorageCalls.h"
#include "support/Together.h"

#include <algorithm>
#include <random>

namespace quorvex::services::test
{

namespace
{

class DepotTest : public ServiceFixture
{
protected:
    static constexpr std::size_t ChunkSize = 50'000;
    static constexpr std::int64_t Week = 7 * 24 * 60 * 60;

    std::string content_ = SampleBytes(1'030'000);

    void SendChunks(ServiceClient& client, const std::string& key, const std::vector<std::size_t>& positions)
    {
        for (const std::size_t position : positions)
        {
            const Reply reply =
                PutChunk(client, key, static_cast<std::uint32_t>(position), content_.substr(position, ChunkSize));
            ASSERT_EQ(ResultOf(reply), 200) << reply.body;
            ASSERT_EQ(reply.Text("errorinfo"), "");
        }
    }

    std::vector<std::size_t> AllPositions() const
    {
        std::vector<std::size_t> positions;
        for (std::size_t position = 0; position < content_.size(); position += ChunkSize)
        {
            positions.push_back(position);
        }
        return positions;
    }

    std::size_t BlobFiles() const { return CountFiles(options_.dataFolder / "blobs"); }
    std::size_t PartialFilesHeld() const { return CountFiles(options_.dataFolder / "partial"); }

    ServiceClient WithRoom()
    {
        Restart([](Application::Options& options) { options.storageLimits.quota = 1ULL << 40U; });
        return LoggedIn();
    }
};

} // namespace

TEST_F(DepotTest, AFileArrivesInChunks)
{
    ServiceClient client = LoggedIn();
    const Reply created = CreateInDepot(client, "big.bin", content_);
    EXPECT_EQ(created.status, 200);
    EXPECT_EQ(ResultOf(created), 200);
    EXPECT_EQ(created.Json()["fsize"].asUInt(), 0U);
    EXPECT_EQ(created.Text("errorinfo"), "");
    const std::string key = created.Text("fkey");
    EXPECT_EQ(key.size(), 32U);
    SendChunks(client, key, AllPositions());
    const Reply finished = FinishInDepot(client, key);
    EXPECT_EQ(finished.body, R"({"errorinfo":"","result":200})");
    EXPECT_EQ(ResultOf(FinishInDepot(client, key)), 200);
    const Reply whole = GetFromDepot(client, "1", key);
    EXPECT_EQ(whole.status, 200);
    EXPECT_EQ(whole.Header("Content-Length"), std::to_string(content_.size()));
    EXPECT_TRUE(whole.body == content_);
    EXPECT_EQ(PartialFilesHeld(), 0U);
}

TEST_F(DepotTest, ChunksComeInAnyOrderRepeatedAndOverlapping)
{
    ServiceClient client = LoggedIn();
    const std::string key = CreateInDepot(client, "big.bin", content_).Text("fkey");
    std::vector<std::size_t> positions = AllPositions();
    const std::vector<std::size_t> more{25'000, 975'000, 333'333, 0, 500'000, 1'029'999};
    positions.insert(positions.end(), more.begin(), more.end());
    std::shuffle(positions.begin(), positions.end(), std::mt19937(3));
    SendChunks(client, key, positions);
    EXPECT_EQ(ResultOf(FinishInDepot(client, key)), 200);
    EXPECT_TRUE(GetFromDepot(client, "1", key).body == content_);
}

TEST_F(DepotTest, ChunksOfOneFileArriveOverSeveralConnections)
{
    constexpr int count = 6;
    const std::string content = SampleBytes(count * 4 * ChunkSize, 7);
    std::vector<ServiceClient> clients;
    for (int i = 0; i < count; ++i)
    {
        clients.push_back(LoggedIn());
    }
    const std::string key = CreateInDepot(clients[0], "big", content).Text("fkey");
    Together(count, [&](int i) {
        const auto index = static_cast<std::size_t>(i);
        for (std::size_t chunk = index; chunk < count * 4; chunk += count)
        {
            const std::size_t position = chunk * ChunkSize;
            EXPECT_EQ(ResultOf(PutChunk(clients[index], key, static_cast<std::uint32_t>(position),
                                        content.substr(position, ChunkSize))),
                      200);
        }
    });
    Together(count, [&](int i) { EXPECT_EQ(ResultOf(FinishInDepot(clients[static_cast<std::size_t>(i)], key)), 200); });
    EXPECT_TRUE(GetFromDepot(clients[0], "", key).body == content);
}

TEST_F(DepotTest, IsNotFinishedWhileBytesAreMissingOrWrong)
{
    ServiceClient client = LoggedIn();
    const std::string key = CreateInDepot(client, "f", "0123456789").Text("fkey");
    EXPECT_EQ(FinishInDepot(client, key).Text("errorinfo"), "bytes 0-9 are missing");
    PutChunk(client, key, 6, "6789");
    PutChunk(client, key, 0, "012");
    const Reply missing = FinishInDepot(client, key);
    EXPECT_EQ(missing.status, 200);
    EXPECT_EQ(ResultOf(missing), 409);
    EXPECT_EQ(missing.Text("errorinfo"), "bytes 3-5 are missing");
    PutChunk(client, key, 3, "xyz");
    const Reply wrong = FinishInDepot(client, key);
    EXPECT_EQ(ResultOf(wrong), 409);
    EXPECT_EQ(wrong.Text("errorinfo"), "the MD5 does not match, all blocks are to be sent again");
    EXPECT_EQ(FinishInDepot(client, key).Text("errorinfo"), "bytes 0-9 are missing");
    PutChunk(client, key, 0, "0123456789");
    EXPECT_EQ(ResultOf(FinishInDepot(client, key)), 200);
    EXPECT_EQ(GetFromDepot(client, "1", key).body, "0123456789");
    EXPECT_EQ(ResultOf(PutChunk(client, key, 0, "x")), 409);
}

TEST_F(DepotTest, AnInterruptedUploadGoesOn)
{
    ServiceClient client = LoggedIn();
    const std::string key = CreateInDepot(client, "big.bin", content_).Text("fkey");
    SendChunks(client, key, {0, 50'000, 200'000});
    Restart();
    ServiceClient again = LoggedIn();
    const Reply created = CreateInDepot(again, "big.bin", content_);
    EXPECT_EQ(created.Text("fkey"), key);
    EXPECT_EQ(created.Json()["fsize"].asUInt(), 100'000U);
    EXPECT_NE(CreateInDepot(again, "another.bin", content_).Text("fkey"), key);
    SendChunks(again, key, AllPositions());
    EXPECT_EQ(ResultOf(FinishInDepot(again, key)), 200);
    // Once it is finished, the same announcement is for another file.
    const std::string second = CreateInDepot(again, "big.bin", content_).Text("fkey");
    EXPECT_NE(second, key);
    SendChunks(again, second, AllPositions());
    EXPECT_EQ(ResultOf(FinishInDepot(again, second)), 200);
    EXPECT_EQ(BlobFiles(), 1U);
}

TEST_F(DepotTest, ChunksMustLieInsideAndHaveTheirSize)
{
    ServiceClient client = LoggedIn();
    const std::string key = CreateInDepot(client, "f", "0123456789").Text("fkey");
    const auto result = [&](const std::string& form) { return ResultOf(PutChunk(client, form)); };
    EXPECT_EQ(result(ChunkForm(key, 8, 10, "xyz")), 400);
    EXPECT_EQ(result(ChunkForm(key, 11, 13, "xyz")), 400);
    EXPECT_EQ(result(ChunkForm(key, 5, 3, "x")), 400);
    EXPECT_EQ(result(ChunkForm(key, 0, 0xFFFFFFFE, "x")), 400);
    EXPECT_EQ(result(ChunkForm(key, 0, 0x100000000, "x")), 400);
    EXPECT_EQ(result(ChunkForm(key, 0, 2, "more")), 400);
    EXPECT_EQ(result(ChunkForm(key, 0, 2, "le")), 400);
    EXPECT_EQ(result(ChunkForm("unknown", 0, 0, "x")), 404);
    std::string withoutKey = ChunkForm(key, 0, 0, "x");
    withoutKey.replace(withoutKey.find("\"k\""), 3, "\"x\"");
    EXPECT_EQ(result(withoutKey), 400);
    std::string wrongNumber = ChunkForm(key, 0, 0, "x");
    wrongNumber.replace(wrongNumber.find("\r\n\r\n0\r\n"), 7, "\r\n\r\n-\r\n");
    EXPECT_EQ(result(wrongNumber), 400);
    const std::string whole = ChunkForm(key, 0, 2, "abc");
    EXPECT_EQ(result(whole.substr(0, whole.size() - 8)), 400);
    EXPECT_EQ(FinishInDepot(client, key).Text("errorinfo"), "bytes 0-9 are missing");
}

TEST_F(DepotTest, AFileMayBeEmpty)
{
    ServiceClient client = LoggedIn();
    const std::string key = CreateInDepot(client, "empty", "").Text("fkey");
    EXPECT_EQ(ResultOf(PutChunk(client, key, 0, "")), 200);
    EXPECT_EQ(ResultOf(FinishInDepot(client, key)), 200);
    const Reply probe = GetFromDepot(client, "1", key, "bytes=0-0");
    EXPECT_EQ(probe.status, 206);
    EXPECT_EQ(probe.Header("Content-Range"), "bytes 0-0/0");
}

TEST_F(DepotTest, ASizeOfTwoGiBAndMoreComesAsANegativeNumber)
{
    ServiceClient client = WithRoom();
    const auto create = [&](std::int64_t size) {
        return CreateInDepot(client, DepotForm("f" + std::to_string(size), Md5Of("x"), size)).Text("fkey");
    };
    const std::string threeGiB = create(-1'073'741'824);
    EXPECT_EQ(FinishInDepot(client, threeGiB).Text("errorinfo"), "bytes 0-3221225471 are missing");
    EXPECT_EQ(ResultOf(PutChunk(client, threeGiB, 3'221'225'469U, "end")), 200);
    EXPECT_EQ(ResultOf(PutChunk(client, threeGiB, 2'147'483'647U, "middle")), 200);
    EXPECT_EQ(ResultOf(PutChunk(client, threeGiB, 0, "start")), 200);
    EXPECT_EQ(ResultOf(PutChunk(client, threeGiB, 3'221'225'470U, "end")), 400);
    EXPECT_EQ(FinishInDepot(client, threeGiB).Text("errorinfo"), "bytes 5-2147483646 are missing");
    EXPECT_EQ(ListDepot(client).Json()["files"][0]["fsize"].asUInt(), 3'221'225'472U);
    EXPECT_EQ(UsedInDepot(client), 3'221'225'472U);

    EXPECT_EQ(FinishInDepot(client, create(-1)).Text("errorinfo"), "bytes 0-4294967294 are missing");
    EXPECT_EQ(FinishInDepot(client, create(-2'147'483'648)).Text("errorinfo"), "bytes 0-2147483647 are missing");
    EXPECT_EQ(FinishInDepot(client, create(2'147'483'647)).Text("errorinfo"), "bytes 0-2147483646 are missing");
    // Written without a sign.
    EXPECT_EQ(FinishInDepot(client, create(4'294'967'295)).Text("errorinfo"), "bytes 0-4294967294 are missing");
    EXPECT_EQ(ResultOf(CreateInDepot(client, DepotForm("f", Md5Of("x"), 4'294'967'296))), 413);
    EXPECT_EQ(ResultOf(CreateInDepot(client, DepotForm("f", Md5Of("x"), -2'147'483'649))), 400);
}

TEST_F(DepotTest, AnnouncementsMustBeUsable)
{
    ServiceClient client = LoggedIn();
    const std::string md5 = Md5Of("x");
    const std::string zeros(40, '0');
    for (const std::string& form :
         {std::string(), std::string("n=f"), DepotForm("", md5, 1), DepotForm("a/b", md5, 1), DepotForm("f", "", 1),
          DepotForm("f", "no md5", 1), DepotForm(std::string(256, 'n'), md5, 1), DepotForm("f", md5, 1) + "x",
          "n=f&s=t&m=" + md5 + "&sh=" + zeros, "n=f&s=t&m=" + md5 + "&sz=1", "n=f&s=t&m=" + md5 + "&sh=0&sz=1",
          "n=f&m=" + md5 + "&sh=" + zeros + "&sz=1", "n=f&s=t&m=" + md5 + "&sh=" + zeros + "&sz="})
    {
        const Reply reply = CreateInDepot(client, form);
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(ResultOf(reply), 400) << form;
        EXPECT_EQ(reply.Text("fkey"), "");
        EXPECT_TRUE(reply.Json()["fsize"].isInt());
        EXPECT_FALSE(reply.Text("errorinfo").empty());
    }
    EXPECT_EQ(ResultOf(CreateInDepot(client, std::string(70'000, 'n'))), 413);
    EXPECT_EQ(ResultOf(client.PostJson("/storage/ofs/upload_e_rest.php", "key=1")), 400);
    EXPECT_EQ(ResultOf(FinishInDepot(client, "unknown")), 404);
}

TEST_F(DepotTest, NamesAreTakenAsTheyCome)
{
    ServiceClient client = LoggedIn();
    const std::pair<std::string, std::string> names[] = {{"a&b=c&s=d.txt", "a&b=c&s=d.txt"},
                                                         {"100%+.txt", "100%+.txt"},
                                                         {"caf\x82.txt", "caf\xC3\xA9.txt"},
                                                         {"\xE4\xB8\xAD.txt", "\xE4\xB8\xAD.txt"},
                                                         {"????.txt", "????.txt"}};
    for (const auto& [sent, kept] : names)
    {
        const std::string key = PutInDepot(client, sent, "x");
        EXPECT_EQ(GetFromDepot(client, "1", key).Header("Content-Disposition"),
                  "attachment;filename=\"" + kept + ";md5=" + Md5Of("x") + ";sha=" + std::string(40, '0'));
        EXPECT_EQ(ListDepot(client).Json()["files"][0]["fname"].asString(), kept);
        EXPECT_EQ(ResultOf(RemoveFromDepot(client, key)), 200);
    }
}

TEST_F(DepotTest, AnyoneWhoKnowsOwnerAndKeyDownloads)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    const std::string key = PutInDepot(alice, "a;b.bin", content_);
    EXPECT_TRUE(GetFromDepot(bob, "1", key).body == content_);
    const Reply probe = GetFromDepot(bob, "1", key, "bytes=0-0");
    EXPECT_EQ(probe.status, 206);
    EXPECT_EQ(probe.Header("Content-Range"), "bytes 0-0/1030000");
    EXPECT_EQ(probe.Header("Content-Length"), "1");
    EXPECT_EQ(probe.Header("Content-Disposition"),
              "attachment;filename=\"a_b.bin;md5=" + Md5Of(content_) + ";sha=" + std::string(40, '0'));
    const Reply range = GetFromDepot(bob, "1", key, "bytes=1000000-2000000");
    EXPECT_EQ(range.status, 206);
    EXPECT_EQ(range.Header("Content-Range"), "bytes 1000000-1029999/1030000");
    EXPECT_TRUE(range.body == content_.substr(1'000'000));
    EXPECT_EQ(GetFromDepot(bob, "1", key, "bytes=1030000-1030001").status, 416);
    EXPECT_EQ(GetFromDepot(bob, "2", key).status, 404);
    EXPECT_EQ(GetFromDepot(bob, "", key).status, 404);
    EXPECT_EQ(GetFromDepot(bob, "x", key).status, 404);
    EXPECT_EQ(GetFromDepot(bob, "1", "unknown").status, 404);
}

TEST_F(DepotTest, OnlyItsOwnerChangesAFile)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    const std::string unfinished = CreateInDepot(alice, "a", "content").Text("fkey");
    EXPECT_EQ(ResultOf(PutChunk(bob, unfinished, 0, "content")), 404);
    EXPECT_EQ(ResultOf(FinishInDepot(bob, unfinished)), 404);
    EXPECT_EQ(ResultOf(RenewInDepot(bob, unfinished)), 404);
    EXPECT_EQ(ResultOf(RemoveFromDepot(bob, unfinished)), 404);
    EXPECT_NE(CreateInDepot(bob, "a", "content").Text("fkey"), unfinished);
    EXPECT_EQ(GetFromDepot(bob, "1", unfinished).status, 409);
    EXPECT_EQ(ListDepot(bob).Json()["files"].size(), 1U);
}

TEST_F(DepotTest, ListsItsFiles)
{
    ServiceClient client = LoggedIn();
    EXPECT_EQ(ListDepot(client).body, R"({"errorinfo":"","files":[],"result":200})");
    const std::string first = PutInDepot(client, std::string(63, 'n') + "\xC3\xA9.bin", "content");
    now_ += 61;
    const std::string second = CreateInDepot(client, "b", "0123456789").Text("fkey");
    const Json::Value files = ListDepot(client).Json()["files"];
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0]["fkey"].asString(), first);
    EXPECT_EQ(files[0]["fname"].asString(), std::string(63, 'n'));
    EXPECT_EQ(files[0]["fsize"].asUInt(), 7U);
    EXPECT_EQ(files[0]["fmd5"].asString(), Md5Of("content"));
    EXPECT_EQ(files[0]["fsha1"].asString(), std::string(40, '0'));
    EXPECT_EQ(files[0]["createtime"].asString(), "2023-11-14 22:13:20");
    EXPECT_EQ(files[0]["finish"].asInt(), 1);
    EXPECT_EQ(files[0]["leftminute"].asInt(), 7 * 24 * 60 - 1);
    EXPECT_EQ(files[1]["fkey"].asString(), second);
    EXPECT_EQ(files[1]["createtime"].asString(), "2023-11-14 22:14:21");
    EXPECT_EQ(files[1]["finish"].asInt(), 0);
    EXPECT_EQ(files[1]["leftminute"].asInt(), 7 * 24 * 60);
}

TEST_F(DepotTest, TellsTheSpace)
{
    Restart([](Application::Options& options) { options.storageLimits.quota = 1000; });
    ServiceClient client = LoggedIn();
    const std::string key = PutInDepot(client, "a", std::string(300, 'a'));
    EXPECT_EQ(DepotSpace(client).body,
              R"({"errorinfo":"","freespace":700,"result":200,"totalsize":300,"totalspace":1000,"uid":"1"})");
    const Reply refused = CreateInDepot(client, "b", std::string(701, 'b'));
    EXPECT_EQ(ResultOf(refused), 507);
    EXPECT_EQ(refused.Text("fkey"), "");
    const std::string unfinished = CreateInDepot(client, "b", std::string(700, 'b')).Text("fkey");
    EXPECT_EQ(DepotSpace(client).Json()["freespace"].asInt(), 0);
    EXPECT_EQ(ResultOf(PutPicture(client, "p", "x")), 507);
    EXPECT_EQ(ResultOf(RemoveFromDepot(client, unfinished)), 200);
    EXPECT_EQ(ResultOf(RemoveFromDepot(client, key)), 200);
    EXPECT_EQ(ResultOf(RemoveFromDepot(client, key)), 404);
    EXPECT_EQ(UsedInDepot(client), 0U);
    EXPECT_EQ(BlobFiles(), 0U);
    EXPECT_EQ(PartialFilesHeld(), 0U);
}

TEST_F(DepotTest, FilesGoWhenTheirTimeIsOver)
{
    ServiceClient client = LoggedIn();
    const std::string finished = PutInDepot(client, "a", "aaa");
    const std::string unfinished = CreateInDepot(client, "b", "bbb").Text("fkey");
    PutChunk(client, unfinished, 0, "b");
    now_ += Week - 1;
    ServiceClient later = LoggedIn();
    EXPECT_EQ(ListDepot(later).Json()["files"][0]["leftminute"].asInt(), 1);
    EXPECT_EQ(GetFromDepot(later, "1", finished).status, 200);
    now_ += 1;
    EXPECT_EQ(GetFromDepot(later, "1", finished).status, 404);
    EXPECT_EQ(ResultOf(PutChunk(later, unfinished, 1, "bb")), 404);
    EXPECT_EQ(ListDepot(later).Json()["files"].size(), 0U);
    EXPECT_EQ(UsedInDepot(later), 0U);
    EXPECT_EQ(BlobFiles(), 0U);
    EXPECT_EQ(PartialFilesHeld(), 0U);
}

TEST_F(DepotTest, ARenewalGivesTheWholeTimeAgain)
{
    ServiceClient client = LoggedIn();
    const std::string renewed = PutInDepot(client, "a", "aaa");
    const std::string left = PutInDepot(client, "b", "bbb");
    const std::string announced = CreateInDepot(client, "c", "ccc").Text("fkey");
    now_ += Week - 1;
    ServiceClient later = LoggedIn();
    EXPECT_EQ(RenewInDepot(later, renewed).body, R"({"errorinfo":"","result":200})");
    PutChunk(later, announced, 0, "ccc");
    EXPECT_EQ(ResultOf(FinishInDepot(later, announced)), 200);
    now_ += Week - 1;
    ServiceClient last = LoggedIn();
    EXPECT_EQ(GetFromDepot(last, "1", renewed).body, "aaa");
    EXPECT_EQ(GetFromDepot(last, "1", announced).body, "ccc");
    EXPECT_EQ(GetFromDepot(last, "1", left).status, 404);
    EXPECT_EQ(ResultOf(RenewInDepot(last, left)), 404);
}

TEST_F(DepotTest, AStartRemovesWhatIsOver)
{
    ServiceClient client = LoggedIn();
    PutInDepot(client, "a", "aaa");
    EXPECT_EQ(BlobFiles(), 1U);
    now_ += Week;
    Restart();
    EXPECT_EQ(BlobFiles(), 0U);
}

TEST_F(DepotTest, SpaceOfFilesThatAreOverIsFree)
{
    Restart([](Application::Options& options) {
        options.storageLimits.quota = 1000;
        options.storageLimits.keepingTime = 60;
    });
    ServiceClient client = LoggedIn();
    PutInDepot(client, "a", std::string(1000, 'a'));
    EXPECT_EQ(ResultOf(PutPicture(client, "p", "x")), 507);
    now_ += 60;
    EXPECT_EQ(ResultOf(PutPicture(client, "p", "x")), 200);
    EXPECT_EQ(ResultOf(CreateInDepot(client, "b", std::string(999, 'b'))), 200);
}

TEST_F(DepotTest, AFilesTimeEndsOnDemand)
{
    ServiceClient client = LoggedIn();
    const std::string key = PutInDepot(client, "a", "aaa");
    const std::string other = PutInDepot(client, "b", "bbb");
    EXPECT_EQ(Admin("depot/expire", KeyBody(key)).Text("fkey"), key);
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(GetFromDepot(client, "1", key).status, 404);
    EXPECT_EQ(GetFromDepot(client, "1", other).status, 200);
    EXPECT_EQ(Admin("depot/expire", KeyBody(key)).status, 404);
    EXPECT_EQ(Admin("depot/expire", "{}").status, 400);
    EXPECT_EQ(client.PostJson("/admin/depot/expire", KeyBody(other)).status, 415);
}

TEST_F(DepotTest, AFileCanGoWhileItsChunksArrive)
{
    constexpr int count = 4;
    std::vector<ServiceClient> clients;
    for (int i = 0; i < count; ++i)
    {
        clients.push_back(LoggedIn());
    }
    for (int round = 0; round < 10; ++round)
    {
        const std::string key = CreateInDepot(clients[0], "big", content_).Text("fkey");
        Together(count, [&](int i) {
            ServiceClient& client = clients[static_cast<std::size_t>(i)];
            if (i == 0)
            {
                EXPECT_EQ(ResultOf(RemoveFromDepot(client, key)), 200);
                return;
            }
            const int result = ResultOf(PutChunk(client, key, 0, content_));
            EXPECT_TRUE(result == 200 || result == 404) << result;
        });
        EXPECT_EQ(UsedInDepot(clients[0]), 0U);
    }
    // A chunk under way may have made the file again; a start takes it away.
    Restart();
    EXPECT_EQ(PartialFilesHeld(), 0U);
}

} // namespace quorvex::services::test
