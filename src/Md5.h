#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <quorvex/Md5.h>

namespace quorvex
{

using Md5Digest = std::array<unsigned char, 16>;

/// Digests whole blocks of 64 bytes, at least one, into the chaining words.
void Md5Compress(std::uint32_t* chain, const unsigned char* blocks, std::size_t count);

/// @return the chaining words before the first block
std::array<std::uint32_t, 4> Md5InitialChain();

/// @return the digest that the chaining words stand for after the message's last block
Md5Digest Md5DigestOf(const std::uint32_t* chain);

/// @return a message's length as it ends the last block, in bits
std::array<unsigned char, 8> Md5LengthBytes(std::uint64_t bits);

/// MD5 of a message that comes in pieces of any size.
class Md5
{
public:
    Md5() { md5_init(&m_state); }

    void Append(const void* data, std::size_t size);

    /// Ends the message; nothing may be appended afterwards.
    Md5Digest Finish();

private:
    md5_state_t m_state;
};

/// MD5 of one buffer.
Md5Digest Md5Of(const void* data, std::size_t size);

} // namespace quorvex
