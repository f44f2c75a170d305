#include "common/Accounts.h"
#include "common/HttpAnswers.h"
#include "netdisk/LargeFiles.h"
#include "netdisk/NetDiskStore.h"
#include "netdisk/RecycleBin.h"
#include "support/TemporaryFolder.h"
#include "support/UploadForms.h"

#include <gtest/gtest.h>

namespace quorvex::services::netdisk::test
{

namespace
{

using services::test::CountFiles;
using services::test::Md5Of;
using services::test::TemporaryFolder;

class StoreTest : public ::testing::Test
{
protected:
    static constexpr Limits SmallLimits{100, 60};

    std::string Add(const std::string& name, std::string_view content)
    {
        BlobStore::Incoming incoming(blobs_.TemporaryFolder());
        incoming.Append(content);
        BlobStore::Staged staged = blobs_.Stage(incoming);
        return store_.Add(account_, name, staged);
    }

    std::size_t BlobFiles() const { return CountFiles(folder_.Path() / "blobs"); }
    std::uint64_t Used() { return store_.GetCapacity(account_).used; }

    int StatusOf(const std::function<void()>& action)
    {
        try
        {
            action();
        }
        catch (const HttpError& error)
        {
            return error.GetStatus();
        }
        return Status::Ok;
    }

    TemporaryFolder folder_;
    Database database_{folder_.Path() / "test.db"};
    Accounts accounts_{database_, 1};
    BlobStore blobs_{database_, folder_.Path()};
    PartialFiles partials_{database_, folder_.Path()};
    std::int64_t account_ = accounts_.Ensure("alice", "secret");
    std::int64_t other_ = accounts_.Ensure("bob", "secret");
    Folders folders_{database_, [] { return 1; }};
    NetDiskStore store_{database_, blobs_, partials_, folders_, [] { return 1; }, SmallLimits};
    RecycleBin bin_{database_, folders_, store_, [] { return 1; }};
    LargeFiles largeFiles_{database_, blobs_, partials_, store_};
};

} // namespace

TEST_F(StoreTest, HoldsEqualContentOnceUntilTheLastFileGoes)
{
    const std::string first = Add("a", "same");
    const std::string second = Add("b", "same");
    Add("c", "other");
    EXPECT_EQ(BlobFiles(), 2U);
    EXPECT_EQ(Used(), 13U);

    store_.Erase(account_, first);
    EXPECT_EQ(BlobFiles(), 2U);
    EXPECT_EQ(store_.Open(account_, second).content.Size(), 4U);

    store_.Erase(account_, second);
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(Used(), 5U);
}

TEST_F(StoreTest, RefusesWhatDoesNotFit)
{
    Add("a", std::string(60, 'a'));
    EXPECT_EQ(StatusOf([&] { Add("b", std::string(61, 'b')); }), Status::PayloadTooLarge);
    EXPECT_EQ(StatusOf([&] { Add("c", std::string(41, 'c')); }), Status::InsufficientStorage);
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(Used(), 60U);

    Add("d", std::string(40, 'd'));
    EXPECT_EQ(Used(), 100U);
}

TEST_F(StoreTest, KeepsSpaceForFilesThatAreStillArriving)
{
    const LargeFiles::State state = largeFiles_.Create(account_, "big", {Md5Of("x"), 60});
    EXPECT_EQ(Used(), 60U);
    EXPECT_EQ(StatusOf([&] { largeFiles_.Create(account_, "next", {Md5Of("y"), 50}); }), Status::InsufficientStorage);

    store_.Erase(account_, state.key);
    EXPECT_EQ(Used(), 0U);
}

TEST_F(StoreTest, RecycledFilesTakeSpaceUntilTheyAreErased)
{
    const std::string key = Add("a", "content");
    bin_.RecycleFile(account_, key);
    EXPECT_EQ(Used(), 7U);
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(StatusOf([&] { store_.Open(account_, key); }), Status::NotFound);
    EXPECT_EQ(StatusOf([&] { bin_.RecycleFile(account_, key); }), Status::NotFound);

    store_.Erase(account_, key);
    EXPECT_EQ(Used(), 0U);
    EXPECT_EQ(BlobFiles(), 0U);
}

TEST_F(StoreTest, AnUnfinishedFileIsNotRecycledButErased)
{
    const std::string key = largeFiles_.Create(account_, "big", {Md5Of("0123456789"), 10}).key;
    LargeFiles::Block block = largeFiles_.OpenBlock(account_, key, 0, 4);
    block.Append("0123");
    block.Confirm();
    EXPECT_EQ(CountFiles(folder_.Path() / "partial"), 1U);

    bin_.RecycleFile(account_, key);
    EXPECT_EQ(Used(), 0U);
    EXPECT_EQ(CountFiles(folder_.Path() / "partial"), 0U);
}

TEST_F(StoreTest, ADiskIsItsOwnersAlone)
{
    const std::string key = Add("a", "content");
    EXPECT_EQ(StatusOf([&] { store_.Open(other_, key); }), Status::NotFound);
    EXPECT_EQ(StatusOf([&] { store_.Modify(other_, key, "", "b"); }), Status::NotFound);
    EXPECT_EQ(StatusOf([&] { bin_.RecycleFile(other_, key); }), Status::NotFound);
    EXPECT_EQ(StatusOf([&] { store_.Erase(other_, key); }), Status::NotFound);
    EXPECT_EQ(store_.GetCapacity(other_).used, 0U);
    EXPECT_EQ(store_.Open(account_, key).name, "a");
}

TEST_F(StoreTest, ABlockThatOutlivesTheFinishCannotTouchTheFile)
{
    const std::string key = largeFiles_.Create(account_, "big", {Md5Of("0123"), 4}).key;
    LargeFiles::Block late = largeFiles_.OpenBlock(account_, key, 0, 4);
    LargeFiles::Block block = largeFiles_.OpenBlock(account_, key, 0, 4);
    block.Append("0123");
    block.Confirm();
    largeFiles_.Finish(account_, key);

    EXPECT_EQ(StatusOf([&] { late.Append("XXXX"); }), Status::Conflict);
    std::array<char, 4> content{};
    store_.Open(account_, key).content.ReadAt(0, content);
    EXPECT_EQ(std::string_view(content.data(), 4), "0123");
}

TEST_F(StoreTest, AFinishedFileSharesItsContentWithAnEqualOne)
{
    const std::string whole = Add("whole", "0123");
    const std::string key = largeFiles_.Create(account_, "big", {Md5Of("4567"), 4}).key;
    LargeFiles::Block block = largeFiles_.OpenBlock(account_, key, 0, 4);
    block.Append("4567");
    block.Confirm();
    Add("same as big", "4567");
    EXPECT_EQ(BlobFiles(), 2U);

    largeFiles_.Finish(account_, key);
    EXPECT_EQ(BlobFiles(), 2U);
    EXPECT_EQ(CountFiles(folder_.Path() / "partial"), 0U);
}

TEST_F(StoreTest, RecoversFromLeftOvers)
{
    const std::string key = Add("a", "content");
    BlobStore::Incoming incoming(blobs_.TemporaryFolder());
    incoming.Append("half");
    FileHandle(folder_.Path() / "blobs" / "ffstray", FileHandle::Mode::CreateNew).WriteAt(0, "stray");

    blobs_.Recover();
    EXPECT_EQ(CountFiles(folder_.Path() / "tmp"), 0U);
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(store_.Open(account_, key).content.Size(), 7U);
}

TEST_F(StoreTest, MigratesOnlyOnce)
{
    const std::string key = Add("a", "content");
    const Folders again(database_, [] { return 1; });
    EXPECT_EQ(store_.Open(account_, key).name, "a");
}

TEST(DatabaseTest, RollsBackWhatFails)
{
    const TemporaryFolder folder;
    Database database(folder.Path() / "test.db");
    database.Migrate("t", {"CREATE TABLE t (x INTEGER)"});
    bool hasRun = false;
    EXPECT_THROW(database.Transact([&](Transaction& transaction) {
        transaction.Prepare("INSERT INTO t VALUES (1)").exec();
        transaction.AfterCommit([&] { hasRun = true; });
        throw HttpError(Status::Conflict, "no");
    }),
                 HttpError);
    const int count = database.Transact([](Transaction& transaction) {
        auto query = transaction.Prepare("SELECT COUNT(*) FROM t");
        query.executeStep();
        return query.getColumn(0).getInt();
    });
    EXPECT_EQ(count, 0);
    EXPECT_FALSE(hasRun);
}

TEST(DatabaseTest, AddsOnlyTheNewSteps)
{
    const TemporaryFolder folder;
    Database database(folder.Path() / "test.db");
    database.Migrate("t", {"CREATE TABLE t (x INTEGER)"});
    database.Migrate("t", {"CREATE TABLE t (x INTEGER)", "ALTER TABLE t ADD COLUMN y INTEGER"});
    database.Transact([](Transaction& transaction) {
        EXPECT_EQ(transaction.Prepare("INSERT INTO t (x, y) VALUES (1, 2)").exec(), 1);
    });
}

} // namespace quorvex::services::netdisk::test
