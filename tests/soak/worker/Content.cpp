#include "Content.h"

#include <quorvex/quorvex.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace quorvex::soak
{

std::string Content::Bytes() const
{
    std::string bytes(size, '\0');
    std::uint64_t state = seed | 1U;
    for (std::size_t at = 0; at < bytes.size(); at += sizeof state)
    {
        state ^= state << 13U;
        state ^= state >> 7U;
        state ^= state << 17U;
        std::memcpy(bytes.data() + at, &state, std::min(sizeof state, bytes.size() - at));
    }
    return bytes;
}

Match Compare(std::string_view come, std::string_view stored)
{
    if (come == stored)
    {
        return Match::Whole;
    }
    return stored.starts_with(come) ? Match::Beginning : Match::Other;
}

std::wstring Md5Of(std::string_view bytes, std::size_t pieceSize)
{
    md5_state_t state;
    md5_init(&state);
    for (std::size_t at = 0; at < bytes.size(); at += pieceSize)
    {
        const std::string_view piece = bytes.substr(at, pieceSize);
        md5_append(&state, reinterpret_cast<const unsigned char*>(piece.data()), static_cast<int>(piece.size()));
    }
    std::array<unsigned char, 16> digest{};
    md5_finish(&state, digest.data());
    std::wstring text;
    for (const unsigned char byte : digest)
    {
        text += L"0123456789abcdef"[byte / 16];
        text += L"0123456789abcdef"[byte % 16];
    }
    return text;
}

void WriteFile(const std::filesystem::path& path, std::string_view bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush())
    {
        throw std::runtime_error("cannot write " + path.string());
    }
}

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace quorvex::soak
