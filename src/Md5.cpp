#include "Md5.h"

#include "DigestBlocks.h"
#include "Md5Rounds.h"

#include <algorithm>
#include <type_traits>

static_assert(std::is_same_v<unsigned int, std::uint32_t>, "the exported record has 32-bit words");

namespace quorvex
{
namespace
{

std::uint64_t BitCount(const md5_state_t& state)
{
    return std::uint64_t{state.count[1]} << 32 | state.count[0];
}

std::size_t HeldBytes(const md5_state_t& state)
{
    return state.count[0] / 8 % kDigestBlockSize;
}

void Append(md5_state_t& state, const unsigned char* data, std::size_t size)
{
    const std::size_t held = HeldBytes(state);
    const std::uint64_t bits = BitCount(state) + std::uint64_t{size} * 8;
    state.count[0] = static_cast<unsigned int>(bits);
    state.count[1] = static_cast<unsigned int>(bits >> 32);
    FeedBlocks(state.buf, held, data, size,
               [&state](const unsigned char* blocks, std::size_t count) { Md5Compress(state.abcd, blocks, count); });
}

Md5Digest Finish(md5_state_t& state)
{
    FeedPadding(state.buf, HeldBytes(state), Md5LengthBytes(BitCount(state)),
                [&state](const unsigned char* blocks, std::size_t count) { Md5Compress(state.abcd, blocks, count); });
    return Md5DigestOf(state.abcd);
}

} // namespace

void Md5Compress(std::uint32_t* chain, const unsigned char* blocks, std::size_t count)
{
    Md5Blocks(
        chain, blocks, count, [](auto, const unsigned char*) {}, std::make_integer_sequence<int, 64>{});
}

std::array<std::uint32_t, 4> Md5InitialChain()
{
    return {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
}

Md5Digest Md5DigestOf(const std::uint32_t* chain)
{
    Md5Digest digest;
    for (std::size_t i = 0; i < 4; ++i)
    {
        StoreLittleEndian(&digest[4 * i], chain[i]);
    }
    return digest;
}

std::array<unsigned char, 8> Md5LengthBytes(std::uint64_t bits)
{
    std::array<unsigned char, 8> bytes;
    StoreLittleEndian(bytes.data(), bits);
    return bytes;
}

void Md5::Append(const void* data, std::size_t size)
{
    quorvex::Append(m_state, static_cast<const unsigned char*>(data), size);
}

Md5Digest Md5::Finish()
{
    return quorvex::Finish(m_state);
}

Md5Digest Md5Of(const void* data, std::size_t size)
{
    Md5 md5;
    md5.Append(data, size);
    return md5.Finish();
}

} // namespace quorvex

void md5_init(md5_state_t* state)
{
    *state = {};
    const std::array<std::uint32_t, 4> chain = quorvex::Md5InitialChain();
    std::copy(chain.begin(), chain.end(), state->abcd);
}

void md5_append(md5_state_t* state, const unsigned char* data, int count)
{
    if (count > 0)
    {
        quorvex::Append(*state, data, static_cast<std::size_t>(count));
    }
}

void md5_finish(md5_state_t* state, unsigned char digest[16])
{
    const quorvex::Md5Digest bytes = quorvex::Finish(*state);
    std::copy(bytes.begin(), bytes.end(), digest);
}
