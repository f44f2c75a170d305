#pragma once

#include <cstdint>

namespace quorvex::soak
{

/// Begins to count the handles that the compiler's thread library makes: one for each lock when two threads first want
/// it at once, kept as long as the lock, and some for each thread that it knows. When that happens is chance.
void CountLockHandles();

/// How many of them are open.
std::uint32_t LockHandlesNow();

} // namespace quorvex::soak
