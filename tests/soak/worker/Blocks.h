#pragma once

#include "Setting.h"

#include <functional>

namespace quorvex::soak
{

/// Sends a file in blocks, in any order, each until it succeeds or seems not to.
/// @param send sends one block
/// @return whether all have been acknowledged
bool SendBlocks(Setting& setting, const Content& content,
                const std::function<int(void* data, unsigned long size, unsigned long position)>& send);

/// Reads a file in ranges as far as that succeeds, and compares.
/// @param read reads one range and tells whether it succeeded
/// @return whether all has come
bool ReadRanges(Setting& setting, const Content& content,
                const std::function<bool(unsigned long position, void* room, unsigned long& size)>& read,
                const std::string& what);

inline constexpr std::size_t kBlockSize = 131072;

} // namespace quorvex::soak
