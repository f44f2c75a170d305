// The longest path of a download. The system takes one of more than 259 characters in its extended form.

#include "Netdisk/NetDiskHttpHelper.h"

#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using quorvex::netdisk::CNetDiskHttpHelper;

namespace
{

constexpr std::size_t kLongestPath = 323;
constexpr std::size_t kFolderLength = 200;

/// A folder's path in the extended form.
class DownloadPath : public testing::Test
{
protected:
    DownloadPath()
    {
        m_folderPath += L"\\" + std::wstring(kFolderLength - m_folderPath.size() - 1, L'f');
        EXPECT_TRUE(CreateDirectoryW(m_folderPath.c_str(), nullptr)) << GetLastError();
    }

    /// Beyond 259 characters nothing else finds the file.
    ~DownloadPath() override { DeleteFileW(PathOf(LongestName()).c_str()); }

    static std::wstring LongestName() { return std::wstring(kLongestPath - kFolderLength - 1, L'n'); }
    std::wstring PathOf(const std::wstring& name) const { return m_folderPath + L"\\" + name; }
    bool Exists(const std::wstring& name) const
    {
        return GetFileAttributesW(PathOf(name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    int Download(const std::wstring& name)
    {
        support::Exchange exchange;
        exchange.pieces = {"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 5\r\n\r\nhello"};
        support::ScriptedServer server;
        server.play({exchange});
        const std::wstring url = L"http://127.0.0.1:" + std::to_wstring(server.port()) + L"/api";
        CNetDiskHttpHelper helper(url.c_str());
        std::uint32_t statusCode = 0;
        return helper.FileDownload(L"x", m_folderPath.c_str(), name.c_str(), statusCode);
    }

private:
    support::TempFolder m_folder;
    std::wstring m_folderPath = L"\\\\?\\" + m_folder.path().wstring();
};

TEST_F(DownloadPath, Of323CharactersIsWritten)
{
    EXPECT_EQ(PathOf(LongestName()).size(), kLongestPath);
    EXPECT_EQ(Download(LongestName()), 0);
    EXPECT_TRUE(Exists(LongestName()));
}

TEST_F(DownloadPath, ThatWasCutMakesNoOtherFile)
{
    const support::LogCapture log;
    EXPECT_EQ(Download(LongestName() + L"m"), -120);
    EXPECT_FALSE(Exists(LongestName()));
    const std::vector<std::string> errors = log.messages("ERROR");
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_TRUE(errors.front().starts_with("GetLastError()=123 : ")) << errors.front();
}

} // namespace
