#include "ResumeRecord.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

#include <windows.h>

namespace quorvex::console
{
namespace
{

ResumeRecord Sample()
{
    ResumeRecord record;
    record.identity = {"http://127.0.0.1:8080/object", "film \xE6\x97\xA5.mkv", 4294967295u, -116444736000000000,
                       "900150983cd24fb0d6963f7d28e17f72"};
    record.ids.key = "0123456789abcdef0123456789abcdef";
    record.confirmed = 4194304;
    return record;
}

TEST(ResumeRecord, IsReadAsItWasWritten)
{
    EXPECT_EQ(ParseResumeRecord(ToText(Sample())), Sample());
}

TEST(ResumeRecord, HasATicketWhereBlocksNeedOne)
{
    EXPECT_EQ(ToText(Sample()).find("ticket"), std::string::npos);
    ResumeRecord record = Sample();
    record.ids.ticket = "abc";
    EXPECT_EQ(ParseResumeRecord(ToText(record)), record);
    std::string text = ToText(record);
    EXPECT_EQ(ParseResumeRecord(text.replace(text.find("\"abc\""), 5, "[]")), std::nullopt);
}

TEST(ResumeRecord, IsNotReadFromAnyPartOfItself)
{
    const std::string text = ToText(Sample());
    for (std::size_t length = 0; length + 2 < text.size(); ++length)
        EXPECT_EQ(ParseResumeRecord(text.substr(0, length)), std::nullopt) << length;
}

TEST(ResumeRecord, IsNotReadWithoutOneOfItsMembers)
{
    for (const char* const name : {"server", "name", "size", "modified", "md5", "key", "confirmed", "version"})
    {
        std::string text = ToText(Sample());
        text[text.find('"' + std::string(name) + "\":") + 1] = '?';
        EXPECT_EQ(ParseResumeRecord(text), std::nullopt) << text;
    }
}

TEST(ResumeRecord, IsNotReadWithWrongTypesOrAnotherVersion)
{
    const auto with = [](const std::string& from, const std::string& to) {
        std::string text = ToText(Sample());
        return ParseResumeRecord(text.replace(text.find(from), from.size(), to));
    };
    EXPECT_NE(with("4194304", "4194305"), std::nullopt);
    EXPECT_EQ(with("4194304", "\"4194304\""), std::nullopt);
    EXPECT_EQ(with("4194304", "-1"), std::nullopt);
    EXPECT_EQ(with("4194304", "4294967296"), std::nullopt);
    EXPECT_EQ(with("\"0123456789abcdef0123456789abcdef\"", "\"\""), std::nullopt);
    EXPECT_EQ(with("\"version\":1", "\"version\":2"), std::nullopt);
}

TEST(ResumeRecord, IsNotReadFromOtherTexts)
{
    for (const char* const text : {"", "null", "[]", "{}", "1", "\"\"", "{\"version\":1}", "\xFF\xFE"})
        EXPECT_EQ(ParseResumeRecord(text), std::nullopt) << text;
    EXPECT_EQ(ParseResumeRecord(std::string(100000, '[')), std::nullopt);
}

class ResumeFileTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        m_folder = std::filesystem::temp_directory_path() /
                   (std::string("resume-") + test->name() + '-' + std::to_string(GetCurrentProcessId()));
        std::filesystem::create_directories(m_folder);
    }

    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::filesystem::path m_folder;
};

TEST_F(ResumeFileTest, GivesBackWhatWasSavedLast)
{
    const ResumeFile file(m_folder / L"\x65E5.quorvex-resume");
    ResumeRecord record = Sample();
    EXPECT_EQ(file.Load(record.identity), std::nullopt);
    ASSERT_TRUE(file.Save(record));
    record.confirmed = record.identity.size;
    ASSERT_TRUE(file.Save(record));
    EXPECT_EQ(file.Load(record.identity), record);
    file.Remove();
    EXPECT_EQ(file.Load(record.identity), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_empty(m_folder));
}

TEST_F(ResumeFileTest, HoldsForTheSameUploadOnly)
{
    const ResumeFile file(m_folder / "record");
    ASSERT_TRUE(file.Save(Sample()));
    const std::function<void(UploadIdentity&)> changes[] = {
        [](auto& identity) { identity.server += '/'; }, [](auto& identity) { identity.name += 'x'; },
        [](auto& identity) { --identity.size; },        [](auto& identity) { ++identity.modified; },
        [](auto& identity) { identity.md5[0] = '0'; },
    };
    for (const auto& change : changes)
    {
        UploadIdentity identity = Sample().identity;
        change(identity);
        EXPECT_EQ(file.Load(identity), std::nullopt);
    }
    EXPECT_EQ(file.Load(Sample().identity), Sample());
}

TEST_F(ResumeFileTest, TellsWhenNothingCanBeSaved)
{
    EXPECT_FALSE(ResumeFile(m_folder / "missing" / "record").Save(Sample()));
    std::filesystem::create_directories(m_folder / "folder" / "inner");
    EXPECT_FALSE(ResumeFile(m_folder / "folder").Save(Sample()));
}

} // namespace
} // namespace quorvex::console
