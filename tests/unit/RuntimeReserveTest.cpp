// The blocks that are set aside for the runtime's exceptions. This program stands in for the system's memory.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace
{

bool isMemoryLeft = true;
int released = 0; ///< blocks of the system's

} // namespace

extern "C"
{
    void* __wrap_malloc(std::size_t size);
    void* __wrap_calloc(std::size_t count, std::size_t size);
    void* __wrap_realloc(void* block, std::size_t size);
    void __wrap_free(void* block);

    void* __real_malloc(std::size_t size)
    {
        return isMemoryLeft ? std::malloc(size) : nullptr;
    }
    void* __real_calloc(std::size_t count, std::size_t size)
    {
        return isMemoryLeft ? std::calloc(count, size) : nullptr;
    }
    void* __real_realloc(void* block, std::size_t size)
    {
        return isMemoryLeft ? std::realloc(block, size) : nullptr;
    }
    void __real_free(void* block)
    {
        ++released;
        std::free(block);
    }
}

namespace
{

constexpr std::size_t blockSize = 1024;
constexpr std::size_t blockCount = 256;

/// The test library needs memory of its own: what is asked without any is asked here.
template <typename Action>
auto withoutMemory(Action action)
{
    isMemoryLeft = false;
    const auto result = action();
    isMemoryLeft = true;
    return result;
}

void* mallocWithoutMemory(std::size_t size)
{
    return withoutMemory([=] { return __wrap_malloc(size); });
}

void* callocWithoutMemory(std::size_t count, std::size_t size)
{
    return withoutMemory([=] { return __wrap_calloc(count, size); });
}

void* reallocWithoutMemory(void* block, std::size_t size)
{
    return withoutMemory([=] { return __wrap_realloc(block, size); });
}

TEST(RuntimeReserve, IsNotTouchedWhileThereIsMemory)
{
    void* const block = __wrap_malloc(8);
    void* const cleared = __wrap_calloc(2, 4);
    const int before = released;
    __wrap_free(block);
    __wrap_free(cleared);
    EXPECT_EQ(released, before + 2);
}

TEST(RuntimeReserve, GivesSmallBlocksWithoutMemory)
{
    void* const block = mallocWithoutMemory(blockSize);
    ASSERT_NE(block, nullptr);
    std::memset(block, 1, blockSize); // the last byte is ours, too
    const int before = released;
    __wrap_free(block);
    void* const cleared = callocWithoutMemory(4, blockSize / 4);
    EXPECT_EQ(cleared, block);
    for (std::size_t at = 0; at < blockSize; ++at)
        ASSERT_EQ(static_cast<const char*>(cleared)[at], 0) << at;
    __wrap_free(cleared);
    EXPECT_EQ(released, before);
}

TEST(RuntimeReserve, GivesNoLargeOnes)
{
    EXPECT_EQ(mallocWithoutMemory(blockSize + 1), nullptr);
    EXPECT_EQ(callocWithoutMemory(2, blockSize / 2 + 1), nullptr);
    EXPECT_EQ(callocWithoutMemory(static_cast<std::size_t>(-1) / 2, 4), nullptr);
    EXPECT_EQ(callocWithoutMemory(1, 0), nullptr);
    EXPECT_EQ(reallocWithoutMemory(nullptr, blockSize + 1), nullptr);
}

TEST(RuntimeReserve, EndsAndIsUsedAgain)
{
    void* blocks[blockCount];
    for (void*& block : blocks)
    {
        block = mallocWithoutMemory(1);
        EXPECT_NE(block, nullptr);
    }
    EXPECT_EQ(mallocWithoutMemory(1), nullptr);
    EXPECT_EQ(callocWithoutMemory(1, 1), nullptr);
    __wrap_free(blocks[5]);
    EXPECT_EQ(mallocWithoutMemory(1), blocks[5]);
    for (void* const block : blocks)
        __wrap_free(block);
}

TEST(RuntimeReserve, IsLeftByABlockThatGrows)
{
    auto* const block = static_cast<char*>(reallocWithoutMemory(nullptr, 4));
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "abc", 4);
    EXPECT_EQ(reallocWithoutMemory(block, blockSize + 1), nullptr);
    EXPECT_STREQ(block, "abc");
    auto* const moved = static_cast<char*>(__wrap_realloc(block, 2 * blockSize));
    EXPECT_STREQ(moved, "abc");
    EXPECT_EQ(mallocWithoutMemory(1), block);
    __wrap_free(block);
    EXPECT_EQ(reallocWithoutMemory(moved, 4 * blockSize), nullptr); // stays as it was
    auto* const grown = static_cast<char*>(__wrap_realloc(moved, 4 * blockSize));
    EXPECT_STREQ(grown, "abc");
    const int before = released;
    __wrap_free(grown);
    EXPECT_EQ(released, before + 1);
}

TEST(RuntimeReserve, IsEnteredByABlockThatCannotGrowElsewhere)
{
    auto* const block = static_cast<char*>(__wrap_malloc(4));
    std::memcpy(block, "abc", 4);
    const int before = released;
    auto* const moved = static_cast<char*>(reallocWithoutMemory(block, blockSize));
    EXPECT_STREQ(moved, "abc");
    EXPECT_EQ(released, before + 1);
    __wrap_free(moved);
    EXPECT_EQ(released, before + 1);
}

TEST(RuntimeReserve, HasNoPartInReleasing)
{
    void* const block = __wrap_malloc(4);
    EXPECT_EQ(__wrap_realloc(block, 0), nullptr);
    void* const reserved = mallocWithoutMemory(1);
    EXPECT_NE(reserved, nullptr);
    __wrap_free(reserved);
    EXPECT_EQ(mallocWithoutMemory(1), reserved);
    __wrap_free(reserved);
}

TEST(RuntimeReserve, IsNotForObjects)
{
    EXPECT_TRUE(withoutMemory([] {
        try
        {
            ::operator delete(::operator new(1));
            return false;
        }
        catch (const std::bad_alloc&)
        {
            return true;
        }
    }));
}

} // namespace
