#include "BaseUrl.h"

#include <gtest/gtest.h>

#include <string>

using quorvex::SplitBaseUrl;

TEST(BaseUrl, PathBecomesThePrefixWithoutItsSlashes)
{
    const auto url = SplitBaseUrl(L"http://disk.example/api/");
    EXPECT_EQ(url.server, L"http://disk.example/");
    EXPECT_EQ(url.prefix, L"api");
}

TEST(BaseUrl, OnlyOneTrailingSlashIsCut)
{
    EXPECT_EQ(SplitBaseUrl(L"http://disk.example/api//").prefix, L"api/");
}

TEST(BaseUrl, InnerSlashesBelongToThePrefix)
{
    EXPECT_EQ(SplitBaseUrl(L"https://disk.example:8443/a/b/c").prefix, L"a/b/c");
}

TEST(BaseUrl, NoPathMeansNoPrefix)
{
    const auto url = SplitBaseUrl(L"http://disk.example:8080");
    EXPECT_EQ(url.server, L"http://disk.example:8080");
    EXPECT_EQ(url.prefix, L"");
    EXPECT_EQ(url.serverEnd, 24U);
}

TEST(BaseUrl, SlashAloneMeansNoPrefix)
{
    const auto url = SplitBaseUrl(L"http://disk.example/");
    EXPECT_EQ(url.server, L"http://disk.example/");
    EXPECT_EQ(url.prefix, L"");
}

TEST(BaseUrl, SearchStartsBehindTheScheme)
{
    // Of an https address the search meets the host's first character; of an http address its second.
    EXPECT_EQ(SplitBaseUrl(L"https:///x").prefix, L"x");
    EXPECT_EQ(SplitBaseUrl(L"http:///x").prefix, L"");
}

TEST(BaseUrl, ShortTextsAreAllServer)
{
    for (const wchar_t* text : {L"", L"/", L"a/b", L"http://"})
    {
        EXPECT_EQ(SplitBaseUrl(text).server, text);
        EXPECT_EQ(SplitBaseUrl(text).prefix, L"");
    }
}

TEST(BaseUrl, ServerEndIsThePlaceOfTheSlash)
{
    const std::wstring server = L"http://" + std::wstring(1016, L'h');
    EXPECT_EQ(SplitBaseUrl(server + L"/x").serverEnd, 1023U);
    EXPECT_EQ(SplitBaseUrl(server + L"h/x").serverEnd, 1024U);
}
