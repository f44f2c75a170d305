// Exceptions without memory. The compiler's runtime takes small blocks for them: the exception itself, a thread's list
// of exceptions when it throws its first one, the locks around both. Where it finds none it ends the process, or
// throws for want of a lock until the stack is full. So it gets blocks that were set aside when the module has none.
//
// Only for this compiler's statically linked runtime; the linker sends its calls here (--wrap).

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

#include <malloc.h>

extern "C"
{
    void* __real_malloc(std::size_t size);
    void* __real_calloc(std::size_t count, std::size_t size);
    void* __real_realloc(void* block, std::size_t size);
    void __real_free(void* block);
}

namespace
{

/// Some five of them are a thread's, for as long as it lives, when it throws its first exception without memory.
struct alignas(std::max_align_t) ReserveBlock
{
    std::byte bytes[1024];
};

std::array<ReserveBlock, 256> reserve;
std::array<std::atomic_flag, reserve.size()> isTaken;

void* TakeBlock(std::size_t size)
{
    if (size > sizeof(ReserveBlock))
    {
        return nullptr;
    }
    const auto free = std::find_if(isTaken.begin(), isTaken.end(), [](auto& flag) { return !flag.test_and_set(); });
    return free == isTaken.end() ? nullptr : &reserve[static_cast<std::size_t>(free - isTaken.begin())];
}

bool IsReserved(const void* block)
{
    const auto* const bytes = static_cast<const ReserveBlock*>(block);
    return std::greater_equal<>()(bytes, reserve.data()) && std::less<>()(bytes, reserve.data() + reserve.size());
}

void GiveBack(const void* block)
{
    isTaken[static_cast<std::size_t>(static_cast<const ReserveBlock*>(block) - reserve.data())].clear();
}

} // namespace

extern "C"
{
    void* __wrap_malloc(std::size_t size)
    {
        void* const block = __real_malloc(size);
        return block != nullptr ? block : TakeBlock(size);
    }

    void* __wrap_calloc(std::size_t count, std::size_t size)
    {
        void* const block = __real_calloc(count, size);
        if (block != nullptr || size == 0 || count > sizeof(ReserveBlock) / size)
        {
            return block;
        }
        void* const reserved = TakeBlock(count * size);
        return reserved == nullptr ? nullptr : std::memset(reserved, 0, count * size);
    }

    void __wrap_free(void* block)
    {
        if (IsReserved(block))
        {
            GiveBack(block);
            return;
        }
        __real_free(block);
    }

    void* __wrap_realloc(void* block, std::size_t size)
    {
        if (block == nullptr)
        {
            return __wrap_malloc(size);
        }
        const bool isReserved = IsReserved(block);
        if (!isReserved)
        {
            void* const grown = __real_realloc(block, size);
            // Without a size it was to be released, and has been.
            if (grown != nullptr || size == 0)
            {
                return grown;
            }
        }
        void* const moved = isReserved ? __wrap_malloc(size) : TakeBlock(size);
        if (moved != nullptr)
        {
            const std::size_t held = isReserved ? sizeof(ReserveBlock) : _msize(block);
            std::memcpy(moved, block, std::min(size, held));
            __wrap_free(block);
        }
        return moved;
    }
}

// The module's own objects never come out of the reserve; texts of the JSON library may.

void* operator new(std::size_t size)
{
    void* const block = __real_malloc(std::max<std::size_t>(size, 1));
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept
{
    __real_free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    __real_free(block);
}
