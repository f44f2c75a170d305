#include "BoundedText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

using quorvex::NarrowText;
using quorvex::WideText;

TEST(NarrowText, JoinsPiecesOfAllKinds)
{
    NarrowText<64> text;
    text << "{\"k\":\"" << L"\u4E2D" << "\",\"n\":" << std::uint32_t{4294967295U} << "}";
    EXPECT_EQ(text.view(), "{\"k\":\"\xE4\xB8\xAD\",\"n\":4294967295}");
    EXPECT_STREQ(text.c_str(), "{\"k\":\"\xE4\xB8\xAD\",\"n\":4294967295}");
}

TEST(NarrowText, HoldsItsSizeLessOne)
{
    NarrowText<8> text;
    text << "0123456789";
    EXPECT_EQ(text.view(), "0123456");
}

TEST(NarrowText, NullPieceIsEmpty)
{
    NarrowText<8> text;
    text << "a" << static_cast<const wchar_t*>(nullptr) << "b";
    EXPECT_EQ(text.view(), "ab");
}

TEST(NarrowText, NeverCutsWithinACharacter)
{
    NarrowText<8> wide;
    wide << L"ab\u4E2D\u6587";
    EXPECT_EQ(wide.view(), "ab\xE4\xB8\xAD");

    NarrowText<8> narrow;
    narrow << "abcd\xF0\x9F\x98\x80";
    EXPECT_EQ(narrow.view(), "abcd");
}

TEST(NarrowText, LaterPiecesUseTheRoomThatACutLeft)
{
    NarrowText<8> text;
    text << L"abcd\U0001F600" << "\"}"
         << "xyz";
    EXPECT_EQ(text.view(), "abcd\"}x");
}

TEST(NarrowText, WholeFourByteCharacterFits)
{
    NarrowText<8> text;
    text << L"abc\U0001F600";
    EXPECT_EQ(text.view(), "abc\xF0\x9F\x98\x80");
}

TEST(WideText, JoinsPiecesOfAllKinds)
{
    WideText<64> text;
    text << L"Range: bytes=" << std::uint32_t{5} << L"-" << std::uint32_t{4294967295U} << std::wstring(L"!") << -7;
    EXPECT_EQ(text.view(), L"Range: bytes=5-4294967295!-7");
    EXPECT_FALSE(text.IsCut());
}

TEST(WideText, HoldsItsSizeLessOneAndKnowsThatItIsCut)
{
    WideText<4> text;
    text << L"abc";
    EXPECT_FALSE(text.IsCut());
    text << L"d";
    EXPECT_TRUE(text.IsCut());
    EXPECT_STREQ(text.c_str(), L"abc");
}

TEST(WideText, NeverCutsWithinACharacter)
{
    WideText<4> text;
    text << L"ab\U0001F600";
    EXPECT_EQ(text.view(), L"ab");
    EXPECT_TRUE(text.IsCut());
}

TEST(WideText, NullPieceIsEmpty)
{
    WideText<8> text;
    text << static_cast<const wchar_t*>(nullptr) << L"/";
    EXPECT_EQ(text.view(), L"/");
}

TEST(NarrowText, AnUnpairedHalfLeavesNothingBehindTheText)
{
    NarrowText<8> text;
    text << std::wstring_view(L"abcd\xD83Dxy") << "\"}";
    EXPECT_EQ(text.view().size(), std::strlen(text.c_str()));
    EXPECT_STREQ(text.c_str(), std::string(text.view()).c_str());
}

TEST(NarrowText, BytesThatAreNoUtf8AreCutAnywhere)
{
    NarrowText<8> continuations;
    continuations << std::string_view("\x80\x80\x80\x80\x80\x80\x80\x80\x80");
    EXPECT_EQ(continuations.view().size(), 7U);

    NarrowText<8> afterAscii;
    afterAscii << std::string_view("abcdef\x80\x80\x80");
    EXPECT_EQ(afterAscii.view(), "abcdef\x80");
}

TEST(NarrowText, NeverCutsWithinACharacterOfAnyLength)
{
    for (const std::string_view character : {"\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80"})
    {
        for (std::size_t kept = 1; kept < character.size(); ++kept)
        {
            NarrowText<8> text;
            text << std::string(7 - kept, 'a') << character;
            EXPECT_EQ(text.view(), std::string(7 - kept, 'a')) << character.size() << " bytes, room for " << kept;
        }
    }
}
