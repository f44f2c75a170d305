#pragma once

#include "Md5.h"
#include "Sha1.h"

namespace quorvex
{

/// Digests whole blocks of 64 bytes into the chaining words of both.
using Md5Sha1CompressFunction = void (*)(std::uint32_t* md5, std::uint32_t* sha1, const unsigned char* blocks,
                                         std::size_t count);

/// For every processor.
void Md5Sha1CompressPortable(std::uint32_t* md5, std::uint32_t* sha1, const unsigned char* blocks, std::size_t count);

/// For processors on which HasShaInstructions is true; elsewhere it must not be called.
void Md5Sha1CompressX86(std::uint32_t* md5, std::uint32_t* sha1, const unsigned char* blocks, std::size_t count);

/// @return the fastest of these that this processor can run
Md5Sha1CompressFunction FastestMd5Sha1Compress();

/// MD5 and SHA-1 of one message in one pass over it. With SHA instructions the second digest costs next to nothing:
/// it runs while the processor waits for the first.
class Md5Sha1
{
public:
    explicit Md5Sha1(Md5Sha1CompressFunction compress = FastestMd5Sha1Compress());

    void Append(const void* data, std::size_t size);

    struct Digests
    {
        Md5Digest md5;
        Sha1Digest sha1;
    };

    /// Ends the message; nothing may be appended afterwards.
    Digests Finish();

private:
    Md5Sha1CompressFunction m_compress;
    std::array<std::uint32_t, 4> m_md5;
    std::array<std::uint32_t, 5> m_sha1;
    std::uint64_t m_size = 0;
    std::array<unsigned char, kDigestBlockSize> m_pending{};
};

} // namespace quorvex
