#include "Resources.h"

#include "LockCounter.h"

#include <windows.h>
// Both need windows.h.
#include <psapi.h>
#include <tlhelp32.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace quorvex::soak
{

namespace
{

// The main thread and the host library's event thread.
constexpr std::uint32_t kOwnThreads = 2;
// Idle threads of a system's pool leave within seconds.
constexpr std::chrono::seconds kPatience{60};

class Snapshot
{
public:
    Snapshot() : m_handle(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0)) {}
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot() { ::CloseHandle(m_handle); }

    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

std::uint32_t CountThreads()
{
    const Snapshot snapshot;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::uint32_t count = 0;
    for (BOOL more = ::Thread32First(snapshot.Get(), &entry); more != FALSE;
         more = ::Thread32Next(snapshot.Get(), &entry))
    {
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    }
    return count;
}

// As the system lays them out, for where it does not count a process's handles itself.
struct SystemHandle
{
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creator;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct SystemHandles
{
    ULONG_PTR count;
    ULONG_PTR reserved;
    SystemHandle first;
};

std::uint32_t CountListedHandles()
{
    using Query = LONG(NTAPI*)(int, void*, ULONG, ULONG*);
    constexpr int extendedHandles = 64;
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<char> room(1U << 22);
    ULONG length = 0;
    if (query(extendedHandles, room.data(), static_cast<ULONG>(room.size()), &length) < 0)
    {
        throw std::runtime_error("the system does not list its handles");
    }
    const auto* const list = reinterpret_cast<const SystemHandles*>(room.data());
    std::uint32_t count = 0;
    for (ULONG_PTR i = 0; i < list->count; ++i)
    {
        count += (&list->first)[i].process == ::GetCurrentProcessId() ? 1 : 0;
    }
    return count;
}

std::uint32_t CountHandles()
{
    DWORD count = 0;
    return ::GetProcessHandleCount(::GetCurrentProcess(), &count) != FALSE && count != 0 ? count : CountListedHandles();
}

std::uint64_t CommittedMemory()
{
    std::uint64_t committed = 0;
    MEMORY_BASIC_INFORMATION region;
    for (const char* at = nullptr; ::VirtualQuery(at, &region, sizeof region) != 0;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize)
    {
        committed += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
    }
    return committed;
}

std::uint64_t ResidentMemory()
{
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

void CountHeapBlocks(Resources& resources)
{
    std::array<HANDLE, 64> heaps{};
    const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    for (DWORD i = 0; i < count && i < heaps.size(); ++i)
    {
        ::HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry{};
        while (::HeapWalk(heaps[i], &entry) != FALSE)
        {
            const bool isBusy = (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
            resources.heapBlocks += isBusy ? 1 : 0;
            resources.heapBytes += isBusy ? entry.cbData : 0;
        }
        ::HeapUnlock(heaps[i]);
    }
}

void WaitForRest()
{
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock lock(mutex);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (CountThreads() > kOwnThreads && std::chrono::steady_clock::now() < end)
    {
        // Nobody tells when the system's threads end.
        never.wait_for(lock, std::chrono::milliseconds(100));
    }
}

std::string Row(const char* name, std::uint64_t first, std::uint64_t last)
{
    const auto difference = static_cast<std::int64_t>(last) - static_cast<std::int64_t>(first);
    return std::string("\n| ") + name + " | " + std::to_string(first) + " | " + std::to_string(last) + " | " +
           std::to_string(difference) + " |";
}

} // namespace

Resources MeasureAtRest()
{
    WaitForRest();
    Resources resources;
    resources.blocks = BlocksNow();
    resources.threads = CountThreads();
    resources.lockHandles = LockHandlesNow();
    resources.handles = CountHandles() - resources.lockHandles;
    CountHeapBlocks(resources);
    resources.committed = CommittedMemory();
    resources.resident = ResidentMemory();
    return resources;
}

std::string TableOf(const Resources& first, const Resources& last, const std::string& firstTitle)
{
    return "\n| at rest, all clients closed | " + firstTitle + " | at the end | difference |\n|---|---:|---:|---:|" +
           Row("handles", first.handles, last.handles) +
           Row("further handles, of locks of the compiler's thread library", first.lockHandles, last.lockHandles) +
           Row("threads", first.threads, last.threads) +
           Row("heap blocks of module, host library and worker", static_cast<std::uint64_t>(first.blocks.count),
               static_cast<std::uint64_t>(last.blocks.count)) +
           Row("their bytes", static_cast<std::uint64_t>(first.blocks.bytes),
               static_cast<std::uint64_t>(last.blocks.bytes)) +
           Row("blocks in all heaps", first.heapBlocks, last.heapBlocks) +
           Row("their bytes", first.heapBytes, last.heapBytes) +
           Row("private memory, resident (bytes)", first.resident, last.resident) +
           Row("private memory, committed (bytes)", first.committed, last.committed);
}

} // namespace quorvex::soak
