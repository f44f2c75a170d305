#include "storage/ClientText.h"
#include "common/HttpAnswers.h"
#include "common/QueryText.h"
#include "common/Text.h"

#include <string>

#include <gtest/gtest.h>

namespace quorvex::services::storage::test
{

TEST(ClientText, IsUtf8AsItIsOrElseTheOemCodePage)
{
    EXPECT_EQ(TextFromClient(""), "");
    EXPECT_EQ(TextFromClient("plain.png"), "plain.png");
    EXPECT_EQ(TextFromClient("\xE4\xB8\xAD\xF0\x9F\x98\x80"), "\xE4\xB8\xAD\xF0\x9F\x98\x80");
    EXPECT_EQ(TextFromClient("\x80\x82\xFF"), "\xC3\x87\xC3\xA9\xC2\xA0");
    EXPECT_EQ(TextFromClient("\xE4\xB8"), "\xCE\xA3\xE2\x95\x95");
    EXPECT_EQ(TextFromClient("\x01\x1F\x7F "), "\xE2\x98\xBA\xE2\x96\xBC\xE2\x8C\x82 ");
}

TEST(ClientText, IsAlwaysText)
{
    std::string all;
    for (int byte = 1; byte < 256; ++byte)
    {
        all += static_cast<char>(static_cast<unsigned char>(byte));
    }
    const std::string text = TextFromClient(all);
    EXPECT_TRUE(IsValidUtf8(text));
    EXPECT_EQ(CutToUtf16Units(text, 255), text);
    EXPECT_NE(CutToUtf16Units(text, 254), text);
}

TEST(StorageKey, HasRoomForSixtyFourCharacters)
{
    std::string emoji;
    for (int i = 0; i < 32; ++i)
    {
        emoji += "\xF0\x9F\x98\x80";
    }
    EXPECT_NO_THROW(RequireKey(emoji));
    EXPECT_NO_THROW(RequireKey(std::string(64, 'k')));
    EXPECT_THROW(RequireKey(emoji + "k"), HttpError);
    EXPECT_THROW(RequireKey(std::string(65, 'k')), HttpError);
    EXPECT_THROW(RequireKey(""), HttpError);
    EXPECT_THROW(RequireKey("a/b"), HttpError);
}

TEST(ListedName, EndsWithAWholeCharacter)
{
    EXPECT_EQ(ListedName(""), "");
    EXPECT_EQ(ListedName(std::string(64, 'n')), std::string(64, 'n'));
    EXPECT_EQ(ListedName(std::string(65, 'n')), std::string(64, 'n'));
    EXPECT_EQ(ListedName(std::string(62, 'n') + "\xC3\xA9z"), std::string(62, 'n') + "\xC3\xA9");
    EXPECT_EQ(ListedName(std::string(61, 'n') + "\xF0\x9F\x98\x80"), std::string(61, 'n'));
}

TEST(QueryText, IsReadAsClientsWriteIt)
{
    httplib::Request request;
    request.target = "/storage/ods/down.php?uid=1&k=a+b%20c&d=%e4%B8%AD%zz%4";
    EXPECT_EQ(QueryValue(request, "uid"), "1");
    EXPECT_EQ(QueryValue(request, "k"), "a+b c");
    EXPECT_EQ(LastQueryValue(request, "k"), "a+b c&d=\xE4\xB8\xAD%zz%4");
    EXPECT_EQ(QueryValue(request, "id"), "");
    EXPECT_EQ(QueryValue(request, "ui"), "");
    request.target = "/storage/check.php";
    EXPECT_EQ(LastQueryValue(request, "s"), "");
    EXPECT_EQ(Unescape("%"), "%");
    EXPECT_EQ(Unescape("%%41%"), "%A%");
    EXPECT_EQ(Unescape("%+1%-1% 1"), "%+1%-1% 1");
}

} // namespace quorvex::services::storage::test
