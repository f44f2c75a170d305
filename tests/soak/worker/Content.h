#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace quorvex::soak
{

/// The bytes of a file, made anew from a number whenever they are needed.
struct Content
{
    std::uint64_t seed = 0;
    std::uint32_t size = 0;

    std::string Bytes() const;

    bool operator==(const Content&) const = default;
};

/// How what has come compares with what was stored.
enum class Match
{
    Whole,
    Beginning, ///< ends early, and is right as far as it goes
    Other
};

Match Compare(std::string_view come, std::string_view stored);

/// The MD5 that the module's own functions give, as 32 hexadecimal characters.
/// @param pieceSize how many bytes are added at a time
std::wstring Md5Of(std::string_view bytes, std::size_t pieceSize);

void WriteFile(const std::filesystem::path& path, std::string_view bytes);
std::string ReadFile(const std::filesystem::path& path);

} // namespace quorvex::soak
