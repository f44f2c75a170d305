// Every system call of every operation is made to fail, once and from then on: no failure may leak a handle or a heap
// block, touch memory beyond a room, throw, pass for a success that it is not, or spoil the client.

#include "fault/Operations.h"
#include "fault/SweepReport.h"

#include "support/HandleLedger.h"
#include "support/LogCapture.h"
#include "support/PageGuards.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using operations::Operation;

/// A failure of these cannot end well.
bool canNotEndWell(std::string_view function)
{
    static constexpr std::array<std::string_view, 13> vital{
        "WinHttpOpen",
        "WinHttpCrackUrl",
        "WinHttpConnect",
        "WinHttpOpenRequest",
        "WinHttpAddRequestHeaders",
        "WinHttpSendRequest",
        "WinHttpReceiveResponse",
        "WinHttpReadData",
        "CreateEventW",
        "frl_event_add_win32_event",
        "frl_http_session_create",
        "frl_http_request_open",
        "frl_http_request_perform",
    };
    return std::ranges::find(vital, function) != vital.end();
}

/// The standard library's own memory; the rest are system calls.
bool allocates(std::string_view function)
{
    return function == "malloc" || function == "calloc" || function == "realloc";
}

/// A text that the system cannot convert is empty.
bool converts(std::string_view function)
{
    return function == "MultiByteToWideChar" || function == "WideCharToMultiByte";
}

bool needsTheServer(std::string_view operation)
{
    return operation != "FileGetChecksum" && operation != "exit" && operation != "getBuffer";
}

/// The lines about failures; that a client of the storage has no session shows in every one of its transfers.
std::vector<std::string> failures(const support::LogCapture& log)
{
    std::vector<std::string> lines = log.messages("ERROR");
    std::erase(lines, "CFileStorage::UserLoginWithSession() session is not correct");
    return lines;
}

/// What an operation whose arguments are right may return when something fails.
bool isDocumented(const Operation& operation, int result)
{
    const bool isZlibs = result >= -5 && result <= -2;
    const bool isTransports = (result >= -120 && result <= -107) || (result >= -132 && result <= -130);
    return (operation.isCompressed && isZlibs) || isTransports || result == operation.good || result == 1 ||
           result == -1 || result == -100 || result == -134;
}

struct Fault
{
    std::string function;
    unsigned call;
    unsigned howMany;
};

constexpr unsigned fromThenOn = std::numeric_limits<unsigned>::max();

/// How often each function was called.
using Counts = std::map<std::string, unsigned>;

struct Outcome
{
    operations::Results results{};
    bool isClientSound = true; ///< nothing failed while the client was made
    Counts calls;              ///< until the first call was over
    std::size_t blocksKept = 0;
};

class FaultSweep : public testing::TestWithParam<Operation>
{
protected:
    FaultSweep() { support::guardHeap(); }

    Outcome run(const Fault* fault)
    {
        const Operation& operation = GetParam();
        support::ScriptedServer server;
        server.answer(answersOf(operation));
        const std::filesystem::path download = m_folder.path() / "d.txt";
        std::filesystem::remove(download);
        const std::wstring url = L"http://127.0.0.1:" + std::to_wstring(server.port()) + L"/api";

        const support::HandleLedger ledger(*m_calls);
        const std::size_t blocks = support::heapUse().blocks;
        const Counts before = counts();
        Outcome outcome;
        m_rooms.prepare();
        if (fault != nullptr)
            m_calls->fail(fault->function, fault->call, ERROR_NOT_ENOUGH_MEMORY, fault->howMany);

        support::LogCapture log;
        std::vector<support::LogLine> lines;
        const auto made = [&] {
            outcome.isClientSound =
                fault == nullptr || m_calls->calls(fault->function) - before.at(fault->function) < fault->call;
        };
        const auto calledOnce = [&] {
            if (fault != nullptr)
                m_calls->fail(fault->function, 1, NO_ERROR, 0);
            for (const auto& [function, calls] : counts())
                outcome.calls.emplace(function, calls - before.at(function));
            lines = log.lines();
            m_lastFailures = failures(log);
            m_handedOut = m_rooms.contents();
            if (std::filesystem::exists(download))
                m_handedOut += "file " + support::readFile(download);
        };
        outcome.results = operation.run(url.c_str(), m_folder.path().c_str(), m_rooms, {made, calledOnce});
        server.stop();

        check(operation, outcome, fault);
        EXPECT_EQ(ledger.defects(), std::vector<std::string>{});
        // A line that finds no memory for some of its text is written without it.
        if (fault == nullptr || !allocates(fault->function))
        {
            for (const support::LogLine& line : lines)
                EXPECT_EQ(line.defect, "") << line.message;
        }
        outcome.blocksKept = support::heapUse().blocks - blocks;
        return outcome;
    }

    void check(const Operation& operation, const Outcome& outcome, const Fault* fault)
    {
        const int result = outcome.results.first;
        EXPECT_TRUE(isDocumented(operation, result)) << result;
        if (fault == nullptr)
        {
            m_handedOutWell = m_handedOut;
        }
        else if (result == operation.good && operation.name != "FileGetChecksum" && !converts(fault->function))
        {
            EXPECT_TRUE(m_handedOut == m_handedOutWell) << "a success that hands out something else";
        }
        // Without any memory there is none for a line either.
        const bool canSpeak = fault == nullptr || fault->howMany == 1 || !allocates(fault->function);
        if (result != operation.good && canSpeak)
        {
            EXPECT_FALSE(m_lastFailures.empty()) << "a failure without a line";
        }
        m_failures.insert(m_lastFailures.begin(), m_lastFailures.end());

        // What comes after the fault is as if there had been none.
        if (fault == nullptr)
            m_resultAgain = outcome.results.again;
        else if (outcome.isClientSound)
            EXPECT_EQ(outcome.results.again, m_resultAgain);
        else
            EXPECT_TRUE(isDocumented(operation, outcome.results.again)) << outcome.results.again;
    }

    /// Fails each call in turn that is made when nothing fails.
    void sweep(const std::string& function, unsigned calls, unsigned howMany)
    {
        for (Fault fault{function, 1, howMany}; fault.call <= calls; ++fault.call)
        {
            SCOPED_TRACE(function + ", call " + std::to_string(fault.call) +
                         (howMany == 1 ? "" : " and all later ones"));
            Outcome outcome = run(&fault);
            // What a process makes once, at the first failure of its kind, it does not make a second time.
            if (outcome.blocksKept != 0)
                outcome = run(&fault);
            EXPECT_EQ(outcome.blocksKept, 0U) << "heap blocks are left";
            // How many reads a body takes is the network's affair.
            const bool hasFailed = outcome.calls.at(function) >= fault.call;
            m_points += hasFailed ? 1 : 0;
            if (hasFailed && isVital(function))
            {
                EXPECT_NE(outcome.results.first, GetParam().good);
            }
        }
    }

    void sweep(bool isOfMemory)
    {
        const Outcome good = run(nullptr);
        for (const auto& [function, calls] : good.calls)
        {
            if (allocates(function) == isOfMemory)
            {
                sweep(function, calls, 1);
                sweep(function, calls, fromThenOn);
            }
        }
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        fault::reportSweep(test->test_suite_name(), isOfMemory ? "allocations" : "system calls", m_points);
    }

    bool isVital(std::string_view function) const
    {
        return canNotEndWell(function) && needsTheServer(GetParam().name) &&
               !(GetParam().readsForTheLog && function == "WinHttpReadData");
    }

    void SetUp() override
    {
        support::writeFile(m_folder.path() / "a.txt", "hello");
        m_calls.emplace();
        run(nullptr); // what a process makes once is made now
    }

    /// Every line about a failure, of all runs.
    std::set<std::string> m_failures;

private:
    Counts counts() const
    {
        Counts all;
        for (const std::string& function : m_calls->functions())
            all.emplace(function, m_calls->calls(function));
        return all;
    }

    support::TempFolder m_folder;
    operations::Rooms m_rooms;
    std::optional<support::SystemCalls> m_calls; ///< for all runs: to stand before every function takes long
    int m_resultAgain = 0;
    std::vector<std::string> m_lastFailures;
    std::string m_handedOut; ///< rooms, numbers, records and the downloaded file
    std::string m_handedOutWell;
    unsigned m_points = 0;
};

TEST_P(FaultSweep, NothingFailsWithoutAFault)
{
    const Outcome outcome = run(nullptr);
    EXPECT_EQ(outcome.results.first, GetParam().good);
    EXPECT_EQ(outcome.results.again, GetParam().good);
    EXPECT_EQ(outcome.blocksKept, 0U);
    EXPECT_EQ(support::heapUse().unguarded, 0U);
}

TEST_P(FaultSweep, EachSystemCall)
{
    sweep(false);
}

TEST_P(FaultSweep, EachAllocation)
{
    sweep(true);
    EXPECT_TRUE(GetParam().lineWithoutMemory.empty() || m_failures.contains(GetParam().lineWithoutMemory));
}

std::string nameOf(const testing::TestParamInfo<Operation>& parameter)
{
    return parameter.param.name;
}

INSTANTIATE_TEST_SUITE_P(NetDisk, FaultSweep, testing::ValuesIn(operations::netDiskOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(FileStorage, FaultSweep, testing::ValuesIn(operations::storageOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(FileStorage2, FaultSweep, testing::ValuesIn(operations::storage2Operations()), nameOf);
INSTANTIATE_TEST_SUITE_P(FileStorage3, FaultSweep, testing::ValuesIn(operations::storage3Operations()), nameOf);
INSTANTIATE_TEST_SUITE_P(OnlineUserSearch, FaultSweep, testing::ValuesIn(operations::searchOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Compressed, FaultSweep, testing::ValuesIn(operations::compressedOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Refused, FaultSweep, testing::ValuesIn(operations::refusedOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Expired, FaultSweep, testing::ValuesIn(operations::expiredOperations()), nameOf);

} // namespace
