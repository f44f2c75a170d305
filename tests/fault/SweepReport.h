#pragma once

#include <string>

namespace fault
{

/// Adds one operation's points to the table that the program prints at its end: how many calls were made to fail.
/// @param kind "system calls" or "allocations"
void reportSweep(const std::string& suite, const std::string& kind, unsigned points);

} // namespace fault
