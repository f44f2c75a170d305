// A thread of the host's that finds no memory at all when it first comes into the module.

#include "support/LogCapture.h"
#include "support/SystemCalls.h"

#include <quorvex/NetDisk.h>

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <limits>
#include <thread>
#include <vector>

namespace
{

using quorvex::netdisk::CNetDisk;

class WithoutMemory : public testing::Test
{
protected:
    /// Runs something on a thread that has never been in the module, while every allocation of the module fails.
    void onNewThread(const std::function<void()>& action)
    {
        std::thread([&] {
            m_calls.fail("malloc", 1, ERROR_NOT_ENOUGH_MEMORY, std::numeric_limits<unsigned>::max());
            action();
            m_calls.fail("malloc", 1, NO_ERROR, 0);
        }).join();
    }

    support::SystemCalls m_calls;
};

TEST_F(WithoutMemory, AnOperationGivesOne)
{
    CNetDisk disk(L"http://127.0.0.1:1/object", nullptr);
    int result = 0;
    onNewThread([&] { result = disk.UserLogin(L"u", L"p"); });
    EXPECT_EQ(result, 1);
}

TEST_F(WithoutMemory, AClientHasNoConnection)
{
    int result = 0;
    onNewThread([&] {
        const CNetDisk disk(L"http://127.0.0.1:1/object", nullptr);
        m_calls.fail("malloc", 1, NO_ERROR, 0);
        result = disk.FolderDel(L"F");
    });
    EXPECT_EQ(result, -100);
}

TEST_F(WithoutMemory, ManyThreadsAtOnceGetOne)
{
    constexpr int threadCount = 40;
    CNetDisk disk(L"http://127.0.0.1:1/object", nullptr);
    constexpr auto forGood = std::numeric_limits<unsigned>::max();
    for (const char* const function : {"malloc", "calloc", "realloc"})
        m_calls.fail(function, 1, ERROR_NOT_ENOUGH_MEMORY, forGood);
    std::vector<int> results(threadCount);
    std::vector<std::thread> threads;
    std::latch allAreDone(threadCount); // until then each keeps what the runtime has given it
    for (int& result : results)
        threads.emplace_back([&] {
            result = disk.UserLogin(L"u", L"p");
            allAreDone.arrive_and_wait();
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const char* const function : {"malloc", "calloc", "realloc"})
        m_calls.fail(function, 1, NO_ERROR, 0);
    EXPECT_EQ(results, std::vector<int>(threadCount, 1));
}

TEST_F(WithoutMemory, RecordVectorsAreNull)
{
    onNewThread([] {
        EXPECT_EQ(CNetDisk::NewFileInfoVector(), nullptr);
        EXPECT_EQ(CNetDisk::NewFolderInfoVector(), nullptr);
        EXPECT_EQ(CNetDisk::NewPcodeInfoVector(), nullptr);
        EXPECT_EQ(CNetDisk::NewRItemInfoVector(), nullptr);
    });
}

} // namespace

TEST(RecordVectors, AreNullWhenOneAllocationFails)
{
    support::SystemCalls calls;
    const auto withoutMemory = [&](auto make) {
        calls.fail("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);
        return make();
    };
    EXPECT_EQ(withoutMemory(&CNetDisk::NewFileInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewFolderInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewPcodeInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewRItemInfoVector), nullptr);
}
