#include "hostile/Player.h"

#include "support/LogCapture.h"
#include "support/PageGuards.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace hostile
{
namespace
{

namespace fs = std::filesystem;

void checkLog(const support::LogCapture& log)
{
    for (const support::LogLine& line : log.lines())
    {
        EXPECT_EQ(line.defect, "") << line.message.substr(0, 300);
        // An exception is caught before it leaves the module, but none of these replies is a reason for one.
        EXPECT_EQ(line.message.find("ended by an"), std::string::npos) << line.message.substr(0, 300);
    }
}

} // namespace

Player::Player() : m_calls((support::guardHeap(), L"quorvex.dll"))
{
    begin();
}

void Player::begin()
{
    m_warm.clear();
    m_stage.emplace(m_server.port());
    logIn();
}

void Player::logIn()
{
    const bool isLoggedIn =
        succeed(operation("CNetDisk.UserLogin")) == 0 && succeed(operation("CFileStorage.UserLogin")) == 0 &&
        succeed(operation("CFileStorage2.UserLogin")) == 0 && succeed(operation("COnlineUserSearch.ClientLogin")) == 0;
    if (!isLoggedIn)
        throw std::runtime_error("a client cannot log in");
}

int Player::succeed(const Operation& operation)
{
    m_server.give(reply(answer(operation.body, operation.headers())));
    m_stage->clear();
    return operation.call(*m_stage);
}

int Player::run(const Attack& attack)
{
    m_server.give(attack.reply);
    m_stage->clear();
    const support::LogCapture log(attack.logLevels);
    const int result = attack.operation->call(*m_stage);
    checkLog(log);
    return result;
}

void Player::play(const Attack& attack)
{
    const Operation& operation = *attack.operation;
    SCOPED_TRACE(operation.name + ", " + attack.name);
    if (m_warm.insert(operation.name).second)
        warmUp(operation);
    const std::vector<std::string> handles = m_ledger.defects();
    const support::HeapUse heap = support::heapUse();
    support::resetHeapPeak();

    checkResult(attack, run(attack));
    checkFiles();
    EXPECT_EQ(m_ledger.defects(), handles);
    if (attack.leadsAway)
    {
        begin();
        return;
    }

    EXPECT_EQ(succeed(operation), operation.success) << "afterwards";
    checkFiles();
    EXPECT_EQ(m_ledger.defects(), handles);
    EXPECT_EQ(support::heapUse().blocks, heap.blocks) << "blocks of the module's heap";
    EXPECT_EQ(support::heapUse().unguarded, heap.unguarded) << "blocks without a protected page behind them";
}

/// What the first success, the first failure and the first exception leave behind is no leak.
void Player::warmUp(const Operation& operation)
{
    for (const char* const body : {"null", "[]"})
    {
        m_server.give(reply(answer(body)));
        operation.call(*m_stage);
    }
    EXPECT_EQ(succeed(operation), operation.success) << "before any attack";
    checkFiles();
}

void Player::checkResult(const Attack& attack, int result)
{
    const HostileServer::Toll toll = m_server.toll();
    EXPECT_TRUE(attack.expected.empty() ? attack.operation->isDocumented(result)
                                        : std::ranges::count(attack.expected, result) != 0)
        << "result " << result << (attack.expected.empty() ? "" : " instead of ")
        << ::testing::PrintToString(attack.expected) << "; sent " << toll.bytesSent << " of " << attack.reply.size();
    EXPECT_LE(support::heapUse().peakBytes, attack.mostMemory);
    EXPECT_LE(toll.connections, attack.mostConnections);
}

/// Besides the two folders and what they had, there may be one file, the download.
void Player::checkFiles()
{
    std::vector<std::wstring> downloads;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_stage->in))
    {
        EXPECT_TRUE(entry.is_regular_file()) << support::toUtf8(entry.path().wstring());
        downloads.push_back(entry.path().wstring());
    }
    EXPECT_LE(downloads.size(), 1u);
    for (const std::wstring& download : downloads)
        EXPECT_TRUE(fs::remove(download)) << support::toUtf8(download);

    std::set<std::wstring> others;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_stage->folder.path()))
        others.insert(entry.path().filename().wstring());
    EXPECT_EQ(others, (std::set<std::wstring>{L"in", L"out", L"a.txt", L"large.bin"}));
}

} // namespace hostile
