#include "BlockCounter.h"

#include "Imports.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace quorvex::soak
{

namespace
{

std::atomic<std::int64_t> count = 0;
std::atomic<std::int64_t> bytes = 0;

// The C library's own, reached past the import tables that are changed.
using Malloc = void*(__cdecl*)(std::size_t);
using Calloc = void*(__cdecl*)(std::size_t, std::size_t);
using Realloc = void*(__cdecl*)(void*, std::size_t);
using Free = void(__cdecl*)(void*);
using Size = std::size_t(__cdecl*)(void*);
Malloc originalMalloc;
Calloc originalCalloc;
Realloc originalRealloc;
Free originalFree;
Size originalSize;

void* Entered(void* block)
{
    if (block != nullptr)
    {
        ++count;
        bytes += static_cast<std::int64_t>(originalSize(block));
    }
    return block;
}

void Leave(void* block)
{
    if (block != nullptr)
    {
        --count;
        bytes -= static_cast<std::int64_t>(originalSize(block));
    }
}

void* __cdecl CountingMalloc(std::size_t size)
{
    return Entered(originalMalloc(size));
}

void* __cdecl CountingCalloc(std::size_t number, std::size_t size)
{
    return Entered(originalCalloc(number, size));
}

void* __cdecl CountingRealloc(void* block, std::size_t size)
{
    const auto before = block != nullptr ? static_cast<std::int64_t>(originalSize(block)) : 0;
    void* const moved = originalRealloc(block, size);
    if (moved != nullptr || size == 0)
    {
        count -= block != nullptr ? 1 : 0;
        bytes -= before;
        Entered(moved);
    }
    return moved;
}

char* __cdecl CountingStrdup(const char* text)
{
    const std::size_t size = std::strlen(text) + 1;
    void* const copy = CountingMalloc(size);
    return static_cast<char*>(copy != nullptr ? std::memcpy(copy, text, size) : nullptr);
}

void __cdecl CountingFree(void* block)
{
    Leave(block);
    originalFree(block);
}

} // namespace

void CountBlocks()
{
    constexpr const wchar_t* library = L"msvcrt.dll";
    originalSize = reinterpret_cast<Size>(FindFunction(library, "_msize"));
    Replace(library, "malloc", originalMalloc, CountingMalloc);
    Replace(library, "calloc", originalCalloc, CountingCalloc);
    Replace(library, "realloc", originalRealloc, CountingRealloc);
    Replace(library, "free", originalFree, CountingFree);
    ReplaceImport("_strdup", reinterpret_cast<void*>(CountingStrdup));
}

Blocks BlocksNow()
{
    return {count, bytes};
}

} // namespace quorvex::soak
