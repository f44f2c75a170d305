#include "Sha1.h"

#include "ByteOrder.h"
#include "CpuFeatures.h"
#include "Prefetch.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace quorvex
{
namespace
{

constexpr std::uint32_t kRoundConstants[4] = {0x5a827999, 0x6ed9eba1, 0x8f1bbcdc, 0xca62c1d6};

/// @return `sum` plus the round's function of b, c and d
template <int Round>
std::uint32_t AddMixed(std::uint32_t sum, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (Round == 0)
    {
        return sum + (((c ^ d) & b) ^ d);
    }
    else if constexpr (Round == 2)
    {
        return (sum + (c & d)) + ((c ^ d) & b); // no bit is set in both terms of the majority
    }
    else
    {
        return sum + (b ^ c ^ d);
    }
}

template <int Step>
void DoStep(std::uint32_t (&chain)[5], std::uint32_t (&schedule)[16], const unsigned char* block)
{
    std::uint32_t& word = schedule[Step % 16];
    if constexpr (Step < 16)
    {
        word = LoadBigEndian32(block + 4 * Step);
    }
    else
    {
        word = std::rotl(schedule[(Step + 13) % 16] ^ schedule[(Step + 8) % 16] ^ schedule[(Step + 2) % 16] ^ word, 1);
    }

    const std::uint32_t a = chain[(80 - Step) % 5];
    std::uint32_t& b = chain[(81 - Step) % 5];
    const std::uint32_t c = chain[(82 - Step) % 5];
    const std::uint32_t d = chain[(83 - Step) % 5];
    std::uint32_t& e = chain[(84 - Step) % 5];
    e = AddMixed<Step / 20>(e + kRoundConstants[Step / 20] + word, b, c, d) + std::rotl(a, 5);
    b = std::rotl(b, 30);
}

template <int... Step>
void DoSteps(std::uint32_t (&chain)[5], const unsigned char* block, std::integer_sequence<int, Step...>)
{
    std::uint32_t schedule[16];
    (DoStep<Step>(chain, schedule, block), ...);
}

} // namespace

void Sha1CompressPortable(std::uint32_t* chain, const unsigned char* blocks, std::size_t count)
{
    for (; count != 0; --count, blocks += kDigestBlockSize)
    {
        PrefetchAhead(blocks);
        std::uint32_t words[5] = {chain[0], chain[1], chain[2], chain[3], chain[4]};
        DoSteps(words, blocks, std::make_integer_sequence<int, 80>{});
        for (int i = 0; i < 5; ++i)
        {
            chain[i] += words[i];
        }
    }
}

Sha1CompressFunction FastestSha1Compress()
{
#if QUORVEX_X86
    if (HasShaInstructions())
    {
        return Sha1CompressX86;
    }
#endif
    return Sha1CompressPortable;
}

std::array<std::uint32_t, 5> Sha1InitialChain()
{
    return {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
}

Sha1Digest Sha1DigestOf(const std::uint32_t* chain)
{
    Sha1Digest digest;
    for (std::size_t i = 0; i < 5; ++i)
    {
        StoreBigEndian(&digest[4 * i], chain[i]);
    }
    return digest;
}

std::array<unsigned char, 8> Sha1LengthBytes(std::uint64_t bits)
{
    std::array<unsigned char, 8> bytes;
    StoreBigEndian(bytes.data(), bits);
    return bytes;
}

Sha1::Sha1(Sha1CompressFunction compress) : m_compress(compress), m_chain(Sha1InitialChain())
{
}

void Sha1::Append(const void* data, std::size_t size)
{
    FeedBlocks(m_pending.data(), static_cast<std::size_t>(m_size % kDigestBlockSize),
               static_cast<const unsigned char*>(data), size,
               [this](const unsigned char* blocks, std::size_t count) { m_compress(m_chain.data(), blocks, count); });
    m_size += size;
}

Sha1Digest Sha1::Finish()
{
    FeedPadding(m_pending.data(), static_cast<std::size_t>(m_size % kDigestBlockSize), Sha1LengthBytes(m_size * 8),
                [this](const unsigned char* blocks, std::size_t count) { m_compress(m_chain.data(), blocks, count); });
    return Sha1DigestOf(m_chain.data());
}

void Sha1Of(const void* data, std::uint32_t size, unsigned char* digest)
{
    Sha1 sha1;
    sha1.Append(data, size);
    const Sha1Digest bytes = sha1.Finish();
    std::copy(bytes.begin(), bytes.end(), digest);
}

} // namespace quorvex
