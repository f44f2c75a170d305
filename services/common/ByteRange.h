#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::services
{

// What a Range header asks of a file of a known size.
struct ByteRange
{
    enum class Kind
    {
        Whole, // no range, or one that is not understood: the whole file is the answer
        Part,
        NotSatisfiable,
    };

    Kind kind = Kind::Whole;
    std::uint64_t first = 0;
    std::uint64_t length = 0;
};

ByteRange ParseByteRange(std::string_view header, std::uint64_t totalSize);

// The Content-Range value of an answer with this part. An empty file's part is "bytes 0-0/0", the form in which
// clients that probe for the size read a zero.
std::string ContentRange(const ByteRange& range, std::uint64_t totalSize);

} // namespace quorvex::services
