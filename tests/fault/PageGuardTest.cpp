// That the guards stand where the sweep and the hostile server rely on them.

#include "support/PageGuards.h"

#include <quorvex/NetDisk.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace
{

using quorvex::netdisk::CNetDisk;

constexpr std::uintptr_t pageSize = 4096;

bool isAccessible(const void* address)
{
    MEMORY_BASIC_INFORMATION page{};
    return VirtualQuery(address, &page, sizeof page) != 0 && page.State == MEM_COMMIT &&
           (page.Protect & PAGE_NOACCESS) == 0;
}

TEST(PageGuards, StandRightBehindARoom)
{
    const support::AtPageEnd<wchar_t> room(20);
    EXPECT_TRUE(isAccessible(room.get()));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(room.get() + room.size()) % pageSize, 0U);
    EXPECT_FALSE(isAccessible(room.get() + room.size()));
    EXPECT_FALSE(isAccessible(reinterpret_cast<const char*>(room.get()) - pageSize));
    EXPECT_EQ(room[0], L'\0');
    EXPECT_EQ(room[19], L'\0');
}

TEST(PageGuards, StandRightBehindALargeRoom)
{
    const support::AtPageEnd<char> room(3 * pageSize);
    EXPECT_TRUE(isAccessible(room.get()));
    EXPECT_TRUE(isAccessible(room.get() + 3 * pageSize - 1));
    EXPECT_FALSE(isAccessible(room.get() + 3 * pageSize));
    EXPECT_FALSE(isAccessible(room.get() - 1));
}

#if !defined(_WIN64)
TEST(PageGuards, StandInTheUpperHalfOfTheAddressSpace)
{
    support::guardHeap();
    auto* vector = CNetDisk::NewFileInfoVector();
    EXPECT_GE(reinterpret_cast<std::uintptr_t>(vector), 0x80000000U);
    CNetDisk::DeleteFileInfoVector(vector);
}
#endif

TEST(PageGuards, StandBehindTheModulesBlocksAndOnFreedOnes)
{
    support::guardHeap();
    // What the runtime keeps for a thread comes with the first one.
    CNetDisk::DeleteFileInfoVector(CNetDisk::NewFileInfoVector());
    const support::HeapUse before = support::heapUse();
    auto* vector = CNetDisk::NewFileInfoVector();
    ASSERT_NE(vector, nullptr);
    EXPECT_EQ(support::heapUse().blocks, before.blocks + 1);
    EXPECT_EQ(support::heapUse().bytes, before.bytes + sizeof *vector);
    const auto at = reinterpret_cast<std::uintptr_t>(vector);
    const auto nextPage = reinterpret_cast<const void*>((at + pageSize) / pageSize * pageSize);
    EXPECT_LE(at + sizeof *vector, reinterpret_cast<std::uintptr_t>(nextPage));
    EXPECT_GT(at + sizeof *vector + 2 * sizeof(void*), reinterpret_cast<std::uintptr_t>(nextPage));
    EXPECT_FALSE(isAccessible(nextPage));
    CNetDisk::DeleteFileInfoVector(vector);
    EXPECT_FALSE(isAccessible(reinterpret_cast<const void*>(at)));
    EXPECT_EQ(support::heapUse().blocks, before.blocks);
    EXPECT_GE(support::heapUse().peakBytes, before.bytes + sizeof *vector);
    support::resetHeapPeak();
    EXPECT_EQ(support::heapUse().peakBytes, support::heapUse().bytes);
}

} // namespace
