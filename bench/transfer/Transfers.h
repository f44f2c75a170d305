#pragma once

#include <filesystem>

namespace quorvex::bench
{

/// Prints how the module's requests compare with the same WinHTTP calls in a bare loop.
/// @param folder for the files to send and to receive
/// @param runs   counted runs of each side
void BenchTransfers(const std::filesystem::path& folder, int runs);

} // namespace quorvex::bench
