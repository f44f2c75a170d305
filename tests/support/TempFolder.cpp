#include "support/TempFolder.h"

#include <windows.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace support
{
namespace fs = std::filesystem;

TempFolder::TempFolder()
{
    static std::atomic<unsigned> next{0};
    const std::string process = std::to_string(GetCurrentProcessId());
    do
        m_path = fs::temp_directory_path() / ("quorvex-test-" + process + "-" + std::to_string(next++));
    while (!fs::create_directory(m_path));
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    for (const auto& entry : fs::recursive_directory_iterator(m_path, ignored))
        fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add, ignored);
    fs::remove_all(m_path, ignored);
}

void writeFile(const fs::path& path, std::string_view content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path.string());
}

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string patternBytes(std::size_t size)
{
    std::string bytes(size, '\0');
    unsigned state = 1;
    for (char& byte : bytes)
    {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

} // namespace support
