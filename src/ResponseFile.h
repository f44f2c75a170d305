#pragma once

#include <cstdint>

namespace quorvex
{

namespace Platform
{
class Request;
}

/// Writes a response's body into a local file, inflating it on the way when it is compressed. The file is made when
/// it is missing; an existing one is written from its start and not shortened.
/// @param path     where to; null stands for a name that must not be opened
/// @param encoding kEncodingGzip, kEncodingDeflate, or 0 for a plain body
/// @return 0; -120 when the file cannot be opened or closed; -107 when reading or writing broke off; a zlib code
int DownloadToFile(Platform::Request& request, const wchar_t* path, std::uint32_t encoding);

} // namespace quorvex
