#pragma once

#include <string>
#include <string_view>

namespace wire
{

enum class Encoding
{
    Gzip,
    Zlib,
    RawDeflate
};

std::string compress(std::string_view text, Encoding encoding);

} // namespace wire
