#pragma once

#include <cstdint>

namespace quorvex::services
{

// What an account may hold in one service, and what it holds.
struct Capacity
{
    std::uint64_t total = 0;
    std::uint64_t used = 0;
    std::uint64_t maxFileSize = 0;

    std::uint64_t Free() const { return used < total ? total - used : 0; }

    // Ends the request when a file of this size does not fit.
    void RequireRoom(std::uint64_t size) const;
};

} // namespace quorvex::services
