#include "Times.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace quorvex::console
{
namespace
{

TEST(ParseSpan, ReadsEachUnit)
{
    EXPECT_EQ(ParseSpan("90s"), 90u);
    EXPECT_EQ(ParseSpan("15m"), 900u);
    EXPECT_EQ(ParseSpan("24h"), 86400u);
    EXPECT_EQ(ParseSpan("7d"), 604800u);
    EXPECT_EQ(ParseSpan("007d"), 604800u);
}

TEST(ParseSpan, TakesWhatFitsInto32Bits)
{
    EXPECT_EQ(ParseSpan("4294967295s"), 4294967295u);
    EXPECT_EQ(ParseSpan("49710d"), 4294944000u);
    for (const char* const text : {"4294967296s", "49711d", "1193047h", "71582789m", "99999999999999999999d"})
        EXPECT_EQ(ParseSpan(text), std::nullopt) << text;
}

TEST(ParseSpan, RefusesEverythingElse)
{
    for (const char* const text :
         {"", "s", "7", "0s", "0d", "-1d", "+1d", "1.5h", "1 d", " 1d", "1d ", "1D", "1w", "dd"})
        EXPECT_EQ(ParseSpan(text), std::nullopt) << text;
}

TEST(SpanText, TakesTheLargestUnitWithoutAFraction)
{
    EXPECT_EQ(SpanText(1), "1 second");
    EXPECT_EQ(SpanText(90), "90 seconds");
    EXPECT_EQ(SpanText(60), "1 minute");
    EXPECT_EQ(SpanText(5400), "90 minutes");
    EXPECT_EQ(SpanText(3600), "1 hour");
    EXPECT_EQ(SpanText(90000), "25 hours");
    EXPECT_EQ(SpanText(86400), "1 day");
    EXPECT_EQ(SpanText(604800), "7 days");
    EXPECT_EQ(SpanText(0), "0 seconds");
    EXPECT_EQ(SpanText(UINT32_MAX), "4294967295 seconds");
}

TEST(LocalTimeText, IsTheServersTimeHere)
{
    // Summer and winter, and behind the end of 32 bits.
    for (const std::int64_t seconds : {1795210281LL, 1752000000LL, 4102444800LL})
    {
        const std::string text = LocalTimeText(seconds);
        std::tm local{};
        ASSERT_EQ(std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d", &local.tm_year, &local.tm_mon, &local.tm_mday,
                              &local.tm_hour, &local.tm_min, &local.tm_sec),
                  6)
            << text;
        EXPECT_EQ(text.size(), 19u);
        local.tm_year -= 1900;
        local.tm_mon -= 1;
        local.tm_isdst = -1;
        EXPECT_EQ(_mktime64(&local), seconds) << text;
    }
}

TEST(RoughSpanText, TakesTheLargestUnitOfWhichThereAreTwo)
{
    for (const auto& [minutes, text] : {std::pair{-5, "-5 minutes"},
                                        {0, "0 minutes"},
                                        {1, "1 minute"},
                                        {119, "119 minutes"},
                                        {120, "2 hours"},
                                        {2879, "47 hours"},
                                        {2880, "2 days"},
                                        {10079, "6 days"},
                                        {10080, "7 days"}})
        EXPECT_EQ(RoughSpanText(minutes), text) << minutes;
    EXPECT_EQ(RoughSpanText(INT32_MAX), "1491308 days");
}

TEST(LocalTimeText, IsEmptyForWhatIsNoTime)
{
    for (const std::int64_t seconds : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX})
        EXPECT_EQ(LocalTimeText(seconds), "") << seconds;
}

} // namespace
} // namespace quorvex::console
