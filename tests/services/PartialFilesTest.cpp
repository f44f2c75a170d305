#include "common/PartialFiles.h"

#include "support/TemporaryFolder.h"
#include "support/UploadForms.h"

#include <algorithm>
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace quorvex::services::test
{

namespace
{

using Range = PartialFiles::Range;

class PartialFilesTest : public ::testing::Test
{
protected:
    PartialFilesTest()
    {
        database_.Transact([&](Transaction& transaction) { files_.Create(transaction, "key"); });
    }

    void Confirm(std::uint64_t first, std::uint64_t past)
    {
        database_.Transact([&](Transaction& transaction) { files_.Confirm(transaction, "key", {first, past}); });
    }

    void Forget(std::uint64_t first, std::uint64_t past)
    {
        database_.Transact([&](Transaction& transaction) { files_.Forget(transaction, "key", {first, past}); });
    }

    std::optional<Range> FirstMissing(std::uint64_t total)
    {
        return database_.Transact(
            [&](Transaction& transaction) { return files_.FirstMissing(transaction, "key", total); });
    }

    std::uint64_t HeldFromStart()
    {
        return database_.Transact([&](Transaction& transaction) { return files_.HeldFromStart(transaction, "key"); });
    }

    int CountRanges()
    {
        return database_.Transact([&](Transaction& transaction) {
            auto query = transaction.Prepare("SELECT COUNT(*) FROM confirmed_range");
            query.executeStep();
            return query.getColumn(0).getInt();
        });
    }

    TemporaryFolder folder_;
    Database database_{folder_.Path() / "test.db"};
    PartialFiles files_{database_, folder_.Path()};
};

} // namespace

TEST_F(PartialFilesTest, MissesEverythingAtFirst)
{
    EXPECT_EQ(FirstMissing(10), (Range{0, 10}));
    EXPECT_EQ(FirstMissing(0), std::nullopt);
    EXPECT_EQ(HeldFromStart(), 0U);
}

TEST_F(PartialFilesTest, NamesTheFirstGap)
{
    Confirm(0, 4);
    Confirm(6, 8);
    EXPECT_EQ(FirstMissing(10), (Range{4, 6}));
    Confirm(4, 6);
    EXPECT_EQ(FirstMissing(10), (Range{8, 10}));
    EXPECT_EQ(HeldFromStart(), 8U);
    Confirm(8, 10);
    EXPECT_EQ(FirstMissing(10), std::nullopt);
}

TEST_F(PartialFilesTest, JoinsNeighboursAndOverlaps)
{
    Confirm(10, 20);
    Confirm(30, 40);
    Confirm(20, 30);
    EXPECT_EQ(CountRanges(), 1);
    Confirm(5, 15);
    Confirm(12, 13);
    EXPECT_EQ(CountRanges(), 1);
    EXPECT_EQ(FirstMissing(40), (Range{0, 5}));
    Confirm(0, 100);
    EXPECT_EQ(CountRanges(), 1);
    EXPECT_EQ(HeldFromStart(), 100U);
}

TEST_F(PartialFilesTest, HasRoomForSizesPastFourGigabytes)
{
    Confirm(0, 5'000'000'000);
    EXPECT_EQ(FirstMissing(6'000'000'000), (Range{5'000'000'000, 6'000'000'000}));
}

TEST_F(PartialFilesTest, AgreesWithASimpleModelOnRandomBlocks)
{
    constexpr std::uint64_t total = 200;
    std::mt19937 generator(7);
    std::vector<bool> held(total);
    for (int round = 0; round < 150; ++round)
    {
        const std::uint64_t first = generator() % total;
        const std::uint64_t past = std::min<std::uint64_t>(total, first + generator() % 12);
        Confirm(first, past);
        std::fill(held.begin() + static_cast<std::ptrdiff_t>(first), held.begin() + static_cast<std::ptrdiff_t>(past),
                  true);

        const auto gap = std::find(held.begin(), held.end(), false);
        const auto gapEnd = std::find(gap, held.end(), true);
        const auto missing = FirstMissing(total);
        ASSERT_EQ(missing.has_value(), gap != held.end());
        if (missing)
        {
            ASSERT_EQ(missing->first, static_cast<std::uint64_t>(gap - held.begin()));
            ASSERT_EQ(missing->past, static_cast<std::uint64_t>(gapEnd - held.begin()));
        }
    }
}

TEST_F(PartialFilesTest, ForgetsTheBytesOfABlockAndNoOthers)
{
    Confirm(10, 20);
    Confirm(30, 40);
    Forget(20, 30);
    Forget(15, 15);
    Forget(12, 14);
    Confirm(0, 10);
    EXPECT_EQ(FirstMissing(40), (Range{12, 14}));
    Confirm(12, 14);
    EXPECT_EQ(FirstMissing(40), (Range{20, 30}));
    Forget(18, 33);
    EXPECT_EQ(FirstMissing(40), (Range{18, 33}));
    Confirm(18, 33);
    EXPECT_FALSE(FirstMissing(40));
    Forget(0, 40);
    EXPECT_EQ(FirstMissing(40), (Range{0, 40}));
}

TEST_F(PartialFilesTest, ForgetsConfirmedBytesWhoseFileIsLost)
{
    files_.Open("key").WriteAt(0, "data");
    Confirm(0, 4);
    files_.Recover();
    EXPECT_EQ(HeldFromStart(), 4U);

    std::filesystem::remove(files_.PathOf("key"));
    files_.Recover();
    EXPECT_EQ(HeldFromStart(), 0U);
}

TEST_F(PartialFilesTest, RemovesFilesThatNoRowNames)
{
    files_.Open("key").WriteAt(0, "data");
    files_.Open("stray").WriteAt(0, "data");
    files_.Recover();

    EXPECT_TRUE(std::filesystem::exists(files_.PathOf("key")));
    EXPECT_FALSE(std::filesystem::exists(files_.PathOf("stray")));
}

} // namespace quorvex::services::test
