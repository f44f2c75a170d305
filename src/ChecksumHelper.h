#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Digests of whole files and of texts, as lowercase hexadecimal text.
///
/// A file is digested over the low 32 bits of its size, and that is the size reported. An empty file has no digest.
/// What a file routine could not find out is left unwritten; the size is known before the content is read. A folder and
/// a name of more than 259 characters together count as a file that cannot be opened.
namespace quorvex
{

inline constexpr std::size_t kMd5TextSize = 33;
inline constexpr std::size_t kSha1TextSize = 41;

/// @param folder   without a trailing backslash
/// @param md5      room for kMd5TextSize characters
/// @param fileSize receives the size
/// @return 0, or 1 on any failure
int FileMd5(const wchar_t* fileName, const wchar_t* folder, char* md5, std::uint32_t& fileSize);

/// Both digests in one pass over the file.
/// @param md5      room for kMd5TextSize characters
/// @param folder   without a trailing backslash
/// @param sha1     room for kSha1TextSize characters
/// @param fileSize receives the size
/// @return 0; -121 when the file cannot be opened; 1 on any other failure
int FileMd5AndSha1(const wchar_t* fileName, char* md5, const wchar_t* folder, char* sha1, std::uint32_t& fileSize);

/// @param path in UTF-8
/// @return the MD5 of the whole file, whatever its size; empty when it cannot be read
std::string StreamedFileMd5(const std::string& path);

/// MD5 of a text.
std::string StringMd5(const void* data, std::size_t length);

} // namespace quorvex
