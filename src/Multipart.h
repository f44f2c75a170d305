#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The multipart bodies and headers of uploads, byte for byte as the services read them.
namespace quorvex::Multipart
{

/// The request header of the network disk's whole-file upload. Its spelling differs from the other forms' on purpose.
std::wstring UploadContentType(const std::string& boundary);
/// The request header of every other form.
std::wstring FormContentType(const std::string& boundary);

/// What goes before a whole file's bytes.
/// @param fileName in the service's code page
std::string UploadHead(const std::string& boundary, std::string_view fileName);

/// What goes behind the bytes of a file or a block.
std::string Tail(const std::string& boundary);

/// The whole body that creates a large file.
/// @param md5      32 hexadecimal characters
/// @param fileName in UTF-8
std::string LargeFileForm(const std::string& boundary, std::uint32_t totalSize, std::string_view md5,
                          std::string_view fileName);

/// What goes before a chunk of a depot file.
/// @param key   in the service's code page
/// @param first the chunk's first byte in the file
/// @param last  its last byte
std::string ChunkHead(const std::string& boundary, std::string_view key, std::uint32_t first, std::uint32_t last);

/// What goes before a picture of the third generation's upload, whose server wants the form exactly so.
/// @param md5  32 hexadecimal characters
/// @param name in the service's code page
std::string PictureHead(const std::string& boundary, std::string_view md5, std::string_view name);

/// What goes before a block of the third generation's upload.
/// @param ticket in the service's code page
/// @param md5    of the block, 32 hexadecimal characters
/// @param name   in the service's code page
std::string PhotoBlockHead(const std::string& boundary, std::uint32_t offset, std::string_view ticket, int flag,
                           std::uint64_t fileSize, std::string_view md5, std::string_view name);

/// What goes before a block of a large file.
std::string BlockHead(const std::string& boundary, std::string_view fileKey, std::uint32_t position,
                      std::uint32_t size);

} // namespace quorvex::Multipart
