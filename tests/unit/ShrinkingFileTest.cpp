// A file that ends before the size that it had when its upload began.

#include "Platform/File.h"
#include "Platform/LastError.h"
#include "Platform/WinHttp.h"
#include "RequestBody.h"

#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"

#include <quorvex/FileStorage2.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using quorvex::CFileStorage2;
using quorvex::Platform::File;

/// The module's pieces are linked into this program, so it is its own calls that are watched.
constexpr const wchar_t* thisProgram = nullptr;

class ShrinkingFile : public testing::Test
{
protected:
    ShrinkingFile() { support::writeFile(m_path, "hello"); }

    const std::filesystem::path& path() const { return m_path; }
    const std::filesystem::path& folder() const { return m_folder.path(); }

private:
    support::TempFolder m_folder;
    std::filesystem::path m_path = m_folder.path() / L"a.txt";
};

TEST_F(ShrinkingFile, EndsTheBodyInsteadOfLettingTheServerWait)
{
    std::filesystem::resize_file(path(), 0);
    File file;
    ASSERT_TRUE(file.OpenToRead(path().c_str(), File::Share::ReadAndWrite));
    quorvex::Platform::Request request;
    EXPECT_FALSE(quorvex::WriteFileBody(request, file, 5));
    EXPECT_EQ(quorvex::Platform::LastError(), quorvex::Platform::kEndOfFile);
}

TEST_F(ShrinkingFile, IsNotSentByTheSecondGeneration)
{
    support::ScriptedServer server;
    const std::wstring url = L"http://127.0.0.1:" + std::to_wstring(server.port()) + L"/api";
    CFileStorage2 storage(url.c_str(), L"S", 0, 0, 0, 0);
    const support::LogCapture log;
    {
        support::SystemCalls calls(thisProgram);
        calls.watch([&](const support::SystemCall& call) {
            if (call.function == std::string_view("GetFileSize"))
            {
                std::filesystem::resize_file(path(), 2);
            }
        });
        EXPECT_EQ(storage.PictureUpload(folder().c_str(), L"a.txt"), -120);
    }
    const std::vector<std::string> errors = log.messages("ERROR");
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_TRUE(errors.front().starts_with("GetLastError()=38 : ")) << errors.front();
    EXPECT_EQ(server.unexpectedConnections(), 0U);
}

} // namespace
