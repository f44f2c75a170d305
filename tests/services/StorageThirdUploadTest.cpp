#include "support/StorageCalls.h"
#include "support/ThirdCalls.h"
#include "support/Together.h"

#include <algorithm>
#include <latch>
#include <mutex>
#include <random>
#include <set>

namespace quorvex::services::test
{

namespace
{

class StorageThirdUploadTest : public ServiceFixture
{
protected:
    static constexpr std::size_t BlockSize = 50'000;

    ThirdClient Third(const ServiceClient& client) { return {application_->Port(), client.Cookie()}; }

    ThirdBlock BlockAt(std::size_t offset, const std::string& ticket = {}, bool isLast = false) const
    {
        return {ticket, offset, content_.substr(offset, BlockSize), isLast};
    }

    void ExpectNothingHeld(ServiceClient& client)
    {
        EXPECT_EQ(UsedInDepot(client), 0U);
        EXPECT_EQ(ListDepot(client).Json()["files"].size(), 0U);
        for (const char* folder : {"blobs", "partial", "tmp"})
        {
            EXPECT_EQ(CountFiles(options_.dataFolder / folder), 0U) << folder;
        }
    }

    std::string content_ = SampleBytes(180'000, 8);
};

void ExpectBlock(const Reply& reply, std::uint64_t held)
{
    EXPECT_EQ(reply.status, 200);
    const Json::Value json = reply.Json();
    EXPECT_EQ(json["code"].asInt(), 200) << reply.body;
    EXPECT_EQ(json["fkey"].asString().size(), 32U);
    EXPECT_EQ(json["ticket"].asString().size(), 32U);
    EXPECT_EQ(json["fsize"].asUInt64(), held);
    EXPECT_EQ(json["msg"].asString(), "");
}

void ExpectRefusal(const Reply& reply, int code, const std::string& message)
{
    EXPECT_EQ(reply.status, 200);
    const Json::Value json = reply.Json();
    EXPECT_EQ(json["code"].asInt(), code) << reply.body;
    EXPECT_EQ(json["msg"].asString(), message);
    for (const char* key : {"fkey", "ticket"})
    {
        ASSERT_TRUE(json[key].isString()) << reply.body;
        EXPECT_EQ(json[key].asString(), "");
    }
    ASSERT_TRUE(json["fsize"].isUInt()) << reply.body;
    EXPECT_EQ(json["fsize"].asUInt(), 0U);
}

} // namespace

TEST_F(StorageThirdUploadTest, AFileArrivesInBlocks)
{
    ServiceClient first = LoggedIn();
    const ThirdClient client = Third(first);
    Reply reply = client.PutBlock(BlockAt(0));
    ExpectBlock(reply, 50'000);
    const std::string key = reply.Text("fkey");
    const std::string ticket = reply.Text("ticket");
    EXPECT_NE(key, ticket);
    for (std::size_t offset = BlockSize; offset < content_.size(); offset += BlockSize)
    {
        EXPECT_EQ(client.GetFile("1", key).status, 409);
        const bool isLast = offset + BlockSize >= content_.size();
        reply = client.PutBlock(BlockAt(offset, ticket, isLast));
        ExpectBlock(reply, std::min(offset + BlockSize, content_.size()));
        EXPECT_EQ(reply.Text("fkey"), key);
        EXPECT_EQ(reply.Text("ticket"), ticket);
    }
    const Reply whole = client.GetFile("1", key);
    EXPECT_EQ(whole.status, 200);
    EXPECT_TRUE(whole.body == content_);
    EXPECT_EQ(whole.Header("Content-Disposition"), "attachment;filename=\"file.bin;md5=" + Md5Of(content_));
    EXPECT_EQ(CountFiles(options_.dataFolder / "partial"), 0U);
    EXPECT_EQ(CountFiles(options_.dataFolder / "tmp"), 0U);
}

TEST_F(StorageThirdUploadTest, FilesOfAnySizeArrive)
{
    const ThirdClient client = Third(LoggedIn());
    for (const std::size_t size : {0U, 1U, 49'999U, 50'000U, 50'001U})
    {
        const std::string content = SampleBytes(size, 9);
        const std::string key = client.PutFile("f" + std::to_string(size), content, BlockSize);
        const Reply reply = client.GetFile("1", key);
        EXPECT_EQ(reply.status, 200);
        EXPECT_TRUE(reply.body == content) << size;
    }
}

TEST_F(StorageThirdUploadTest, BlocksComeInAnyOrderAndTheLastOneAnywhere)
{
    const ThirdClient client = Third(LoggedIn());
    const Reply begun = client.PutBlock(BlockAt(150'000));
    ExpectBlock(begun, 0);
    const std::string ticket = begun.Text("ticket");
    ExpectBlock(client.PutBlock(BlockAt(0, ticket)), 50'000);
    ExpectBlock(client.PutBlock(BlockAt(100'000, ticket)), 50'000);
    ExpectBlock(client.PutBlock(BlockAt(20'000, ticket)), 70'000);
    const Reply finished = client.PutBlock(BlockAt(50'000, ticket, true));
    ExpectBlock(finished, content_.size());
    EXPECT_TRUE(client.GetFile("0", finished.Text("fkey")).body == content_);
}

TEST_F(StorageThirdUploadTest, TheLastBlockSaysWhatIsMissing)
{
    const ThirdClient client = Third(LoggedIn());
    const std::string ticket = client.PutBlock(BlockAt(0)).Text("ticket");
    ExpectRefusal(client.PutBlock(BlockAt(150'000, ticket, true)), 409, "bytes 50000-149999 are missing");
    ExpectBlock(client.PutBlock(BlockAt(100'000, ticket)), 50'000);
    const Reply finished = client.PutBlock(BlockAt(50'000, ticket, true));
    ExpectBlock(finished, content_.size());
    EXPECT_TRUE(client.GetFile("1", finished.Text("fkey")).body == content_);
    ExpectRefusal(client.PutBlock(BlockAt(150'000, ticket, true)), 409, "the file is already complete");
}

TEST_F(StorageThirdUploadTest, AFirstBlockThatIsRefusedLeavesNothing)
{
    ServiceClient first = LoggedIn();
    const ThirdClient client = Third(first);
    ExpectRefusal(client.PutBlock(BlockAt(50'000, "", true)), 409, "bytes 0-49999 are missing");
    ExpectNothingHeld(first);
}

TEST_F(StorageThirdUploadTest, ABlockWithAWrongMd5ChangesNothing)
{
    ServiceClient first = LoggedIn();
    const ThirdClient client = Third(first);
    const auto damaged = [&](const ThirdBlock& block) {
        std::string bytes = block.content;
        bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
        return ThirdBlockForm(FieldsOf(block), block.name, bytes);
    };
    ExpectRefusal(client.PutBlock(damaged(BlockAt(0))), 409, "the MD5 does not match");
    ExpectNothingHeld(first);

    const std::string ticket = client.PutBlock(BlockAt(0)).Text("ticket");
    // What was confirmed stays, also where the damaged block lies upon it.
    ExpectRefusal(client.PutBlock(damaged(BlockAt(0, ticket))), 409, "the MD5 does not match");
    ExpectRefusal(client.PutBlock(damaged(BlockAt(50'000, ticket, true))), 409, "the MD5 does not match");
    EXPECT_EQ(UsedInDepot(first), 50'000U);
    ThirdBlock last = BlockAt(50'000, ticket, true);
    const Reply finished = client.PutBlock(last);
    ExpectBlock(finished, 100'000);
    EXPECT_TRUE(client.GetFile("1", finished.Text("fkey")).body == content_.substr(0, 100'000));
}

TEST_F(StorageThirdUploadTest, ABlockMayReplaceAnother)
{
    const ThirdClient client = Third(LoggedIn());
    const std::string ticket = client.PutBlock({"", 0, std::string(1000, 'a')}).Text("ticket");
    ExpectBlock(client.PutBlock({ticket, 500, std::string(1000, 'b')}), 1500);
    const Reply finished = client.PutBlock({ticket, 400, std::string(200, 'c'), true});
    ExpectBlock(finished, 1500);
    EXPECT_EQ(client.GetFile("1", finished.Text("fkey")).body,
              std::string(400, 'a') + std::string(200, 'c') + std::string(900, 'b'));
}

TEST_F(StorageThirdUploadTest, TicketsAreEachAccountsOwn)
{
    const ThirdClient alice = Third(LoggedIn());
    const ThirdClient bob = Third(LoggedIn("bob"));
    const Reply begun = alice.PutBlock(BlockAt(0));
    for (const std::string& ticket : {begun.Text("ticket"), begun.Text("fkey"), std::string("unknown")})
    {
        ExpectRefusal(bob.PutBlock(BlockAt(50'000, ticket)), 404, "no such ticket");
    }
    ExpectRefusal(alice.PutBlock(BlockAt(50'000, begun.Text("fkey"))), 404, "no such ticket");
    ExpectBlock(alice.PutBlock(BlockAt(50'000, begun.Text("ticket"))), 100'000);
}

TEST_F(StorageThirdUploadTest, HostileFormsAreRefused)
{
    ServiceClient first = LoggedIn();
    const ThirdClient client = Third(first);
    const ThirdBlock block{"", 0, "content", true};
    const FormFields fields = FieldsOf(block);
    std::vector<std::string> forms{std::string(), ThirdBlockForm({}, "f", "content")};
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        FormFields missing = fields;
        missing.erase(missing.begin() + static_cast<std::ptrdiff_t>(i));
        forms.push_back(ThirdBlockForm(missing, "f", block.content));
    }
    const auto with = [&](const std::string& name, const std::string& value) {
        FormFields changed = fields;
        std::find_if(changed.begin(), changed.end(), [&](const auto& field) { return field.first == name; })->second =
            value;
        return ThirdBlockForm(changed, "f", block.content);
    };
    for (const char* number : {"", "-1", "x", "1x", " 1", "0x1", "99999999999999999999"})
    {
        for (const char* name : {"offset", "flag", "filesize"})
        {
            forms.push_back(with(name, number));
        }
    }
    for (const char* tooSmall : {"0", "6"})
    {
        forms.push_back(with("filesize", tooSmall));
    }
    for (const char* outside : {"1", "8", "18446744073709551615", "18446744073709551610"})
    {
        forms.push_back(with("offset", outside));
    }
    forms.push_back(with("flag", "2"));
    forms.push_back(with("md5", ""));
    forms.push_back(with("md5", std::string(32, 'z')));
    forms.push_back(with("ticket", std::string(300, 't')));
    const std::string whole = ThirdBlockForm(fields, "f", block.content);
    forms.push_back(whole.substr(0, whole.size() - 6));
    for (const char* name : {"", "..", "a/b", "a\\b", "\x7f/"})
    {
        forms.push_back(ThirdBlockForm(fields, name, block.content));
    }
    forms.push_back(ThirdBlockForm(fields, std::string(256, 'n'), block.content));
    for (const std::string& form : forms)
    {
        const Reply reply = client.PutBlock(form);
        ExpectRefusal(reply, 400, reply.Text("msg"));
    }
    ExpectNothingHeld(first);
}

TEST_F(StorageThirdUploadTest, AFileGrowsNoFurtherThanThereIsRoom)
{
    Restart([](Application::Options& options) {
        options.storageLimits.quota = 100'000;
        options.storageLimits.maxFileSize = 90'000;
    });
    ServiceClient first = LoggedIn();
    const ThirdClient client = Third(first);
    const std::string ticket = client.PutBlock(BlockAt(0)).Text("ticket");
    ExpectRefusal(client.PutBlock({ticket, 50'000, content_.substr(0, 40'001)}), 413,
                  "the file is larger than a file may be");
    ExpectBlock(client.PutBlock({ticket, 50'000, content_.substr(50'000, 40'000)}), 90'000);
    // What the file has already needs no room of its own.
    ExpectBlock(client.PutBlock(BlockAt(0, ticket)), 90'000);
    ExpectRefusal(client.PutBlock({"", 0, std::string(10'001, 'x')}), 507, "the disk has no room for the file");
    EXPECT_EQ(UsedInDepot(first), 90'000U);
    ExpectRefusal(client.PutBlock({"", 4'294'967'295, "x"}), 413, "the file is larger than a file may be");
}

TEST_F(StorageThirdUploadTest, PositionsReachToTheEndOfThirtyTwoBits)
{
    ServiceClient first = LoggedIn();
    const ThirdClient client = Third(first);
    const Reply begun = client.PutBlock({"", 4'294'967'294, "x"});
    ExpectBlock(begun, 0);
    EXPECT_EQ(UsedInDepot(first), 4'294'967'295U);
    ExpectRefusal(client.PutBlock({begun.Text("ticket"), 0, "abc", true}), 409, "bytes 3-4294967293 are missing");
    EXPECT_EQ(ResultOf(RemoveFromDepot(first, begun.Text("fkey"))), 200);
    ExpectNothingHeld(first);
}

TEST_F(StorageThirdUploadTest, RangesAreAnswered)
{
    const ThirdClient client = Third(LoggedIn());
    const std::string key = client.PutFile("f", content_, BlockSize);
    const auto expectPart = [&](const std::string& range, std::size_t first, std::size_t count) {
        const Reply reply = client.GetFile("1", key, range);
        EXPECT_EQ(reply.status, 206) << range;
        EXPECT_TRUE(reply.body == content_.substr(first, count)) << range;
        EXPECT_EQ(reply.Header("Content-Range"),
                  "bytes " + std::to_string(first) + "-" + std::to_string(first + count - 1) + "/180000");
    };
    expectPart("bytes=0-0", 0, 1);
    expectPart("bytes=0-179999", 0, 180'000);
    expectPart("bytes=50000-99999", 50'000, 50'000);
    expectPart("bytes=179999-179999", 179'999, 1);
    expectPart("bytes=170000-4294967295", 170'000, 10'000);
    for (const char* outside : {"bytes=180000-180000", "bytes=4294967295-4294967295"})
    {
        const Reply reply = client.GetFile("1", key, outside);
        EXPECT_EQ(reply.status, 416);
        EXPECT_EQ(reply.Header("Content-Range"), "bytes */180000");
    }
    // How clients write a range of no bytes.
    EXPECT_EQ(client.GetFile("1", key, "bytes=5-4").status, 416);
}

TEST_F(StorageThirdUploadTest, FilesAreNamedByOwnerAndKey)
{
    const ThirdClient alice = Third(LoggedIn());
    const ThirdClient bob = Third(LoggedIn("bob"));
    const std::string key = alice.PutFile("f", "content", 4);
    EXPECT_EQ(bob.GetFile("1", key).body, "content");
    EXPECT_EQ(bob.GetFile("0", key).body, "content");
    for (const char* owner : {"2", "3", "", "x", "-1", "99999999999999999999"})
    {
        EXPECT_EQ(bob.GetFile(owner, key).status, 404) << owner;
    }
    for (const char* unknown : {"", "nothing", "..", "../../ops/images/0/p", "%00", "a/b"})
    {
        EXPECT_EQ(bob.GetFile("1", unknown).status, 404) << unknown;
    }
    EXPECT_EQ(bob.GetFile("1", key + "?x=y").status, 404);
}

TEST_F(StorageThirdUploadTest, AllGenerationsFetchTheSameBytes)
{
    ServiceClient first = LoggedIn();
    const ThirdClient third = Third(first);
    const std::string old = PutInDepot(first, "old.bin", content_);
    EXPECT_TRUE(third.GetFile("1", old).body == content_);
    EXPECT_TRUE(third.GetFile("0", old, "bytes=100-299").body == content_.substr(100, 200));

    const std::string recent = third.PutFile("recent.bin", content_, BlockSize);
    EXPECT_TRUE(GetFromDepot(first, "1", recent).body == content_);
    EXPECT_TRUE(GetFromDepot(first, "", recent, "bytes=100-299").body == content_.substr(100, 200));
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 1U);
    EXPECT_EQ(UsedInDepot(first), 2 * content_.size());
}

TEST_F(StorageThirdUploadTest, AFileIsOneOfTheDepotFromItsFirstBlockOn)
{
    ServiceClient first = LoggedIn();
    const ThirdClient third = Third(first);
    const std::string ticket = third.PutBlock(BlockAt(0)).Text("ticket");
    Json::Value listed = ListDepot(first).Json()["files"][0];
    EXPECT_EQ(listed["fname"].asString(), "file.bin");
    EXPECT_EQ(listed["fsize"].asUInt(), 50'000U);
    EXPECT_EQ(listed["fmd5"].asString(), "");
    EXPECT_EQ(listed["finish"].asInt(), 0);

    const Reply finished = third.PutBlock(BlockAt(50'000, ticket, true));
    listed = ListDepot(first).Json()["files"][0];
    EXPECT_EQ(listed["fkey"].asString(), finished.Text("fkey"));
    EXPECT_EQ(listed["fsize"].asUInt(), 100'000U);
    EXPECT_EQ(listed["fmd5"].asString(), Md5Of(content_.substr(0, 100'000)));
    EXPECT_EQ(listed["finish"].asInt(), 1);
    EXPECT_EQ(ResultOf(RenewInDepot(first, finished.Text("fkey"))), 200);
    EXPECT_EQ(ResultOf(RemoveFromDepot(first, finished.Text("fkey"))), 200);
    EXPECT_EQ(third.GetFile("1", finished.Text("fkey")).status, 404);
    ExpectRefusal(third.PutBlock(BlockAt(100'000, ticket, true)), 404, "no such ticket");
    ExpectNothingHeld(first);
}

TEST_F(StorageThirdUploadTest, TheFirstGenerationMayFinishWhatTheThirdBegan)
{
    ServiceClient first = LoggedIn();
    const ThirdClient third = Third(first);
    const Reply begun = third.PutBlock(BlockAt(0));
    EXPECT_EQ(ResultOf(FinishInDepot(first, begun.Text("fkey"))), 200);
    EXPECT_TRUE(third.GetFile("1", begun.Text("fkey")).body == content_.substr(0, BlockSize));
    ExpectRefusal(third.PutBlock(BlockAt(50'000, begun.Text("ticket"))), 409, "the file is already complete");
}

TEST_F(StorageThirdUploadTest, AFileWhoseTimeIsOverIsGone)
{
    ServiceClient first = LoggedIn();
    const std::string ticket = Third(first).PutBlock(BlockAt(0)).Text("ticket");
    const std::string key = Third(first).PutFile("f", "content", 4);
    now_ += 7L * 24 * 60 * 60;
    ServiceClient again = LoggedIn();
    ExpectRefusal(Third(again).PutBlock(BlockAt(50'000, ticket)), 404, "no such ticket");
    EXPECT_EQ(Third(again).GetFile("1", key).status, 404);
    ExpectNothingHeld(again);
}

TEST_F(StorageThirdUploadTest, AnUploadGoesOnAfterARestart)
{
    ServiceClient before = LoggedIn();
    const std::string ticket = Third(before).PutBlock(BlockAt(0)).Text("ticket");
    Restart();
    const ThirdClient after = Third(before);
    const Reply finished = after.PutBlock(BlockAt(50'000, ticket, true));
    ExpectBlock(finished, 100'000);
    EXPECT_TRUE(after.GetFile("1", finished.Text("fkey")).body == content_.substr(0, 100'000));
}

TEST_F(StorageThirdUploadTest, BlocksOfOneFileAtOnce)
{
    const ThirdClient client = Third(LoggedIn());
    const std::string ticket = client.PutBlock(BlockAt(0)).Text("ticket");
    Together(6, [&](int seed) {
        std::vector<std::size_t> offsets{0, 30'000, 50'000, 100'000, 130'000};
        std::shuffle(offsets.begin(), offsets.end(), std::mt19937(static_cast<unsigned>(seed)));
        for (const std::size_t offset : offsets)
        {
            EXPECT_EQ(CodeOf(client.PutBlock(BlockAt(offset, ticket))), 200);
        }
    });
    const Reply finished = client.PutBlock({ticket, 0, content_.substr(0, 1), true});
    ExpectBlock(finished, content_.size());
    EXPECT_TRUE(client.GetFile("1", finished.Text("fkey")).body == content_);
}

// All blocks have come before the first is written, so that nothing but the writing is left to do at once.
TEST_F(StorageThirdUploadTest, BlocksUponEachOtherNeverMix)
{
    constexpr int count = 6;
    constexpr std::size_t size = 24'000'000;
    const TemporaryFolder folder;
    Database database(folder.Path() / "services.db");
    const std::int64_t account = Accounts(database, 1).Ensure("alice", "secret");
    BlobStore blobs(database, folder.Path());
    PartialFiles partials(database, folder.Path());
    storage::Space space(database, {});
    storage::Depot depot(database, blobs, partials, space, options_.clock, 60);
    BlockFiles files(database, blobs, partials, depot);
    storage::TicketUploads uploads(depot, files);

    const auto add = [&](const std::string& ticket, const std::string& content, bool isLast) {
        BlobStore::Incoming bytes(blobs.TemporaryFolder());
        bytes.Append(content);
        return uploads.Add(account, {ticket, "f", 0, size, Md5Of(content), isLast}, bytes).upload;
    };
    const storage::Depot::Upload upload = add("", std::string(size, 'z'), false);
    std::latch start(count);
    Together(count, [&](int i) {
        const std::string content(size, static_cast<char>('a' + i));
        BlobStore::Incoming bytes(blobs.TemporaryFolder());
        bytes.Append(content);
        const std::string md5 = Md5Of(content);
        start.arrive_and_wait();
        uploads.Add(account, {upload.ticket, "f", 0, size, md5, false}, bytes);
    });
    add(upload.ticket, "", true);

    std::string held(size, '\0');
    const Download file = depot.Open(account, upload.key);
    ASSERT_EQ(file.size, size);
    ASSERT_EQ(file.content.ReadAt(0, held), size);
    EXPECT_TRUE(held == std::string(size, held[0]));
}

TEST_F(StorageThirdUploadTest, ManyFilesAtOnceEachGetTheirTicket)
{
    const ThirdClient client = Third(LoggedIn());
    std::mutex mutex;
    std::set<std::string> keys;
    Together(8, [&](int i) {
        for (unsigned round = 0; round < 3; ++round)
        {
            const std::string content = SampleBytes(120'000, static_cast<unsigned>(i) * 3U + round);
            const std::string key = client.PutFile("same name", content, BlockSize);
            EXPECT_TRUE(client.GetFile("1", key).body == content);
            const std::lock_guard lock(mutex);
            keys.insert(key);
        }
    });
    EXPECT_EQ(keys.size(), 24U);
}

TEST_F(StorageThirdUploadTest, ADepotOfTheVersionBeforeGainsTickets)
{
    ServiceClient before = LoggedIn();
    const std::string key = PutInDepot(before, "old.bin", "content");
    application_.reset();
    {
        SQLite::Database database((options_.dataFolder / "services.db").string(), SQLite::OPEN_READWRITE);
        database.exec("DROP INDEX storage_depot_file_by_ticket;"
                      "ALTER TABLE storage_depot_file DROP COLUMN ticket;"
                      "UPDATE schema_step SET applied = 1 WHERE component = 'storage'");
    }
    Restart();
    const ThirdClient after = Third(before);
    EXPECT_EQ(after.GetFile("1", key).body, "content");
    EXPECT_EQ(after.GetFile("1", after.PutFile("new.bin", content_, BlockSize)).status, 200);
}

} // namespace quorvex::services::test
