#pragma once

#include "search/Form.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::services::search
{

struct Range
{
    std::int64_t low = 0;
    std::int64_t high = 0;
};

// What a user must have under a name: the very text, or a number in the range that the text also stands for.
struct Condition
{
    std::string name;
    std::string value;
    std::optional<Range> range;
};

// More of them than one search may have end the request as a bad one.
std::vector<Condition> ParseConditions(std::vector<Field> fields);

// A whole number, with a minus sign or without, of at most 18 digits.
std::optional<std::int64_t> ParseNumber(std::string_view text);

} // namespace quorvex::services::search
