#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "DigestBlocks.h"

namespace quorvex
{

using Sha1Digest = std::array<unsigned char, 20>;

/// Digests whole blocks of 64 bytes into the five chaining words.
using Sha1CompressFunction = void (*)(std::uint32_t* chain, const unsigned char* blocks, std::size_t count);

/// For every processor.
void Sha1CompressPortable(std::uint32_t* chain, const unsigned char* blocks, std::size_t count);

/// For processors on which HasShaInstructions is true; elsewhere it must not be called.
void Sha1CompressX86(std::uint32_t* chain, const unsigned char* blocks, std::size_t count);

/// @return the fastest of these that this processor can run
Sha1CompressFunction FastestSha1Compress();

/// @return the chaining words before the first block
std::array<std::uint32_t, 5> Sha1InitialChain();

/// @return the digest that the chaining words stand for after the message's last block
Sha1Digest Sha1DigestOf(const std::uint32_t* chain);

/// @return a message's length as it ends the last block, in bits
std::array<unsigned char, 8> Sha1LengthBytes(std::uint64_t bits);

/// SHA-1 of a message that comes in pieces of any size.
class Sha1
{
public:
    explicit Sha1(Sha1CompressFunction compress = FastestSha1Compress());

    void Append(const void* data, std::size_t size);

    /// Ends the message; nothing may be appended afterwards.
    Sha1Digest Finish();

private:
    Sha1CompressFunction m_compress;
    std::array<std::uint32_t, 5> m_chain;
    std::uint64_t m_size = 0;
    std::array<unsigned char, kDigestBlockSize> m_pending{};
};

/// SHA-1 of one buffer.
/// @param digest room for 20 bytes
void Sha1Of(const void* data, std::uint32_t size, unsigned char* digest);

} // namespace quorvex
