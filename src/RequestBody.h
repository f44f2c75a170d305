#pragma once

#include <cstdint>
#include <string_view>

/// Sending a request's body piece by piece. A piece that cannot be written is nobody's failure: the server may have
/// answered already, and the answer tells.
namespace quorvex
{

namespace Platform
{
class File;
class Request;
} // namespace Platform

void WriteBody(Platform::Request& request, std::string_view piece);

/// Streams a file's bytes.
/// @param size how many, from the file's present position
/// @return false when the file has fewer or cannot be read; LastError tells
bool WriteFileBody(Platform::Request& request, const Platform::File& file, std::uint32_t size);

} // namespace quorvex
