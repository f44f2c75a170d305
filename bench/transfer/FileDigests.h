#pragma once

#include <filesystem>

namespace quorvex::bench
{

/// Prints what the routine for both digests of a file takes, beside the one for MD5 alone.
/// @param folder for the file to digest
/// @param runs   counted runs of each
void BenchFileDigests(const std::filesystem::path& folder, int runs);

/// The two routines; they throw when they fail.
void DigestMd5(const std::filesystem::path& file);
void DigestMd5AndSha1(const std::filesystem::path& file);

} // namespace quorvex::bench
