#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace quorvex::services::test
{

// The program of the same name in the folder that QUORVEX_PROGRAMS names, so that the tests of one build can also run
// the 32-bit programs; otherwise the given one.
inline std::string WindowsProgram(const std::filesystem::path& built)
{
    const char* const folder = std::getenv("QUORVEX_PROGRAMS");
    return folder == nullptr ? built.string() : (std::filesystem::path(folder) / built.filename()).string();
}

} // namespace quorvex::services::test
