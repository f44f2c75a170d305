#include "common/ByteRange.h"

#include <gtest/gtest.h>

namespace quorvex::services::test
{

namespace
{

void ExpectPart(std::string_view header, std::uint64_t total, std::uint64_t first, std::uint64_t length)
{
    const ByteRange range = ParseByteRange(header, total);
    EXPECT_EQ(range.kind, ByteRange::Kind::Part) << header;
    EXPECT_EQ(range.first, first) << header;
    EXPECT_EQ(range.length, length) << header;
}

} // namespace

TEST(ByteRange, CoversPartsOfTheFile)
{
    ExpectPart("bytes=0-0", 10, 0, 1);
    ExpectPart("bytes=3-5", 10, 3, 3);
    ExpectPart("bytes=3-", 10, 3, 7);
    ExpectPart("bytes=3-100", 10, 3, 7);
    ExpectPart("bytes=-4", 10, 6, 4);
    ExpectPart("bytes=-40", 10, 0, 10);
    ExpectPart("bytes=0-18446744073709551615", 10, 0, 10);
    ExpectPart("bytes=4294967295-4294967296", 5'000'000'000, 4'294'967'295, 2);
}

TEST(ByteRange, OutsideTheFileIsNotSatisfiable)
{
    for (const char* header : {"bytes=10-", "bytes=10-20", "bytes=-0"})
    {
        EXPECT_EQ(ParseByteRange(header, 10).kind, ByteRange::Kind::NotSatisfiable) << header;
    }
    EXPECT_EQ(ContentRange(ParseByteRange("bytes=10-", 10), 10), "bytes */10");
}

TEST(ByteRange, NotUnderstoodMeansTheWholeFile)
{
    for (const char* header : {"", "bytes=", "bytes=-", "bytes=5-3", "bytes=1-2,4-5", "bytes=a-b", "lines=1-2",
                               "bytes=99999999999999999999-", "bytes=1"})
    {
        const ByteRange range = ParseByteRange(header, 10);
        EXPECT_EQ(range.kind, ByteRange::Kind::Whole) << header;
        EXPECT_EQ(range.length, 10U) << header;
    }
}

TEST(ByteRange, OfAnEmptyFileAnswersTheProbe)
{
    ExpectPart("bytes=0-0", 0, 0, 0);
    EXPECT_EQ(ContentRange(ParseByteRange("bytes=0-0", 0), 0), "bytes 0-0/0");
    EXPECT_EQ(ParseByteRange("bytes=1-1", 0).kind, ByteRange::Kind::NotSatisfiable);
}

TEST(ByteRange, IsNamedInTheAnswer)
{
    EXPECT_EQ(ContentRange(ParseByteRange("bytes=0-0", 300), 300), "bytes 0-0/300");
    EXPECT_EQ(ContentRange(ParseByteRange("bytes=100-", 300), 300), "bytes 100-299/300");
}

} // namespace quorvex::services::test
