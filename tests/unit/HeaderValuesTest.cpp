#include "HeaderValues.h"

#include <gtest/gtest.h>

#include <string>

using quorvex::ParseContentDisposition;
using quorvex::ParseContentRangeTotal;

TEST(ContentDisposition, NameEndsAtTheFirstSemicolon)
{
    const auto value = ParseContentDisposition(L"attachment;filename=\"report.pdf;md5=0123;more=4");
    EXPECT_EQ(value.fileName, L"report.pdf");
    EXPECT_EQ(value.second, L"0123");
    EXPECT_EQ(value.third, L"4");
}

TEST(ContentDisposition, TheThirdValueMayHaveAnyName)
{
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\"n;md5=1;sha=2;x=3").third, L"2");
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\"n;md5=1;a=b=c").third, L"b=c");
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\"n;md5=1;bare;x=3").third, L"bare");
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\"n;md5=1;").third, L"");
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\"n;md5=1;;x=3").third, L"");
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\"n;md5=1").third, L"");
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\"n").third, L"");
}

TEST(ContentDisposition, WithoutSemicolonEverythingIsTheName)
{
    const auto value = ParseContentDisposition(L"attachment;filename=\"report.pdf\"");
    EXPECT_EQ(value.fileName, L"report.pdf\"");
    EXPECT_EQ(value.second, L"");
}

TEST(ContentDisposition, SemicolonInTheFirstPlaceBelongsToTheName)
{
    EXPECT_EQ(ParseContentDisposition(L"attachment;filename=\";a;md5=x").fileName, L";a");
}

TEST(ContentDisposition, ShortValuesHaveNoName)
{
    const std::wstring whole = L"attachment;filename=\"";
    for (std::size_t length = 0; length <= whole.size(); ++length)
    {
        const auto value = ParseContentDisposition(std::wstring_view(whole).substr(0, length));
        EXPECT_EQ(value.fileName, L"") << length;
        EXPECT_EQ(value.second, L"") << length;
    }
}

TEST(ContentDisposition, SecondValueMayBeCutOff)
{
    for (const wchar_t* tail : {L";", L";m", L";md5", L";md5="})
    {
        const std::wstring text = std::wstring(L"attachment;filename=\"n") + tail;
        const auto value = ParseContentDisposition(text);
        EXPECT_EQ(value.fileName, L"n");
        EXPECT_EQ(value.second, L"");
    }
}

TEST(ContentDisposition, NothingButSemicolons)
{
    const auto value = ParseContentDisposition(std::wstring(40, L';'));
    EXPECT_EQ(value.fileName, L";");
    EXPECT_EQ(value.second, L"");
}

TEST(ContentRange, TotalFollowsTheFirstTenCharacters)
{
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/123456"), 123456U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/0"), 0U);
}

TEST(ContentRange, WhatIsNoNumberIsZero)
{
    EXPECT_EQ(ParseContentRangeTotal(L""), 0U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/"), 0U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/*"), 0U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes */5"), 0U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/\b5"), 0U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/\x0E 5"), 0U);
}

TEST(ContentRange, NumberEndsAtTheFirstOtherCharacter)
{
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/12x34"), 12U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/ \t+12"), 12U);
}

TEST(ContentRange, SizesWrapAt32Bits)
{
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/3221225472"), 3221225472U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/4294967297"), 1U);
    EXPECT_EQ(ParseContentRangeTotal(L"bytes 0-0/-1073741824"), 3221225472U);
}
