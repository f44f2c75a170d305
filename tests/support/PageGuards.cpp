#include "support/PageGuards.h"

#include "support/ImportTable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <new>
#include <stdexcept>
#include <vector>

#include <malloc.h>

namespace support
{
namespace
{

constexpr std::size_t pageSize = 4096;
constexpr std::size_t alignment = 2 * sizeof(void*); // what malloc promises
/// As much address space as a 32-bit program can spare beside its own heap.
constexpr std::size_t regionSize = sizeof(void*) == 8 ? std::size_t{16} << 30U : std::size_t{512} << 20U;
constexpr std::size_t pageCount = regionSize / pageSize;
constexpr std::size_t mostWatched = 64; ///< bytes that are looked at on the free side of a block
constexpr unsigned char untouched = 0xA5;
constexpr std::size_t quarantine = 64; ///< freed blocks of one size that stay protected before one is used again

constexpr std::size_t pagesFor(std::size_t bytes)
{
    return (bytes + pageSize - 1) / pageSize;
}

/// In a 32-bit program beyond the first 2 GiB, where a host's memory may be, too: no pointer is a signed number.
unsigned char* reserveRegion()
{
    void* region = nullptr;
    if constexpr (sizeof(void*) == 4)
    {
        constexpr std::uintptr_t step = 16U << 20U;
        for (std::uintptr_t at = 0x80000000U; region == nullptr && at <= 0xFFFFFFFFU - regionSize; at += step)
            region = VirtualAlloc(reinterpret_cast<void*>(at), regionSize, MEM_RESERVE, PAGE_NOACCESS);
    }
    if (region == nullptr)
        region = VirtualAlloc(nullptr, regionSize, MEM_RESERVE, PAGE_NOACCESS);
    return static_cast<unsigned char*>(region);
}

[[noreturn]] void endProgram(const char* defect)
{
    std::fprintf(stderr, "page guards: %s\n", defect);
    std::fflush(stderr);
    std::_Exit(3);
}

/// What malloc promises, in pages of a region of its own. A block's pages are followed by one that nobody may touch.
class GuardedHeap
{
public:
    GuardedHeap()
        : m_region(reserveRegion()),
          m_sizes(static_cast<std::size_t*>(
              VirtualAlloc(nullptr, pageCount * sizeof(std::size_t), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
    {
        if (m_region == nullptr || m_sizes == nullptr)
            throw std::bad_alloc();
        InitializeCriticalSection(&m_lock);
    }
    ~GuardedHeap() = delete;
    GuardedHeap(const GuardedHeap&) = delete;
    GuardedHeap& operator=(const GuardedHeap&) = delete;

    bool owns(const void* block) const
    {
        const auto at = reinterpret_cast<std::uintptr_t>(block);
        const auto begin = reinterpret_cast<std::uintptr_t>(m_region);
        return at >= begin && at - begin < regionSize;
    }

    /// @return null when the region has no room left
    void* allocate(std::size_t bytes)
    {
        const Lock lock(m_lock);
        const std::size_t room = std::max((bytes + alignment - 1) / alignment * alignment, alignment);
        if (room < bytes || room > regionSize)
            return nullptr;
        const std::size_t pages = pagesFor(room);
        unsigned char* const first = takePages(pages);
        if (first == nullptr || VirtualAlloc(first, pages * pageSize, MEM_COMMIT, PAGE_READWRITE) == nullptr)
        {
            ++m_use.unguarded;
            return nullptr;
        }
        unsigned char* const block = first + pages * pageSize - room;
        std::memset(block - watchedBefore(block), untouched, watchedBefore(block));
        std::memset(block + bytes, untouched, room - bytes);
        sizeOf(block) = bytes;
        ++m_use.blocks;
        m_use.bytes += bytes;
        m_use.peakBytes = std::max(m_use.peakBytes, m_use.bytes);
        return block;
    }

    void release(void* freed)
    {
        const Lock lock(m_lock);
        auto* const block = static_cast<unsigned char*>(freed);
        const std::size_t bytes = size(block);
        const std::size_t room = std::max((bytes + alignment - 1) / alignment * alignment, alignment);
        unsigned char* const first = pageOf(block);
        if (first + pagesFor(room) * pageSize - room != block)
            endProgram("what is freed is no block");
        if (!isUntouched(block - watchedBefore(block), watchedBefore(block)))
            endProgram("bytes before a block were written");
        if (!isUntouched(block + bytes, room - bytes))
            endProgram("bytes behind a block were written");
        if (VirtualFree(first, pagesFor(room) * pageSize, MEM_DECOMMIT) == FALSE)
            endProgram("a block cannot be protected");
        sizeOf(block) = isFree;
        --m_use.blocks;
        m_use.bytes -= bytes;
        keepPages(first, pagesFor(room));
    }

    std::size_t size(const void* block)
    {
        const std::size_t bytes = sizeOf(block);
        if (bytes == isFree)
            endProgram("a block is freed twice");
        return bytes;
    }

    HeapUse use()
    {
        const Lock lock(m_lock);
        return m_use;
    }

    void resetPeak()
    {
        const Lock lock(m_lock);
        m_use.peakBytes = m_use.bytes;
    }

private:
    class Lock
    {
    public:
        explicit Lock(CRITICAL_SECTION& section) : m_section(section) { EnterCriticalSection(&m_section); }
        ~Lock() { LeaveCriticalSection(&m_section); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        CRITICAL_SECTION& m_section;
    };

    static constexpr std::size_t isFree = static_cast<std::size_t>(-1);

    unsigned char* pageOf(unsigned char* block) const
    {
        return block - static_cast<std::size_t>(block - m_region) % pageSize;
    }

    std::size_t& sizeOf(const void* block)
    {
        return m_sizes[static_cast<std::size_t>(static_cast<const unsigned char*>(block) - m_region) / pageSize];
    }

    std::size_t watchedBefore(unsigned char* block) const
    {
        return std::min(static_cast<std::size_t>(block - pageOf(block)), mostWatched);
    }

    static bool isUntouched(const unsigned char* bytes, std::size_t count)
    {
        return std::all_of(bytes, bytes + count, [](unsigned char byte) { return byte == untouched; });
    }

    unsigned char* takePages(std::size_t pages)
    {
        std::deque<unsigned char*>& freed = freedOf(pages);
        const bool isRoomLeft = m_taken + pages + 1 <= pageCount;
        if (freed.size() > (isRoomLeft ? quarantine : 0))
        {
            unsigned char* const first = freed.front();
            freed.pop_front();
            return first;
        }
        if (!isRoomLeft)
            return nullptr;
        unsigned char* const first = m_region + m_taken * pageSize;
        m_taken += pages + 1;
        return first;
    }

    void keepPages(unsigned char* first, std::size_t pages) { freedOf(pages).push_back(first); }

    std::deque<unsigned char*>& freedOf(std::size_t pages)
    {
        if (m_freed.size() <= pages)
            m_freed.resize(pages + 1);
        return m_freed[pages];
    }

    unsigned char* m_region;
    std::size_t* m_sizes; ///< of the block that begins in a page
    std::size_t m_taken = 0;
    std::vector<std::deque<unsigned char*>> m_freed; ///< by their number of pages
    HeapUse m_use;
    CRITICAL_SECTION m_lock{};
};

/// Never destroyed: the module frees blocks after this program's last destructor.
GuardedHeap& heap()
{
    static auto* const only = new GuardedHeap;
    return *only;
}

decltype(&std::malloc) plainMalloc;
decltype(&std::realloc) plainRealloc;
decltype(&std::free) plainFree;
decltype(&_msize) plainMsize;

void* __cdecl guardedMalloc(std::size_t bytes)
{
    void* const block = heap().allocate(bytes);
    return block != nullptr ? block : plainMalloc(bytes);
}

void* __cdecl guardedCalloc(std::size_t count, std::size_t each)
{
    if (each != 0 && count > static_cast<std::size_t>(-1) / each)
        return nullptr;
    void* const block = guardedMalloc(count * each);
    return block == nullptr ? nullptr : std::memset(block, 0, count * each);
}

void __cdecl guardedFree(void* block)
{
    if (heap().owns(block))
        heap().release(block);
    else
        plainFree(block);
}

void* __cdecl guardedRealloc(void* block, std::size_t bytes)
{
    if (block != nullptr && !heap().owns(block))
        return plainRealloc(block, bytes);
    void* const moved = guardedMalloc(bytes);
    if (block == nullptr || moved == nullptr)
        return moved;
    std::memcpy(moved, block, std::min(bytes, heap().size(block)));
    heap().release(block);
    return moved;
}

std::size_t __cdecl guardedMsize(void* block)
{
    return heap().owns(block) ? heap().size(block) : plainMsize(block);
}

/// For good.
void redirect(HMODULE module, const char* function, void* replacement)
{
    if (void** const entry = ImportTable(module).entry(function); entry != nullptr)
        new ImportPatch(entry, replacement);
}

} // namespace

void guardHeap()
{
    if (plainMalloc != nullptr)
        return;
    const HMODULE module = GetModuleHandleW(L"quorvex.dll");
    void** const entry = module == nullptr ? nullptr : ImportTable(module).entry("malloc");
    if (entry == nullptr)
        throw std::invalid_argument("the module is not loaded");
    heap();
    plainMalloc = reinterpret_cast<decltype(&std::malloc)>(*entry);
    plainRealloc = reinterpret_cast<decltype(&std::realloc)>(*ImportTable(module).entry("realloc"));
    plainFree = reinterpret_cast<decltype(&std::free)>(*ImportTable(module).entry("free"));
    plainMsize = reinterpret_cast<decltype(&_msize)>(*ImportTable(module).entry("_msize"));
    for (const HMODULE each : {GetModuleHandleW(nullptr), module})
    {
        redirect(each, "free", reinterpret_cast<void*>(&guardedFree));
        redirect(each, "realloc", reinterpret_cast<void*>(&guardedRealloc));
    }
    redirect(module, "malloc", reinterpret_cast<void*>(&guardedMalloc));
    redirect(module, "calloc", reinterpret_cast<void*>(&guardedCalloc));
    redirect(module, "_msize", reinterpret_cast<void*>(&guardedMsize));
}

HeapUse heapUse()
{
    return heap().use();
}

void resetHeapPeak()
{
    heap().resetPeak();
}

namespace detail
{

void* newPagesBefore(std::size_t bytes)
{
    const std::size_t pages = pagesFor(std::max<std::size_t>(bytes, 1));
    auto* const before =
        static_cast<unsigned char*>(VirtualAlloc(nullptr, (pages + 2) * pageSize, MEM_RESERVE, PAGE_NOACCESS));
    if (before == nullptr || VirtualAlloc(before + pageSize, pages * pageSize, MEM_COMMIT, PAGE_READWRITE) == nullptr)
        throw std::bad_alloc();
    return before + (pages + 1) * pageSize - bytes;
}

void deletePages(void* object, std::size_t bytes) noexcept
{
    const std::size_t pages = pagesFor(std::max<std::size_t>(bytes, 1));
    VirtualFree(static_cast<unsigned char*>(object) + bytes - (pages + 1) * pageSize, 0, MEM_RELEASE);
}

} // namespace detail

} // namespace support
