#include "common/Text.h"

#include <string>

#include <gtest/gtest.h>

namespace quorvex::services::test
{

TEST(Text, TrimsBlanksAtBothEnds)
{
    EXPECT_EQ(Trim(" \t a b \r\n"), "a b");
    EXPECT_EQ(Trim("a"), "a");
    EXPECT_EQ(Trim("  "), "");
    EXPECT_EQ(Trim(""), "");
}

TEST(Text, ReadsDigitsOnlyAsNumber)
{
    EXPECT_EQ(ParseUnsigned("0"), 0U);
    EXPECT_EQ(ParseUnsigned("18446744073709551615"), 18446744073709551615U);
    for (const char* text : {"", "-1", "+1", " 1", "1 ", "0x1", "18446744073709551616", "one"})
    {
        EXPECT_FALSE(ParseUnsigned(text).has_value()) << text;
    }
}

TEST(Text, AcceptsUtf8OfAllLengths)
{
    EXPECT_TRUE(IsValidUtf8(""));
    EXPECT_TRUE(IsValidUtf8("plain"));
    EXPECT_TRUE(IsValidUtf8("\xC3\xA4 \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80"));
    EXPECT_TRUE(IsValidUtf8("\xF4\x8F\xBF\xBF"));
}

TEST(Text, RefusesWhatIsNotUtf8)
{
    const std::string texts[] = {"\xC3",
                                 "\xE4\xB8",
                                 "\x80",
                                 "\xC0\xAF",
                                 "\xC1\xBF",
                                 "\xE0\x9F\xBF",
                                 "\xED\xA0\x80",
                                 "\xF0\x8F\xBF\xBF",
                                 "\xF4\x90\x80\x80",
                                 "\xF5\x80\x80\x80",
                                 "\xFF",
                                 "a\xE4z\xAD"};
    for (const std::string& text : texts)
    {
        EXPECT_FALSE(IsValidUtf8(text)) << ::testing::PrintToString(text);
    }
}

TEST(Text, IsCutBetweenCharacters)
{
    EXPECT_EQ(CutToUtf16Units("abc", 3), "abc");
    EXPECT_EQ(CutToUtf16Units("abcd", 3), "abc");
    EXPECT_EQ(CutToUtf16Units("", 3), "");
    EXPECT_EQ(CutToUtf16Units("\xE4\xB8\xAD\xE6\x96\x87x", 2), "\xE4\xB8\xAD\xE6\x96\x87");
    EXPECT_EQ(CutToUtf16Units("a\xF0\x9F\x98\x80", 2), "a");
    EXPECT_EQ(CutToUtf16Units("a\xF0\x9F\x98\x80", 3), "a\xF0\x9F\x98\x80");
}

} // namespace quorvex::services::test
