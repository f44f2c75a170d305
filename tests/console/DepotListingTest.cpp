#include "DepotListing.h"

#include "Listings.h"
#include "Output.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

namespace quorvex::console
{
namespace
{

TEST(DepotListing, TellsWhatTheServerTells)
{
    LargeFileInfo record{};
    SetField(record.fkey, L"0a1b");
    SetField(record.fname, L"film.mkv");
    record.fsize = UINT_MAX;
    SetField(record.fmd5, L"900150983cd24fb0d6963f7d28e17f72");
    SetField(record.createtime, L"2026-11-20 21:11:21");
    record.finish = 1;
    record.leftminute = 10080;
    EXPECT_EQ(
        JsonLine(ToJson(EntryOf(record))),
        "{\"created\":\"2026-11-20 21:11:21\",\"finished\":true,\"key\":\"0a1b\",\"md5\":"
        "\"900150983cd24fb0d6963f7d28e17f72\",\"minutes_left\":10080,\"name\":\"film.mkv\",\"size\":4294967295}\n");
}

TEST(DepotListing, RepairsNamesThatTheSystemHasReadByteByByte)
{
    LargeFileInfo record{};
    SetField(record.fname, L"gr\xC3\xB6\xC3\x178"
                           L"e.bin");
    EXPECT_EQ(EntryOf(record).name, "gr\xC3\xB6\xC3\x9F"
                                    "e.bin");
    EXPECT_FALSE(EntryOf(record).finished);
}

TEST(DepotListing, ReadsFieldsThatAreFullToTheLastPlace)
{
    LargeFileInfo record{};
    std::fill(std::begin(record.fkey), std::end(record.fkey), L'k');
    std::fill(std::begin(record.fname), std::end(record.fname), L'n');
    std::fill(std::begin(record.fmd5), std::end(record.fmd5), L'm');
    std::fill(std::begin(record.createtime), std::end(record.createtime), L't');
    const DepotEntry entry = EntryOf(record);
    EXPECT_EQ(entry.key, std::string(65, 'k'));
    EXPECT_EQ(entry.name, std::string(65, 'n'));
    EXPECT_EQ(entry.md5, std::string(33, 'm'));
    EXPECT_EQ(entry.created, std::string(20, 't'));
}

} // namespace
} // namespace quorvex::console
