#include "Progress.h"

#include <gtest/gtest.h>

#include <limits>

namespace quorvex::console
{
namespace
{

constexpr std::uint64_t kKib = 1024;
constexpr std::uint64_t kMib = 1024 * kKib;
constexpr std::uint64_t kGib = 1024 * kMib;

TEST(SizeText, ChoosesTheUnit)
{
    EXPECT_EQ(SizeText(0), "0 bytes");
    EXPECT_EQ(SizeText(1), "1 byte");
    EXPECT_EQ(SizeText(1023), "1023 bytes");
    EXPECT_EQ(SizeText(kKib), "1.0 KiB");
    EXPECT_EQ(SizeText(1536), "1.5 KiB");
    EXPECT_EQ(SizeText(64 * kMib), "64.0 MiB");
    EXPECT_EQ(SizeText(4 * kGib - 1), "4.0 GiB");
    EXPECT_EQ(SizeText(std::numeric_limits<std::uint64_t>::max()), "16.0 EiB");
}

TEST(SizeText, NeverSays1024OfAUnit)
{
    EXPECT_EQ(SizeText(kMib - 1), "1.0 MiB");
    EXPECT_EQ(SizeText(kGib - 1), "1.0 GiB");
    EXPECT_EQ(SizeText(1023 * kKib), "1023.0 KiB");
}

TEST(ExactSizeText, AddsTheBytesWhenTheUnitHidesThem)
{
    EXPECT_EQ(ExactSizeText(0), "0 bytes");
    EXPECT_EQ(ExactSizeText(1023), "1023 bytes");
    EXPECT_EQ(ExactSizeText(1234), "1.2 KiB (1234 bytes)");
}

TEST(DurationText, ChoosesTheUnit)
{
    EXPECT_EQ(DurationText(0), "0 s");
    EXPECT_EQ(DurationText(59), "59 s");
    EXPECT_EQ(DurationText(60), "1:00 min");
    EXPECT_EQ(DurationText(125), "2:05 min");
    EXPECT_EQ(DurationText(3599), "59:59 min");
    EXPECT_EQ(DurationText(3600), "1:00:00 h");
    EXPECT_EQ(DurationText(3725), "1:02:05 h");
    EXPECT_EQ(DurationText(360000), "100:00:00 h");
}

TEST(ProgressText, TellsShareSizesRateAndTimeLeft)
{
    EXPECT_EQ(ProgressText(16 * kMib, 64 * kMib, 4.0 * kMib), "25 %  16.0 MiB of 64.0 MiB  4.0 MiB/s  13 s left");
}

TEST(ProgressText, TellsNoTimeLeftAtTheEnd)
{
    EXPECT_EQ(ProgressText(64 * kMib, 64 * kMib, 4.0 * kMib), "100 %  64.0 MiB of 64.0 MiB  4.0 MiB/s");
}

TEST(ProgressText, TellsNoRateThatIsNotKnown)
{
    EXPECT_EQ(ProgressText(0, 64 * kMib, 0), "0 %  0 bytes of 64.0 MiB");
}

TEST(ProgressText, RoundsTheShareDown)
{
    EXPECT_EQ(ProgressText(999, 1000, 0), "99 %  999 bytes of 1000 bytes");
}

TEST(ProgressText, OfNothingIsComplete)
{
    EXPECT_EQ(ProgressText(0, 0, 0), "100 %  0 bytes of 0 bytes");
}

TEST(ProgressText, TellsAmountAndRateWhereTheEndIsNotKnown)
{
    EXPECT_EQ(ProgressText(16 * kMib, 4.0 * kMib), "16.0 MiB  4.0 MiB/s");
    EXPECT_EQ(ProgressText(999, 0.0), "999 bytes");
}

TEST(BarText, FillsFromTheLeft)
{
    EXPECT_EQ(BarText(0, 64), "[....................]");
    EXPECT_EQ(BarText(32, 64), "[##########..........]");
    EXPECT_EQ(BarText(63, 64), "[###################.]");
    EXPECT_EQ(BarText(64, 64), "[####################]");
    EXPECT_EQ(BarText(0, 0), "[####################]");
}

TEST(BarLine, FillsTheColumnsExactly)
{
    EXPECT_EQ(BarLine("a.txt", "[#.]", "50 %", 20), "a.txt [#.] 50 %     ");
    EXPECT_EQ(BarLine("a.txt", "[#.]", "50 %", 15), "a.txt [#.] 50 %");
}

TEST(BarLine, LeavesOutWhatDoesNotFit)
{
    EXPECT_EQ(BarLine("a.txt", "[#.]", "50 %", 14), "[#.] 50 %     ");
    EXPECT_EQ(BarLine("a.txt", "[#.]", "50 %", 8), "50 %    ");
    EXPECT_EQ(BarLine("a.txt", "[#.]", "50 %", 3), "   ");
    EXPECT_EQ(BarLine("a.txt", "[#.]", "50 %", 0), "");
}

TEST(BarLine, CountsColumnsNotBytes)
{
    EXPECT_EQ(BarLine("\xC3\xA9", "[]", "x", 8), "\xC3\xA9 [] x  ");
    EXPECT_EQ(BarLine("\xE6\x97\xA5", "[]", "x", 7), "\xE6\x97\xA5 [] x");
}

} // namespace
} // namespace quorvex::console
