#include "StorageNames.h"

#include "Failure.h"
#include "HostStorage.h"

#include <gtest/gtest.h>

#include <string>

#include <windows.h>

namespace quorvex::console
{
namespace
{

/// Some character that the system's OEM code page lacks; nothing where it lacks none.
std::wstring Inexpressible()
{
    return GetOEMCP() == CP_UTF8 ? L"" : L"\xD83D\xDE00";
}

TEST(StorageNames, AreKeysOfSixtyFourCharactersAtMost)
{
    const std::string longest = std::string(62, 'x') + "\xF0\x9F\x98\x80";
    EXPECT_EQ(ComplaintAboutName(longest), "");
    EXPECT_EQ(ComplaintAboutName("a%41 b#c&d+e?.png"), "");
    EXPECT_NE(ComplaintAboutName(longest + 'x'), "");
    EXPECT_NE(ComplaintAboutName(""), "");
}

TEST(StorageNames, HaveNoSignsThatWouldChangeTheRequest)
{
    for (const char* const name : {"a/b", "a\\b", "a\"b", "a\r\nb", "\x7F", "\x1F"})
        EXPECT_NE(ComplaintAboutName(name).find("quotation mark"), std::string::npos) << name;
}

TEST(StorageNames, OfEnglishLettersAreSentAsTheyAre)
{
    EXPECT_EQ(NameAsSent(L"sunset (2).png"), L"sunset (2).png");
    EXPECT_EQ(NameAsSent(L""), L"");
    EXPECT_NO_THROW(CheckThatNameIsSent(L"sunset (2).png", "advice"));
    EXPECT_NE(WhyNamedOtherwise(L"sunset.png").find("under that other name"), std::string::npos);
}

TEST(StorageAddress, EndsAsItsGenerationTakesIt)
{
    for (const char* const given : {"http://host/storage", "http://host/storage/", "http://host/storage//"})
    {
        EXPECT_EQ(AddressFor(2, given), "http://host/storage");
        EXPECT_EQ(AddressFor(3, given), "http://host/storage/");
    }
}

TEST(StorageNames, LoseWhatTheOemCodePageLacks)
{
    const std::wstring lost = Inexpressible();
    if (lost.empty())
    {
        EXPECT_EQ(NameAsSent(L"\xD83D\xDE00"), L"\xD83D\xDE00");
        return;
    }
    EXPECT_EQ(NameAsSent(lost + L".png"), L"??.png");
    const std::string codePage = "OEM code page, " + std::to_string(GetOEMCP());
    EXPECT_NE(WhyNamedOtherwise(lost + L".png").find("on the server as ??.png"), std::string::npos);
    EXPECT_NE(WhyNamedOtherwise(lost + L".png").find(codePage), std::string::npos);
    try
    {
        CheckThatNameIsSent(lost + L".png", "rename it");
        ADD_FAILURE();
    }
    catch (const Failure& failure)
    {
        EXPECT_NE(std::string(failure.what()).find(codePage), std::string::npos) << failure.what();
        EXPECT_NE(std::string(failure.what()).find("; rename it"), std::string::npos) << failure.what();
    }
}

} // namespace
} // namespace quorvex::console
