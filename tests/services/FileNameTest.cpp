#include "common/FileName.h"

#include "common/DownloadAnswer.h"
#include "common/HttpAnswers.h"

#include <string>

#include <gtest/gtest.h>

namespace quorvex::services::test
{

TEST(FileName, MayBeAnyTextThatIsNotAPath)
{
    for (const char* name : {"a", "a b.txt", ".hidden", "\xE4\xB8\xAD.doc", "semi;colon", "quo\"te", "..."})
    {
        EXPECT_NO_THROW(RequireName(name)) << name;
    }
    EXPECT_NO_THROW(RequireName(std::string(255, 'n')));
}

TEST(FileName, IsRefusedWhenItCouldLeadAstray)
{
    const std::string names[] = {
        "", ".", "..", "a/b", "a\\b", std::string("a\0b", 3), "a\nb", "a\x7f", "\xE4\xB8", std::string(256, 'n')};
    for (const std::string& name : names)
    {
        EXPECT_THROW(RequireName(name), HttpError) << ::testing::PrintToString(name);
    }
}

TEST(ContentDisposition, HasNameAndDigestWhereClientsCutThemOut)
{
    const std::string value = ContentDisposition("a b.txt", "0123456789abcdef0123456789abcdef");
    const std::size_t semicolon = value.find(';', 22);

    EXPECT_EQ(value, "attachment;filename=\"a b.txt;md5=0123456789abcdef0123456789abcdef");
    EXPECT_EQ(value.substr(21, semicolon - 21), "a b.txt");
    EXPECT_EQ(value.substr(semicolon + 5), "0123456789abcdef0123456789abcdef");
}

TEST(ContentDisposition, IsNotBrokenByTheName)
{
    EXPECT_EQ(ContentDisposition("a;b\"c", "m"), "attachment;filename=\"a_b_c;md5=m");
}

} // namespace quorvex::services::test
