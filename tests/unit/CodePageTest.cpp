#include "Platform/CodePage.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstddef>
#include <span>
#include <string>

using quorvex::Platform::CodePage;
using quorvex::Platform::ToNarrow;
using quorvex::Platform::ToWide;

TEST(CodePage, Utf8InBothDirections)
{
    const std::wstring wide = L"a\u00E9\u4E2D\U0001F600";
    const std::string narrow = "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80";
    EXPECT_EQ(ToWide(narrow, CodePage::Utf8), wide);
    EXPECT_EQ(ToNarrow(wide, CodePage::Utf8), narrow);
}

TEST(CodePage, EmptyStaysEmpty)
{
    EXPECT_EQ(ToWide("", CodePage::Utf8), L"");
    EXPECT_EQ(ToNarrow(L"", CodePage::Oem), "");
}

TEST(CodePage, AnsiAndOemDiffer)
{
    EXPECT_EQ(ToNarrow(L"\u00E9", CodePage::Ansi), "\xE9");
    EXPECT_EQ(ToNarrow(L"\u00E9", CodePage::Oem), "\x82");
    EXPECT_EQ(ToWide("\xE9", CodePage::Ansi), L"\u00E9");
}

TEST(CodePage, InvalidUtf8BecomesReplacementCharacters)
{
    const std::wstring wide = ToWide("a\xFF\xC3z", CodePage::Utf8);
    ASSERT_GE(wide.size(), 3U);
    EXPECT_EQ(wide.front(), L'a');
    EXPECT_EQ(wide[1], L'\uFFFD');
    EXPECT_EQ(wide.back(), L'z');
}

TEST(CodePage, BoundedWideIsCutBetweenCharacters)
{
    std::array<wchar_t, 4> room = {L'#', L'#', L'#', L'#'};
    const std::span<wchar_t> three = std::span(room).first(3);
    EXPECT_EQ(ToWide("ab\xF0\x9F\x98\x80", CodePage::Utf8, three), 2U);
    EXPECT_EQ(ToWide("a\xF0\x9F\x98\x80", CodePage::Utf8, three), 3U);
    EXPECT_EQ(ToWide("abcdef", CodePage::Utf8, three), 3U);
    EXPECT_EQ(room[3], L'#');
}

TEST(CodePage, BoundedNarrowIsCutBetweenCharacters)
{
    std::array<char, 6> room = {'#', '#', '#', '#', '#', '#'};
    const std::span<char> five = std::span(room).first(5);
    EXPECT_EQ(ToNarrow(L"\u4E2D\u6587", CodePage::Utf8, five), 3U);
    EXPECT_EQ(ToNarrow(L"ab\U0001F600", CodePage::Utf8, five), 2U);
    EXPECT_EQ(ToNarrow(L"abcdefgh", CodePage::Oem, five), 5U);
    EXPECT_EQ(room[5], '#');
}

TEST(CodePage, NoRoomTakesNothing)
{
    EXPECT_EQ(ToWide("abc", CodePage::Utf8, std::span<wchar_t>()), 0U);
    EXPECT_EQ(ToNarrow(L"abc", CodePage::Utf8, std::span<char>()), 0U);
}

TEST(CodePage, HalvesOfCharactersStandAloneWhereTextIsCut)
{
    std::array<char, 8> room = {};
    const std::wstring half(1, L'\xD83D');
    // The text does not fit, so that its characters are converted one by one.
    EXPECT_EQ(ToNarrow(L"abcdef" + half, CodePage::Utf8, std::span(room).first(7)), 6U);
    for (const std::wstring& text : {half + L"bcdefghi", half + L"\uE000cdefghi"})
    {
        const std::size_t filled = ToNarrow(text, CodePage::Utf8, room);
        EXPECT_EQ(std::string(room.data(), 3), "\xEF\xBF\xBD");
        EXPECT_EQ(filled, 8U);
    }
}

TEST(CodePage, MoreThanTheSystemCountsIsEmpty)
{
    // Nothing of it is read.
    const char narrow = 'a';
    const wchar_t wide = L'a';
    constexpr std::size_t tooMany = std::size_t{INT_MAX} + 1;
    EXPECT_EQ(ToWide({&narrow, tooMany}, CodePage::Utf8), L"");
    EXPECT_EQ(ToNarrow({&wide, tooMany}, CodePage::Utf8), "");
    std::array<wchar_t, 2> wideRoom = {};
    EXPECT_EQ(ToWide({&narrow, tooMany}, CodePage::Utf8, wideRoom), 0U);
    std::array<char, 2> narrowRoom = {};
    EXPECT_EQ(ToNarrow({&wide, tooMany}, CodePage::Utf8, narrowRoom), 0U);
}
