#pragma once

#include <cstdint>

namespace quorvex::fuzz
{

/// What the generator begins with, on this thread.
void SeedRandom(std::uint32_t seed);

} // namespace quorvex::fuzz
