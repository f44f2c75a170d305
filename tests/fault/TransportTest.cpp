// What the client does not show of its connection: the results of connecting, and requests that it never makes.

#include "Netdisk/NetDiskHttpHelper.h"

#include "support/HandleLedger.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace
{

using quorvex::netdisk::CNetDiskHttpHelper;

/// The module's pieces are linked into this program, so it is its own calls that are watched.
constexpr const wchar_t* thisProgram = nullptr;

using Lines = std::vector<std::string>;

struct Watch
{
    support::SystemCalls calls{thisProgram};
    support::HandleLedger ledger{calls};
};

class Transport : public testing::Test
{
protected:
    ~Transport() override { endWatch(); }

    /// What this program itself does afterwards is not booked.
    void endWatch()
    {
        if (m_watch)
        {
            EXPECT_EQ(ledger().defects(), Lines{});
        }
        m_watch.reset();
    }

    support::SystemCalls& calls() { return m_watch->calls; }
    const support::HandleLedger& ledger() const { return m_watch->ledger; }

    std::wstring url() const { return L"http://127.0.0.1:" + std::to_wstring(m_server.port()) + L"/api"; }

    support::LogCapture m_log;
    support::ScriptedServer m_server;

private:
    std::optional<Watch> m_watch{std::in_place};
};

TEST_F(Transport, Connects)
{
    CNetDiskHttpHelper helper(url().c_str());
    EXPECT_TRUE(helper.IsConnected());
    EXPECT_EQ(m_log.messages("TRACE"), Lines{"CHttpHelper::InitialConnection()"});
}

TEST_F(Transport, DropsTheOldConnectionFirst)
{
    CNetDiskHttpHelper helper(url().c_str());
    m_log.clear();
    EXPECT_EQ(helper.InitialConnection(url().c_str()), 0);
    EXPECT_TRUE(helper.IsConnected());
    EXPECT_EQ(m_log.messages("TRACE"), (Lines{"CHttpHelper::InitialConnection()", "CHttpHelper::CloseConnection()"}));
    EXPECT_EQ(ledger().opened(), 4u);
    EXPECT_EQ(ledger().defects().size(), 2u);
}

TEST_F(Transport, IsClosedOnce)
{
    CNetDiskHttpHelper helper(url().c_str());
    EXPECT_EQ(helper.CloseConnection(), 0);
    EXPECT_FALSE(helper.IsConnected());
    EXPECT_EQ(ledger().defects(), Lines{});
    m_log.clear();
    EXPECT_EQ(helper.CloseConnection(), 0);
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(Transport, ClosesWithoutFailing)
{
    CNetDiskHttpHelper helper(url().c_str());
    calls().fail("WinHttpCloseHandle", 1, 6, 2);
    EXPECT_EQ(helper.CloseConnection(), 0);
    EXPECT_FALSE(helper.IsConnected());
    const Lines errors = m_log.messages("ERROR");
    ASSERT_EQ(errors.size(), 4u);
    EXPECT_EQ(errors[0], "InternetCloseHandle error");
    EXPECT_EQ(errors[2], "InternetCloseHandle error");
}

struct Failure
{
    const char* function;
    int result;
    const char* line;
};

void PrintTo(const Failure& failure, std::ostream* out)
{
    *out << failure.function;
}

class TransportFailure : public Transport, public testing::WithParamInterface<Failure>
{
};

TEST_P(TransportFailure, HasAResultAndALine)
{
    CNetDiskHttpHelper helper(url().c_str());
    calls().fail(GetParam().function, 1, 12178);
    EXPECT_EQ(helper.InitialConnection(url().c_str()), GetParam().result);
    EXPECT_FALSE(helper.IsConnected());
    const Lines errors = m_log.messages("ERROR");
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0], GetParam().line);
    EXPECT_TRUE(errors[1].starts_with("GetLastError()=12178 : ")) << errors[1];

    std::string response;
    EXPECT_EQ(helper.RequestGet(L"x", response), -100);
    EXPECT_EQ(m_log.messages("ERROR").back(), "Not connect to server.");
    EXPECT_EQ(helper.InitialConnection(url().c_str()), 0);
    EXPECT_TRUE(helper.IsConnected());
}

INSTANTIATE_TEST_SUITE_P(Connecting, TransportFailure,
                         testing::Values(Failure{"WinHttpCrackUrl", -104, "InternetCrackUrl error"},
                                         Failure{"WinHttpOpen", -105, "InternetOpen error"},
                                         Failure{"WinHttpConnect", -106, "InternetConnect error"}),
                         [](const auto& parameter) { return std::string(parameter.param.function); });

TEST_F(Transport, CannotSplitWhatIsNoUrl)
{
    CNetDiskHttpHelper helper(url().c_str());
    EXPECT_EQ(helper.InitialConnection(L"nonsense"), -104);
    EXPECT_FALSE(helper.IsConnected());
}

TEST_F(Transport, SendsAnEmptyBodyWithItsLength)
{
    support::Exchange exchange;
    exchange.pieces = {"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 2\r\n\r\nok"};
    m_server.play({exchange});
    {
        CNetDiskHttpHelper helper(url().c_str());
        std::string response = "what was there";
        EXPECT_EQ(helper.RequestPost(L"x", "", response), 0);
        EXPECT_EQ(response, "ok");
    }
    endWatch();
    m_server.stop();
    ASSERT_EQ(m_server.requests().size(), 1u);
    EXPECT_TRUE(m_server.requests().front().starts_with("POST /api/x HTTP/1.1\r\n"));
    EXPECT_NE(m_server.requests().front().find("\r\nContent-Length: 0\r\n"), std::string::npos);
}

TEST_F(Transport, KeepsWhatWasReadBeforeAFailure)
{
    support::Exchange exchange;
    exchange.pieces = {"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 10000\r\n\r\n" +
                       std::string(10000, 'x')};
    m_server.play({exchange});
    CNetDiskHttpHelper helper(url().c_str());
    calls().fail("WinHttpReadData", 2, 12178);
    std::string response = "what was there";
    EXPECT_EQ(helper.RequestGet(L"x", response), -107);
    EXPECT_FALSE(response.empty());
    EXPECT_EQ(response, std::string(response.size(), 'x'));
}

} // namespace
