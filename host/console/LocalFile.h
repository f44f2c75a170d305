#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace quorvex::console
{

/// @return the size of a file that the protocol can carry: sizes have 32 bits in it
/// @throws Failure when it is missing, no file, or too large
std::uint64_t TransferableSize(const std::filesystem::path& path);

/// MD5 of a whole file, 32 lowercase hexadecimal characters; an empty file has one, too.
/// @throws Failure when it cannot be read
std::string DigestOf(const std::filesystem::path& path);

/// The name for messages.
std::string NameOf(const std::filesystem::path& path);

} // namespace quorvex::console
