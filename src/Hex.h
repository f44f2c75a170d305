#pragma once

#include <array>
#include <cstddef>

namespace quorvex
{

/// @return the bytes as lowercase hexadecimal characters, high half first, with a terminating zero
template <std::size_t N>
constexpr std::array<char, 2 * N + 1> HexText(const std::array<unsigned char, N>& bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::array<char, 2 * N + 1> text{};
    for (std::size_t i = 0; i < N; ++i)
    {
        text[2 * i] = digits[bytes[i] >> 4];
        text[2 * i + 1] = digits[bytes[i] & 15];
    }
    return text;
}

} // namespace quorvex
