#include "search/Condition.h"

#include "common/HttpAnswers.h"
#include "common/Text.h"

#include <utility>

namespace quorvex::services::search
{

namespace
{

// Each is a part of one statement, whose size the database limits.
constexpr std::size_t MaxConditions = 32;

// The first hyphen that is no sign separates the ends.
std::optional<Range> ParseRange(std::string_view text)
{
    const std::size_t hyphen = text.find('-', 1);
    if (hyphen == std::string_view::npos)
    {
        return std::nullopt;
    }
    const auto low = ParseNumber(text.substr(0, hyphen));
    const auto high = ParseNumber(text.substr(hyphen + 1));
    return low && high ? std::optional(Range{*low, *high}) : std::nullopt;
}

} // namespace

std::vector<Condition> ParseConditions(std::vector<Field> fields)
{
    if (fields.size() > MaxConditions)
    {
        throw HttpError(Status::BadRequest, "the search has too many conditions");
    }
    std::vector<Condition> conditions;
    conditions.reserve(fields.size());
    for (Field& field : fields)
    {
        const auto range = ParseRange(field.value);
        conditions.push_back({std::move(field.name), std::move(field.value), range});
    }
    return conditions;
}

std::optional<std::int64_t> ParseNumber(std::string_view text)
{
    constexpr std::size_t maxDigits = 18;
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative ? 1 : 0);
    const auto magnitude = text.size() <= maxDigits ? ParseUnsigned(text) : std::nullopt;
    if (!magnitude)
    {
        return std::nullopt;
    }
    const auto value = static_cast<std::int64_t>(*magnitude);
    return isNegative ? -value : value;
}

} // namespace quorvex::services::search
