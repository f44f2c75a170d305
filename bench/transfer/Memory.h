#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace quorvex::bench
{

/// Prints how much private memory each operation takes at most for a small and for a large file. Each one is measured
/// in a process of its own.
/// @param rows as for BenchTransfers
void BenchMemory(const std::filesystem::path& folder, const std::string& rows);

/// One operation, in a process started by BenchMemory.
struct Probe
{
    std::string operation;
    std::uint16_t port = 0;
    std::filesystem::path file;
};

/// Runs it and prints the process's peak of private memory in bytes.
void RunProbe(const Probe& probe);

} // namespace quorvex::bench
