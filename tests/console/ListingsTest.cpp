#include "Listings.h"
#include "ModuleVector.h"
#include "Output.h"
#include "Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace quorvex::console
{
namespace
{

template <std::size_t Size>
void FillToTheLastPlace(wchar_t (&field)[Size], wchar_t character)
{
    std::fill(std::begin(field), std::end(field), character);
}

TEST(Listings, ReadEveryFieldOfAFile)
{
    netdisk::_FileInfo record{};
    SetField(record.fkey, L"0a1b");
    SetField(record.name, L"\x4E2D\x6587 \xD83D\xDE00.txt");
    record.size = UINT32_MAX;
    record.cflag = 1;
    record.downcount = 7;
    record.ctime = 1795210281;
    SetField(record.md5, L"d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(JsonLine(ToJson(EntryOf(record))),
              "{\"complete\":true,\"created\":1795210281,\"downloads\":7,\"key\":\"0a1b\","
              "\"md5\":\"d41d8cd98f00b204e9800998ecf8427e\","
              "\"name\":\"\xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80.txt\",\"size\":4294967295}\n");
}

template <std::size_t Size>
void SetUtf8(char (&field)[Size], const std::string& text)
{
    field[text.copy(field, Size - 1)] = '\0';
}

TEST(Listings, ReadUtf8RecordsAsTheOthers)
{
    netdisk::_FileInfoUTF8 file{};
    SetUtf8(file.fkey, "0a1b");
    SetUtf8(file.name, "caf\xC3\xA9");
    file.size = 5;
    file.cflag = 1;
    file.downcount = 7;
    file.ctime = 9;
    std::fill(std::begin(file.md5), std::end(file.md5), 'm');
    EXPECT_EQ(JsonLine(ToJson(EntryOf(file))),
              "{\"complete\":true,\"created\":9,\"downloads\":7,\"key\":\"0a1b\",\"md5\":\"" + std::string(33, 'm') +
                  "\",\"name\":\"caf\xC3\xA9\",\"size\":5}\n");

    netdisk::_FolderInfoUTF8 folder{};
    SetUtf8(folder.fo_id, "7a");
    SetUtf8(folder.name, "Films");
    EXPECT_EQ(JsonLine(ToJson(EntryOf(folder))), "{\"id\":\"7a\",\"name\":\"Films\"}\n");

    netdisk::_RItemInfoUTF8 item{};
    SetUtf8(item.rs_id, "3c");
    item.rtime = 4;
    item.type = 2;
    SetUtf8(item.name, "n");
    SetUtf8(item.fo_before, "/a");
    EXPECT_EQ(JsonLine(ToJson(EntryOf(item))),
              "{\"from\":\"/a\",\"id\":\"3c\",\"name\":\"n\",\"removed\":4,\"type\":\"folder\"}\n");
}

TEST(Listings, ReadAFieldWithoutAnEndToItsLastPlaceOnly)
{
    netdisk::_FileInfo file{};
    FillToTheLastPlace(file.fkey, L'k');
    FillToTheLastPlace(file.name, L'n');
    FillToTheLastPlace(file.md5, L'm');
    const FileEntry entry = EntryOf(file);
    EXPECT_EQ(entry.key, std::string(33, 'k'));
    EXPECT_EQ(entry.name, std::string(65, 'n'));
    EXPECT_EQ(entry.md5, std::string(33, 'm'));

    netdisk::_FolderInfo folder{};
    FillToTheLastPlace(folder.fo_id, L'f');
    FillToTheLastPlace(folder.name, L'n');
    EXPECT_EQ(EntryOf(folder).id, std::string(33, 'f'));
    EXPECT_EQ(EntryOf(folder).name, std::string(65, 'n'));

    netdisk::_PcodeInfo pcode{};
    FillToTheLastPlace(pcode.pcode, L'p');
    EXPECT_EQ(EntryOf(pcode).pcode, std::string(33, 'p'));

    netdisk::_RItemInfo item{};
    FillToTheLastPlace(item.rs_id, L'r');
    FillToTheLastPlace(item.name, L'n');
    FillToTheLastPlace(item.fo_before, L'/');
    EXPECT_EQ(EntryOf(item).id, std::string(33, 'r'));
    EXPECT_EQ(EntryOf(item).name, std::string(65, 'n'));
    EXPECT_EQ(EntryOf(item).from, std::string(4097, '/'));
}

TEST(Listings, CutATextThatAFieldDoesNotHold)
{
    netdisk::_FolderInfo record;
    FillToTheLastPlace(record.fo_id, L'x');
    SetField(record.fo_id, std::wstring(40, L'a'));
    EXPECT_EQ(FieldText(record.fo_id), std::wstring(32, L'a'));
    SetField(record.fo_id, L"");
    EXPECT_EQ(FieldText(record.fo_id), L"");
}

TEST(Listings, NameTheTypesOfTheRecycleBin)
{
    netdisk::_RItemInfo item{};
    SetField(item.rs_id, L"1");
    SetField(item.name, L"a");
    SetField(item.fo_before, L"/b");
    item.rtime = 5;
    for (const auto& [type, text] : {std::pair{1, "file"}, {2, "folder"}, {0, "0"}, {-3, "-3"}})
    {
        item.type = type;
        EXPECT_EQ(JsonLine(ToJson(EntryOf(item))),
                  std::string("{\"from\":\"/b\",\"id\":\"1\",\"name\":\"a\",\"removed\":5,\"type\":\"") + text +
                      "\"}\n");
    }
}

TEST(Listings, KeepTheTimesOfAShareCode)
{
    netdisk::_PcodeInfo record{};
    SetField(record.pcode, L"7h2k9");
    record.createtime = 1795210281;
    record.deadline = INT64_MAX;
    record.downcount = 3;
    EXPECT_EQ(JsonLine(ToJson(EntryOf(record))), "{\"created\":1795210281,\"deadline\":9223372036854775807,"
                                                 "\"downloads\":3,\"pcode\":\"7h2k9\"}\n");
}

TEST(Listings, AreArraysAlsoWhenTheyAreEmpty)
{
    EXPECT_EQ(JsonLine(ToJson(std::vector<FolderEntry>())), "[]\n");
    EXPECT_EQ(JsonLine(ToJson(std::vector<FolderEntry>{{"1", "a"}, {"2", "b"}})),
              "[{\"id\":\"1\",\"name\":\"a\"},{\"id\":\"2\",\"name\":\"b\"}]\n");
}

TEST(ModuleVector, ComesEmptyAndTakesRecords)
{
    const auto files = NewFiles();
    ASSERT_TRUE(files->empty());
    files->resize(1000);
    EXPECT_EQ(files->size(), 1000u);
    EXPECT_TRUE(NewFolders()->empty());
    EXPECT_TRUE(NewPcodes()->empty());
    EXPECT_TRUE(NewItems()->empty());
}

TEST(ModuleVector, IsNeverNull)
{
    EXPECT_THROW(Owned<netdisk::_FileInfo>(nullptr, &netdisk::CNetDisk::DeleteFileInfoVector), std::bad_alloc);
}

} // namespace
} // namespace quorvex::console
