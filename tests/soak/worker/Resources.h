#pragma once

#include "BlockCounter.h"

#include <cstdint>
#include <string>

namespace quorvex::soak
{

/// What this process holds of the system.
struct Resources
{
    std::uint32_t threads = 0;
    std::uint32_t handles = 0;     ///< without the next
    std::uint32_t lockHandles = 0; ///< those of the compiler's thread library
    std::uint64_t committed = 0;   ///< private memory that is committed, in bytes
    std::uint64_t resident = 0;    ///< what of it has a page behind it
    std::uint64_t heapBlocks = 0;  ///< blocks in use in all heaps, the system's own included
    std::uint64_t heapBytes = 0;
    Blocks blocks;
};

/// Waits until the system's own threads, which it keeps for a while after their last work, have gone, and measures.
Resources MeasureAtRest();

std::string TableOf(const Resources& first, const Resources& last, const std::string& firstTitle);

} // namespace quorvex::soak
