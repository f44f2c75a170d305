#include "support/HandleLedger.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"
#include "support/Text.h"

#include <windows.h>
#include <winhttp.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

using namespace support;

namespace
{

/// The test program itself is the module whose calls are watched here.
constexpr const wchar_t* thisProgram = nullptr;

/// A plain socket client: sends what it is told and reads until the server ends the connection.
class RawClient
{
public:
    explicit RawClient(unsigned short port) : m_socket(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        m_connected = connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~RawClient() { closesocket(m_socket); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool isConnected() const { return m_connected; }
    void send(const std::string& bytes) { ::send(m_socket, bytes.data(), static_cast<int>(bytes.size()), 0); }

    /// @return whether the connection ended in order
    bool readAll(std::string& bytes)
    {
        char buffer[1024];
        for (;;)
        {
            const int count = recv(m_socket, buffer, sizeof buffer, 0);
            if (count <= 0)
                return count == 0;
            bytes.append(buffer, static_cast<std::size_t>(count));
        }
    }

private:
    SOCKET m_socket;
    bool m_connected;
};

const std::string post = "POST /x HTTP/1.1\r\nContent-Length: 4\r\n\r\nbody";

TEST(ScriptedServer, PlaysItsScriptAndKeepsTheRequests)
{
    Exchange second;
    second.pieces = {"two"};
    second.byteByByte = true;
    ScriptedServer server;
    server.play({Exchange{.pieces = {"o", "ne"}}, second});
    for (const char* expected : {"one", "two"})
    {
        RawClient client(server.port());
        client.send(post);
        std::string reply;
        EXPECT_TRUE(client.readAll(reply));
        EXPECT_EQ(reply, expected);
    }
    server.stop();
    EXPECT_EQ(server.requests(), (std::vector<std::string>{post, post}));
    EXPECT_EQ(server.unexpectedConnections(), 0u);
}

TEST(ScriptedServer, AnswersEarlyAndStillReadsTheRest)
{
    ScriptedServer server;
    server.play({Exchange{.bodyBytesBeforeReply = 0, .pieces = {"early"}}});
    RawClient client(server.port());
    client.send(post.substr(0, post.size() - 4));
    std::string reply;
    EXPECT_TRUE(client.readAll(reply));
    EXPECT_EQ(reply, "early");
    client.send("body");
    server.stop();
    EXPECT_EQ(server.requests(), (std::vector<std::string>{post}));
}

TEST(ScriptedServer, ResetsAConnection)
{
    ScriptedServer server;
    server.play({Exchange{.ending = Exchange::Ending::Reset}});
    RawClient client(server.port());
    client.send(post);
    std::string reply;
    EXPECT_FALSE(client.readAll(reply));
}

TEST(ScriptedServer, CountsConnectionsBehindItsScript)
{
    ScriptedServer server;
    server.play({});
    RawClient client(server.port());
    client.send(post);
    std::string reply;
    client.readAll(reply);
    EXPECT_EQ(reply, "");
    RawClient unserved(server.port());
    server.stop();
    EXPECT_EQ(server.unexpectedConnections(), 2u);
}

TEST(ScriptedServer, StopsInTheMiddleOfARequest)
{
    ScriptedServer server;
    server.play({Exchange{.pieces = {"never read"}}});
    RawClient client(server.port());
    client.send("POST /x HT");
    server.stop();
    EXPECT_LE(server.requests().size() + server.unexpectedConnections(), 1u);
}

TEST(RefusingPort, Refuses)
{
    const RefusingPort nobody;
    EXPECT_FALSE(RawClient(nobody.port()).isConnected());
}

TEST(LogLines, AreTakenApart)
{
    const LogLine line = parseLogLine(8, "[ERROR] InternetOpen error\t[.\\src\\HttpHelper.cpp:42]\n");
    EXPECT_EQ(line.level, "ERROR");
    EXPECT_EQ(line.message, "InternetOpen error");
    EXPECT_EQ(line.tag, ".\\src\\HttpHelper.cpp");
    EXPECT_EQ(line.number, 42u);
    EXPECT_EQ(line.defect, "");
}

TEST(LogLines, KeepTabsAndBracketsOfTheMessage)
{
    EXPECT_EQ(parseLogLine(2, "[INFO] a\t[b]\nc\t[.\\src\\A.cpp:1]\n").message, "a\t[b]\nc");
}

TEST(LogLines, HaveDefects)
{
    EXPECT_NE(parseLogLine(1, "[ERROR] a\t[.\\src\\A.cpp:1]\n").defect, "");
    EXPECT_NE(parseLogLine(8, "[ERROR]a\t[.\\src\\A.cpp:1]\n").defect, "");
    EXPECT_NE(parseLogLine(8, "[ERROR] a [.\\src\\A.cpp:1]\n").defect, "");
    EXPECT_NE(parseLogLine(8, "[ERROR] a\t[.\\src\\A.cpp:1]").defect, "");
    EXPECT_NE(parseLogLine(8, "[ERROR] a\t[.\\src\\A.cpp:]\n").defect, "");
    EXPECT_NE(parseLogLine(8, "[ERROR] a\t[.\\src\\A.cpp:x]\n").defect, "");
    EXPECT_NE(parseLogLine(8, "[ERROR] a\t[src/A.cpp:1]\n").defect, "");
    EXPECT_NE(parseLogLine(8, "[ERROR] a\t[.\\src\\:1]\n").defect, "");
}

TEST(SourceTags, HaveOneForm)
{
    EXPECT_TRUE(isSourceTag(".\\src\\Netdisk\\NetDisk.cpp"));
    EXPECT_TRUE(isSourceTag(".\\src\\CommonUtil"));
    EXPECT_FALSE(isSourceTag(".\\src\\"));
    EXPECT_FALSE(isSourceTag(".\\src\\a b"));
    EXPECT_FALSE(isSourceTag("CommonUtil.cpp"));
}

TEST(TempFolders, GoWithEverythingInThem)
{
    std::filesystem::path path;
    {
        const TempFolder folder;
        path = folder.path();
        std::filesystem::create_directory(path / "sub");
        writeFile(path / "sub" / "file", "content");
        std::filesystem::permissions(path / "sub" / "file", std::filesystem::perms::owner_read);
        EXPECT_EQ(readFile(path / "sub" / "file"), "content");
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Texts, Convert)
{
    EXPECT_EQ(toWide("a\xE4\xB8\xAD"), L"a\u4e2d");
    EXPECT_EQ(toUtf8(L"a\u4e2d"), "a\xE4\xB8\xAD");
    EXPECT_EQ(escaped("a\r\n\t\\\x01\xFF"), "a\\r\\n\\t\\\\\\x01\\xFF");
}

TEST(Patterns, DoNotRepeatSoon)
{
    const std::string bytes = patternBytes(200000);
    EXPECT_EQ(bytes.size(), 200000u);
    EXPECT_NE(bytes.substr(0, 65536), bytes.substr(65536, 65536));
}

HANDLE openFile(const std::filesystem::path& path)
{
    return CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
}

TEST(SystemCalls, FailTheOneThatIsAskedFor)
{
    const TempFolder folder;
    writeFile(folder.path() / "file", "x");
    SystemCalls calls(thisProgram);
    calls.fail("CreateFileW", 2, ERROR_DISK_FULL);

    const HANDLE first = openFile(folder.path() / "file");
    EXPECT_NE(first, INVALID_HANDLE_VALUE);
    EXPECT_EQ(openFile(folder.path() / "file"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
    const HANDLE third = openFile(folder.path() / "file");
    EXPECT_NE(third, INVALID_HANDLE_VALUE);
    EXPECT_EQ(calls.calls("CreateFileW"), 3u);
    CloseHandle(first);
    CloseHandle(third);
}

TEST(SystemCalls, AreThemselvesAgainAfterwards)
{
    {
        SystemCalls calls(thisProgram);
        calls.fail("WinHttpOpen", 1, 5, 100);
        EXPECT_EQ(WinHttpOpen(L"a", 0, nullptr, nullptr, 0), nullptr);
    }
    const HINTERNET session = WinHttpOpen(L"a", 0, nullptr, nullptr, 0);
    EXPECT_NE(session, nullptr);
    EXPECT_TRUE(WinHttpCloseHandle(session));
}

TEST(SystemCalls, RefuseWhatTheModuleDoesNotImport)
{
    SystemCalls calls(thisProgram);
    EXPECT_THROW(calls.fail("WinHttpCrackUrl", 1, 5), std::invalid_argument);
    EXPECT_THROW(SystemCalls(L"no-such-module.dll"), std::invalid_argument);
}

TEST(HandleLedgers, TellWhatIsLeftOpen)
{
    const TempFolder folder;
    writeFile(folder.path() / "file", "x");
    SystemCalls calls(thisProgram);
    const HandleLedger ledger(calls);
    const HANDLE file = openFile(folder.path() / "file");
    ASSERT_EQ(ledger.defects().size(), 1u);
    EXPECT_EQ(ledger.defects().front(), "left open: a handle of CreateFileW");
    calls.fail("CloseHandle", 1, ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CloseHandle(file));
    EXPECT_TRUE(ledger.defects().empty());
    EXPECT_EQ(ledger.opened(), 1u);
}

TEST(HandleLedgers, TellWhatIsClosedTwice)
{
    SystemCalls calls(thisProgram);
    const HandleLedger ledger(calls);
    const HINTERNET session = WinHttpOpen(L"a", 0, nullptr, nullptr, 0);
    WinHttpCloseHandle(session);
    EXPECT_TRUE(ledger.defects().empty());
    WinHttpCloseHandle(session);
    EXPECT_EQ(ledger.defects().size(), 1u);
}

} // namespace
