#pragma once

#include <cstdint>

namespace quorvex::Platform
{

/// A random number of the system's secure generator, or of the C library's where that one fails.
std::uint32_t RandomNumber();

} // namespace quorvex::Platform
