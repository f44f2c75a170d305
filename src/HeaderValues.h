#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Reading the values of response headers, in the forms that the services write them, and the header of a ranged
/// request.
namespace quorvex
{

struct ContentDisposition
{
    std::wstring_view fileName;
    /// The value behind the file name's semicolon; empty when there is none.
    std::wstring_view second;
    /// The value of the parameter after that; empty when there is none.
    std::wstring_view third;
};

/// Reads attachment;filename="NAME;abc=SECOND;xyz=THIRD;...: nothing stands between a name and its semicolon, and
/// without a semicolon everything up to the end is the name. The second value's own name has three letters, the
/// third's has any.
ContentDisposition ParseContentDisposition(std::wstring_view value);

/// Reads the total out of bytes 0-0/TOTAL, the answer to a request for the first byte. A total beyond 32 bits wraps
/// around; an unusable value gives 0.
std::uint32_t ParseContentRangeTotal(std::wstring_view value);

/// @return the header that asks for a range, counted in 32 bits
std::wstring RangeHeader(std::uint32_t start, std::uint32_t size);

} // namespace quorvex
