#pragma once

#include "ByteOrder.h"
#include "DigestBlocks.h"
#include "Prefetch.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

/// @file
/// The 64 steps of MD5. Each step needs the word that the step before has just made, so that the time of a block is
/// the length of this chain; everything that does not need that word is added up beside it. The functions are
/// static because files built for different processors must not share their code.

namespace quorvex
{

constexpr std::uint32_t kMd5Sines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr int kMd5Rotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

constexpr int kMd5WordFactors[4] = {1, 5, 3, 7};
constexpr int kMd5WordOffsets[4] = {0, 1, 5, 0};

/// @return `sum` plus the round's function of b, c and d, where b is the word that comes last
template <int Round>
static inline std::uint32_t Md5AddMixed(std::uint32_t sum, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (Round == 0)
    {
        return sum + (((c ^ d) & b) ^ d);
    }
    else if constexpr (Round == 1)
    {
        return (sum + (c & ~d)) + (b & d); // no bit is set in both halves, so that "or" is a sum
    }
    else if constexpr (Round == 2)
    {
        return sum + ((c ^ d) ^ b);
    }
    else
    {
        return sum + ((~d | b) ^ c);
    }
}

/// The part of each step's sum that needs no chaining word, kept by round and by the word of the block that is in it.
struct Md5Addends
{
    std::uint32_t round[4][16];
};

/// @return which word of the block a step adds
constexpr int Md5WordOf(int step)
{
    return (kMd5WordFactors[step / 16] * step + kMd5WordOffsets[step / 16]) % 16;
}

constexpr Md5Addends Md5SinesByWord()
{
    Md5Addends sines{};
    for (int step = 0; step < 64; ++step)
    {
        sines.round[step / 16][Md5WordOf(step)] = kMd5Sines[step];
    }
    return sines;
}

static inline Md5Addends Md5AddendsOf(const unsigned char* block)
{
    static constexpr Md5Addends sines = Md5SinesByWord();
    Md5Addends addends;
    for (int round = 0; round < 4; ++round)
    {
        for (int word = 0; word < 16; ++word)
        {
            addends.round[round][word] = sines.round[round][word] + LoadLittleEndian32(block + 4 * word);
        }
    }
    return addends;
}

template <int Step>
static inline void Md5Step(std::uint32_t (&chain)[4], const Md5Addends& addends)
{
    constexpr int round = Step / 16;
    std::uint32_t& a = chain[(64 - Step) % 4];
    const std::uint32_t b = chain[(65 - Step) % 4];
    const std::uint32_t c = chain[(66 - Step) % 4];
    const std::uint32_t d = chain[(67 - Step) % 4];
    const std::uint32_t sum = a + addends.round[round][Md5WordOf(Step)];
    a = b + std::rotl(Md5AddMixed<round>(sum, b, c, d), kMd5Rotations[round][Step % 4]);
}

/// Digests whole blocks, at least one.
/// @param beside called with each block after each step, whose number is a std::integral_constant: work of another
///               kind that the processor can do while it waits for the chain
template <class Beside, int... Step>
static inline void Md5Blocks(std::uint32_t* chain, const unsigned char* blocks, std::size_t count, Beside beside,
                             std::integer_sequence<int, Step...>)
{
    // Made one block ahead, so that a step finds them in memory and the compiler does not put the sums back into it.
    Md5Addends addends[2];
    addends[0] = Md5AddendsOf(blocks);
    std::uint32_t words[4] = {chain[0], chain[1], chain[2], chain[3]};
    for (std::size_t i = 0; i < count; ++i, blocks += kDigestBlockSize)
    {
        PrefetchAhead(blocks);
        if (i + 1 < count)
        {
            addends[(i + 1) % 2] = Md5AddendsOf(blocks + kDigestBlockSize);
        }
        const std::uint32_t before[4] = {words[0], words[1], words[2], words[3]};
        ((Md5Step<Step>(words, addends[i % 2]), beside(std::integral_constant<int, Step>{}, blocks)), ...);
        for (int k = 0; k < 4; ++k)
        {
            words[k] += before[k];
        }
    }
    for (int k = 0; k < 4; ++k)
    {
        chain[k] = words[k];
    }
}

} // namespace quorvex
