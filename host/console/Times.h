#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::console
{

/// Reads a length of time such as "90s", "15m", "24h" or "7d".
/// @return seconds; nothing when the text is none, or when they are 0 or need more than 32 bits
std::optional<std::uint32_t> ParseSpan(std::string_view text);

/// The same the other way, in the largest unit that has no fraction: "7 days", "1 hour", "90 seconds".
std::string SpanText(std::uint32_t seconds);

/// A length of time, in the largest unit of which there are two at least, rounded down: "6 days", "47 hours".
std::string RoughSpanText(std::int64_t minutes);

/// A server's time, seconds since 1970, as the local "2026-11-20 21:11:21"; empty for 0 and for what is no time.
std::string LocalTimeText(std::int64_t seconds);

} // namespace quorvex::console
