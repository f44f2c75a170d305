#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quorvex::fuzz
{

/// Puts an input where make-seeds.sh wants it; the folder's name is in the environment.
/// @param target the fuzzer that it is for
inline void WriteSeed(const std::string& target, const std::string& name, std::string_view input)
{
    const char* const root = std::getenv("QUORVEX_SEEDS");
    if (root == nullptr)
    {
        throw std::runtime_error("QUORVEX_SEEDS names no folder");
    }
    const std::filesystem::path folder = std::filesystem::path(root) / target;
    std::filesystem::create_directories(folder);
    std::ofstream(folder / name, std::ios::binary) << input;
}

} // namespace quorvex::fuzz
