#pragma once

#include <cstdint>

namespace quorvex::soak
{

/// The heap blocks that the module, the host library and this program hold, by counting at their calls of the C
/// library: exact, where the system's own figures are not.
struct Blocks
{
    std::int64_t count = 0;
    std::int64_t bytes = 0;
};

/// Begins to count. What was there before does not count, which makes no difference to a difference.
void CountBlocks();

Blocks BlocksNow();

} // namespace quorvex::soak
