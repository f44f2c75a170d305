#include "common/ByteRange.h"

#include "common/Text.h"

#include <algorithm>

namespace quorvex::services
{

namespace
{

ByteRange LastBytes(std::uint64_t count, std::uint64_t totalSize)
{
    if (count == 0)
    {
        return {ByteRange::Kind::NotSatisfiable};
    }
    const std::uint64_t length = std::min(count, totalSize);
    return {ByteRange::Kind::Part, totalSize - length, length};
}

} // namespace

ByteRange ParseByteRange(std::string_view header, std::uint64_t totalSize)
{
    constexpr std::string_view unit = "bytes=";
    const ByteRange whole{ByteRange::Kind::Whole, 0, totalSize};
    if (!header.starts_with(unit))
    {
        return whole;
    }
    const std::string_view range = Trim(header.substr(unit.size()));
    const std::size_t dash = range.find('-');
    if (dash == std::string_view::npos)
    {
        return whole;
    }
    const auto first = ParseUnsigned(range.substr(0, dash));
    const auto last = ParseUnsigned(range.substr(dash + 1));
    const bool isOpen = range.size() == dash + 1;
    if (dash == 0 && last)
    {
        return LastBytes(*last, totalSize);
    }
    if (!first || (!isOpen && (!last || *last < *first)))
    {
        return whole;
    }
    if (*first == 0 && totalSize == 0)
    {
        return {ByteRange::Kind::Part, 0, 0};
    }
    if (*first >= totalSize)
    {
        return {ByteRange::Kind::NotSatisfiable};
    }
    const std::uint64_t end = isOpen || *last >= totalSize ? totalSize : *last + 1;
    return {ByteRange::Kind::Part, *first, end - *first};
}

std::string ContentRange(const ByteRange& range, std::uint64_t totalSize)
{
    const std::string total = std::to_string(totalSize);
    if (range.kind == ByteRange::Kind::NotSatisfiable)
    {
        return "bytes */" + total;
    }
    const std::uint64_t last = range.length == 0 ? range.first : range.first + range.length - 1;
    return "bytes " + std::to_string(range.first) + "-" + std::to_string(last) + "/" + total;
}

} // namespace quorvex::services
