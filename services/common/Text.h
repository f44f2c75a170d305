#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvex::services
{

std::string_view Trim(std::string_view text);

bool StartsWithIgnoringCase(std::string_view text, std::string_view lowercasePrefix);

// Digits only: no sign, no blanks, nothing behind.
std::optional<std::uint64_t> ParseUnsigned(std::string_view digits);

bool IsValidUtf8(std::string_view text);

// The longest start of valid UTF-8 text that takes at most this many UTF-16 units; no character is cut in half.
std::string_view CutToUtf16Units(std::string_view text, std::size_t units);

} // namespace quorvex::services
