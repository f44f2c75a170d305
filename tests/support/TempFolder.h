#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace support
{

/// A new empty folder that goes with this object, everything in it included.
class TempFolder
{
public:
    TempFolder();
    ~TempFolder();

    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

void writeFile(const std::filesystem::path& path, std::string_view content);
std::string readFile(const std::filesystem::path& path);

/// Bytes that differ from place to place, so that a lost, doubled or moved chunk shows.
std::string patternBytes(std::size_t size);

} // namespace support
