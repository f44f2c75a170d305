#pragma once

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

} // namespace quorvex::services
