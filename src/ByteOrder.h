#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// @file
/// Numbers as bytes, whatever the processor's own order is; compilers make one instruction of each word.
/// The functions are static because files built for different processors must not share their code.

namespace quorvex
{

static inline std::uint32_t LoadLittleEndian32(const unsigned char* bytes)
{
    if constexpr (std::endian::native == std::endian::little)
    {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    else
    {
        return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
               std::uint32_t{bytes[3]} << 24;
    }
}

static inline std::uint32_t LoadBigEndian32(const unsigned char* bytes)
{
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           std::uint32_t{bytes[3]};
}

template <class Number>
static inline void StoreLittleEndian(unsigned char* bytes, Number value)
{
    for (std::size_t i = 0; i < sizeof value; ++i)
    {
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
    }
}

template <class Number>
static inline void StoreBigEndian(unsigned char* bytes, Number value)
{
    for (std::size_t i = 0; i < sizeof value; ++i)
    {
        bytes[i] = static_cast<unsigned char>(value >> (8 * (sizeof value - 1 - i)));
    }
}

} // namespace quorvex
