#include "LocalFile.h"

#include "support/LogCapture.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>

using quorvex::CloseLocalFile;
using quorvex::OpenUploadFile;
using quorvex::UploadPath;
using quorvex::Platform::File;
using quorvex::Platform::FileSize;

TEST(LocalFile, APathThatWasCutOpensNoOtherFile)
{
    const support::TempFolder folder;
    const std::wstring folderPath = folder.path().wstring();
    const std::wstring name(259 - folderPath.size() - 1, L'n');
    support::writeFile(folder.path() / name, "content");

    UploadPath whole;
    whole << folderPath << L"\\" << name;
    File file;
    EXPECT_TRUE(OpenUploadFile(file, whole, File::Share::Nothing));
    EXPECT_TRUE(CloseLocalFile(file));

    const support::LogCapture log;
    UploadPath cut;
    cut << folderPath << L"\\" << name + L"m";
    EXPECT_EQ(cut.view(), whole.view());
    EXPECT_FALSE(OpenUploadFile(file, cut, File::Share::Nothing));
    EXPECT_EQ(log.messages("ERROR").size(), 1U);
}

TEST(LocalFile, SizeOfAFileThatIsOpenElsewhere)
{
    const support::TempFolder folder;
    const std::wstring path = (folder.path() / L"a.txt").wstring();
    support::writeFile(path, "content");
    File file;
    ASSERT_TRUE(file.OpenToWrite(path.c_str(), File::Existing::Kept));

    std::uint64_t size = 0;
    EXPECT_TRUE(FileSize(path.c_str(), size));
    EXPECT_EQ(size, 7U);
    EXPECT_FALSE(FileSize((folder.path() / L"none").wstring().c_str(), size));
}
