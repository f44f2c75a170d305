#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quorvex
{

/// How long a response may be that is held in memory, inflated or not. It is far more than any reply has, a listing of
/// ten thousand files included, and keeps an endless one, or a few kilobytes that inflate to gigabytes, from taking the
/// host's memory.
inline constexpr std::size_t kLongestResponse = std::size_t{64} * 1024 * 1024;

/// The same for a range of a file: servers that know no ranges send more than was asked for.
constexpr std::size_t LongestRange(std::uint32_t wanted)
{
    return std::max<std::size_t>(wanted, kLongestResponse);
}

} // namespace quorvex
