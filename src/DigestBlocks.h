#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// @file
/// MD5 and SHA-1 cut a message into blocks in the same way: 64 bytes each, the rest waiting for more, and at the
/// end a byte 0x80, zeros and the length in bits. They differ in the byte order of that length and in what is done
/// with a block.

namespace quorvex
{

constexpr std::size_t kDigestBlockSize = 64;

/// Passes every block that is complete to `compress(const unsigned char* blocks, std::size_t count)`.
/// @param pending the bytes of the block that is being collected
/// @param held    how many bytes of `pending` are taken, less than a block
template <class Compress>
void FeedBlocks(unsigned char* pending, std::size_t held, const unsigned char* data, std::size_t size,
                Compress compress)
{
    if (size == 0)
    {
        return;
    }
    if (held != 0)
    {
        const std::size_t taken = std::min(size, kDigestBlockSize - held);
        std::memcpy(pending + held, data, taken);
        if (held + taken < kDigestBlockSize)
        {
            return;
        }
        compress(pending, 1);
        data += taken;
        size -= taken;
    }
    const std::size_t rest = size % kDigestBlockSize;
    if (size != rest)
    {
        compress(data, size / kDigestBlockSize);
    }
    if (rest != 0)
    {
        std::memcpy(pending, data + (size - rest), rest);
    }
}

/// Passes the last one or two blocks of a message to `compress`.
/// @param length the message's length in bits, in the digest's byte order
template <class Compress>
void FeedPadding(const unsigned char* pending, std::size_t held, const std::array<unsigned char, 8>& length,
                 Compress compress)
{
    std::array<unsigned char, 2 * kDigestBlockSize> last{};
    std::memcpy(last.data(), pending, held);
    last[held] = 0x80;
    const std::size_t count = held + 1 + length.size() <= kDigestBlockSize ? 1 : 2;
    std::memcpy(last.data() + count * kDigestBlockSize - length.size(), length.data(), length.size());
    compress(last.data(), count);
}

} // namespace quorvex
