#pragma once

#include <filesystem>
#include <string>

namespace quorvex::bench
{

/// Prints how the module's requests compare with the same WinHTTP calls in a bare loop.
/// @param folder for the files to send and to receive
/// @param runs   counted runs of each side
/// @param rows   a part of the names of the rows to print; empty for all
void BenchTransfers(const std::filesystem::path& folder, int runs, const std::string& rows);

} // namespace quorvex::bench
