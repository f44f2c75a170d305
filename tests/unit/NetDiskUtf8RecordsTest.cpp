#include "Netdisk/NetDiskUtf8Records.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

using namespace quorvex::netdisk;

namespace
{

/// Fills an array with a text; one of the array's length leaves no room for a zero.
template <std::size_t Size>
void Set(wchar_t (&field)[Size], std::wstring_view text)
{
    ASSERT_LE(text.size(), Size);
    std::ranges::fill(field, L'\0');
    text.copy(field, Size);
}

template <class Character>
std::basic_string<Character> Repeated(std::basic_string_view<Character> text, int count)
{
    std::basic_string<Character> all;
    for (int i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

constexpr std::wstring_view kWideFour = L"\U0001F600";
constexpr std::string_view kFour = "\xF0\x9F\x98\x80";
constexpr std::wstring_view kWideThree = L"\u4E2D";
constexpr std::string_view kThree = "\xE4\xB8\xAD";

/// Every way in which a text can meet the limit of its array.
template <std::size_t WideSize, std::size_t Size, class Record, class Utf8Record>
void ExpectLimit(wchar_t (Record::*wide)[WideSize], char (Utf8Record::*utf8)[Size])
{
    static_assert(WideSize == Size);
    constexpr int limit = Size - 1;
    const auto converted = [&](const std::wstring& text) {
        Record record = {};
        Set(record.*wide, text);
        return std::string((ToUtf8(record)).*utf8);
    };
    const auto letters = [](int count) { return std::string(static_cast<std::size_t>(count), 'x'); };
    const auto wideLetters = [](int count) { return std::wstring(static_cast<std::size_t>(count), L'x'); };

    EXPECT_EQ(converted(L""), "");
    EXPECT_EQ(converted(wideLetters(limit)), letters(limit));
    EXPECT_EQ(converted(wideLetters(limit + 1)), letters(limit)) << "an array filled to its last place";

    EXPECT_EQ(converted(wideLetters(limit - 4).append(kWideFour)), letters(limit - 4).append(kFour));
    for (int missing = 1; missing < 4; ++missing)
    {
        const int before = limit - 4 + missing;
        EXPECT_EQ(converted(wideLetters(before).append(kWideFour)), letters(before));
    }
    EXPECT_EQ(converted(wideLetters(limit - 3).append(kWideThree)), letters(limit - 3).append(kThree));
    EXPECT_EQ(converted(wideLetters(limit - 2).append(kWideThree)), letters(limit - 2));
    EXPECT_EQ(converted(wideLetters(limit - 1).append(kWideThree)), letters(limit - 1));

    constexpr int places = Size;
    EXPECT_EQ(converted(Repeated(kWideThree, places)), Repeated(kThree, limit / 3));
    EXPECT_EQ(converted(Repeated(kWideFour, places / 2)), Repeated(kFour, limit / 4));
}

} // namespace

TEST(NetDiskUtf8Records, FileTextsAreCutBetweenCharacters)
{
    ExpectLimit(&_FileInfo::fkey, &_FileInfoUTF8::fkey);
    ExpectLimit(&_FileInfo::name, &_FileInfoUTF8::name);
    ExpectLimit(&_FileInfo::md5, &_FileInfoUTF8::md5);
}

TEST(NetDiskUtf8Records, FolderTextsAreCutBetweenCharacters)
{
    ExpectLimit(&_FolderInfo::fo_id, &_FolderInfoUTF8::fo_id);
    ExpectLimit(&_FolderInfo::name, &_FolderInfoUTF8::name);
}

TEST(NetDiskUtf8Records, RecyclebinTextsAreCutBetweenCharacters)
{
    ExpectLimit(&_RItemInfo::rs_id, &_RItemInfoUTF8::rs_id);
    ExpectLimit(&_RItemInfo::name, &_RItemInfoUTF8::name);
    ExpectLimit(&_RItemInfo::fo_before, &_RItemInfoUTF8::fo_before);
}

TEST(NetDiskUtf8Records, FileNumbersAreCopied)
{
    _FileInfo file = {};
    file.size = std::numeric_limits<unsigned int>::max();
    file.cflag = std::numeric_limits<int>::min();
    file.downcount = std::numeric_limits<unsigned int>::max() - 1;
    file.ctime = std::numeric_limits<long long>::min();
    const _FileInfoUTF8 utf8 = ToUtf8(file);
    EXPECT_EQ(utf8.size, file.size);
    EXPECT_EQ(utf8.cflag, file.cflag);
    EXPECT_EQ(utf8.downcount, file.downcount);
    EXPECT_EQ(utf8.ctime, file.ctime);
}

TEST(NetDiskUtf8Records, RecyclebinNumbersAreCopied)
{
    _RItemInfo item = {};
    item.rtime = std::numeric_limits<long long>::max();
    item.type = std::numeric_limits<int>::min();
    const _RItemInfoUTF8 utf8 = ToUtf8(item);
    EXPECT_EQ(utf8.rtime, item.rtime);
    EXPECT_EQ(utf8.type, item.type);
}

TEST(NetDiskUtf8Records, TextsThatFillTheirArraysDoNotRunIntoEachOther)
{
    _FileInfo file = {};
    Set(file.fkey, std::wstring(33, L'k'));
    Set(file.name, std::wstring(65, L'n'));
    Set(file.md5, std::wstring(33, L'm'));
    file.size = 0xFFFFFFFFU;
    file.ctime = -1;
    const _FileInfoUTF8 utf8 = ToUtf8(file);
    EXPECT_EQ(utf8.fkey, std::string(32, 'k'));
    EXPECT_EQ(utf8.name, std::string(64, 'n'));
    EXPECT_EQ(utf8.md5, std::string(32, 'm'));
    EXPECT_EQ(utf8.size, 0xFFFFFFFFU);
}

TEST(NetDiskUtf8Records, AreAppendedInOrder)
{
    std::vector<_FolderInfo> folders(2);
    Set(folders[0].fo_id, L"a");
    Set(folders[1].fo_id, L"b");
    std::vector<_FolderInfoUTF8> utf8(1);
    AppendUtf8(folders, utf8);
    AppendUtf8(std::vector<_FolderInfo>(), utf8);
    ASSERT_EQ(utf8.size(), 3U);
    EXPECT_STREQ(utf8[0].fo_id, "");
    EXPECT_STREQ(utf8[1].fo_id, "a");
    EXPECT_STREQ(utf8[2].fo_id, "b");
}
