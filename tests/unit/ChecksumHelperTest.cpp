#include "ChecksumHelper.h"

#include "support/LogCapture.h"
#include "support/TempFolder.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

using namespace quorvex;

namespace
{

class ChecksumHelper : public ::testing::Test
{
protected:
    std::string WriteFile(const std::string& name, const std::string& content)
    {
        support::writeFile(folder.path() / name, content);
        return content;
    }

    support::TempFolder folder;
    const std::wstring folderName = folder.path().wstring();
    char md5[kMd5TextSize + 1] = "#################################";
    char sha1[kSha1TextSize + 1] = "#########################################";
    std::uint32_t size = 777;
};

} // namespace

TEST_F(ChecksumHelper, FileMd5)
{
    WriteFile("abc", "abc");
    EXPECT_EQ(FileMd5(L"abc", folderName.c_str(), md5, size), 0);
    EXPECT_STREQ(md5, "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(size, 3U);
}

TEST_F(ChecksumHelper, FileMd5AndSha1)
{
    WriteFile("abc", "abc");
    EXPECT_EQ(FileMd5AndSha1(L"abc", md5, folderName.c_str(), sha1, size), 0);
    EXPECT_STREQ(md5, "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_STREQ(sha1, "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(size, 3U);
}

TEST_F(ChecksumHelper, FilesLongerThanABlock)
{
    const std::string content = WriteFile("long", support::patternBytes(3 * 1048576 + 17));
    EXPECT_EQ(FileMd5(L"long", folderName.c_str(), md5, size), 0);
    EXPECT_EQ(md5, StringMd5(content.data(), content.size()));
    EXPECT_EQ(size, content.size());
    EXPECT_EQ(StreamedFileMd5(support::toUtf8((folder.path() / "long").wstring())), md5);
}

TEST_F(ChecksumHelper, EmptyFileHasNoDigest)
{
    WriteFile("empty", "");
    const support::LogCapture log;
    EXPECT_EQ(FileMd5(L"empty", folderName.c_str(), md5, size), 1);
    EXPECT_EQ(FileMd5AndSha1(L"empty", md5, folderName.c_str(), sha1, size), 1);
    EXPECT_EQ(md5[0], '#');
    EXPECT_EQ(sha1[0], '#');
    EXPECT_EQ(size, 777U);
    ASSERT_EQ(log.messages("ERROR").size(), 2U);
    EXPECT_TRUE(log.messages("ERROR")[0].starts_with("GetLastError()=1006 : "));
}

TEST_F(ChecksumHelper, MissingFile)
{
    const support::LogCapture log;
    EXPECT_EQ(FileMd5(L"none", folderName.c_str(), md5, size), 1);
    EXPECT_EQ(FileMd5AndSha1(L"none", md5, folderName.c_str(), sha1, size), -121);
    EXPECT_EQ(md5[0], '#');
    EXPECT_EQ(sha1[0], '#');
    EXPECT_EQ(size, 777U);
    ASSERT_EQ(log.messages("ERROR").size(), 2U);
    for (const std::string& message : log.messages("ERROR"))
    {
        EXPECT_TRUE(message.starts_with("GetLastError()=2 : ")) << message;
        EXPECT_NE(message.find(".\\src\\ChecksumHelper.cpp:"), std::string::npos) << message;
    }
}

TEST_F(ChecksumHelper, NullNamesAreFilesThatCannotBeOpened)
{
    const support::LogCapture log;
    EXPECT_EQ(FileMd5(nullptr, nullptr, md5, size), 1);
    EXPECT_EQ(log.messages("ERROR").size(), 1U);
}

TEST_F(ChecksumHelper, APathThatWasCutDigestsNoOtherFile)
{
    const std::wstring name(259 - folderName.size() - 1, L'n');
    support::writeFile(folder.path() / name, "abc");
    EXPECT_EQ(FileMd5(name.c_str(), folderName.c_str(), md5, size), 0);
    EXPECT_EQ(FileMd5AndSha1(name.c_str(), md5, folderName.c_str(), sha1, size), 0);
    EXPECT_STREQ(md5, "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(size, 3U);

    md5[0] = '#';
    sha1[0] = '#';
    size = 777;
    const std::wstring longer = name + L"m";
    const support::LogCapture log;
    EXPECT_EQ(FileMd5(longer.c_str(), folderName.c_str(), md5, size), 1);
    EXPECT_EQ(FileMd5AndSha1(longer.c_str(), md5, folderName.c_str(), sha1, size), -121);
    EXPECT_EQ(md5[0], '#');
    EXPECT_EQ(sha1[0], '#');
    EXPECT_EQ(size, 777U);
    ASSERT_EQ(log.messages("ERROR").size(), 2U);
    for (const std::string& message : log.messages("ERROR"))
    {
        EXPECT_TRUE(message.starts_with("GetLastError()=123 : ")) << message;
    }
}

TEST_F(ChecksumHelper, FilesOf4GiBAndMoreCountByTheLowHalfOfTheirSize)
{
    // Sparse: only its length is 4 GiB and three bytes.
    std::filesystem::path path = folder.path() / "huge";
    WriteFile("huge", "abc");
    std::filesystem::resize_file(path, (std::uint64_t{1} << 32U) + 3);
    EXPECT_EQ(FileMd5(L"huge", folderName.c_str(), md5, size), 0);
    EXPECT_EQ(size, 3U);
    EXPECT_STREQ(md5, "900150983cd24fb0d6963f7d28e17f72");

    std::filesystem::resize_file(path, std::uint64_t{1} << 32U);
    EXPECT_EQ(FileMd5AndSha1(L"huge", md5, folderName.c_str(), sha1, size), 0);
    EXPECT_EQ(size, 0U);
    EXPECT_STREQ(md5, "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_STREQ(sha1, "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST_F(ChecksumHelper, StreamedMd5TakesUtf8NamesAndEmptyFiles)
{
    support::writeFile(folder.path() / L"\u4E2D\u6587", "");
    EXPECT_EQ(StreamedFileMd5(support::toUtf8((folder.path() / L"\u4E2D\u6587").wstring())),
              "d41d8cd98f00b204e9800998ecf8427e");
}

TEST_F(ChecksumHelper, StreamedMd5OfAMissingFileIsEmpty)
{
    const support::LogCapture log;
    EXPECT_EQ(StreamedFileMd5(support::toUtf8((folder.path() / "none").wstring())), "");
    EXPECT_EQ(log.messages("ERROR").size(), 1U);
}

TEST_F(ChecksumHelper, OthersMayHaveTheFileOpenForWriting)
{
    WriteFile("open", "abc");
    const std::ofstream writer(folder.path() / "open", std::ios::app);
    EXPECT_EQ(FileMd5(L"open", folderName.c_str(), md5, size), 0);
}

TEST(StringMd5, IsLowercaseHexadecimal)
{
    EXPECT_EQ(StringMd5("", 0), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(StringMd5("message digest", 14), "f96b697d7cb7938d525a2f31aaf161d0");
}
