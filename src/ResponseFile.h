#pragma once

#include "Platform/File.h"

#include <cstddef>
#include <cstdint>

namespace quorvex
{

namespace Platform
{
class Request;
}

/// Writes a piece of a download.
/// @param read    how many bytes were read for this piece, for the log
/// @param written receives how many were written
/// @return 0, or -107 when not all of it could be written
int WritePiece(const Platform::File& file, const char* data, std::size_t size, std::uint32_t read,
               std::uint32_t& written);

/// Where the downloads of the services differ.
struct DownloadRules
{
    Platform::File::Existing existing;
    /// Whether a file that cannot be closed is a failure, or only worth a line in the log.
    bool isCloseFailureFatal;
};

/// Writes a response's body into a local file, inflating it on the way when it is compressed. The file is made when
/// it is missing.
/// @param path     where to; null stands for a name that must not be opened
/// @param encoding kEncodingGzip, kEncodingDeflate, or 0 for a plain body
/// @return 0; -120 when the file cannot be opened or closed; -107 when reading or writing broke off; a zlib code
int DownloadToFile(Platform::Request& request, const wchar_t* path, std::uint32_t encoding, DownloadRules rules);

} // namespace quorvex
