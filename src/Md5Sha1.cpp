#include "Md5Sha1.h"

#include "CpuFeatures.h"

#include <algorithm>

namespace quorvex
{

void Md5Sha1CompressPortable(std::uint32_t* md5, std::uint32_t* sha1, const unsigned char* blocks, std::size_t count)
{
    constexpr std::size_t blocksInCache = 64;
    while (count != 0)
    {
        const std::size_t taken = std::min(count, blocksInCache);
        Md5Compress(md5, blocks, taken);
        Sha1CompressPortable(sha1, blocks, taken);
        blocks += taken * kDigestBlockSize;
        count -= taken;
    }
}

Md5Sha1CompressFunction FastestMd5Sha1Compress()
{
#if QUORVEX_X86
    if (HasShaInstructions())
    {
        return Md5Sha1CompressX86;
    }
#endif
    return Md5Sha1CompressPortable;
}

Md5Sha1::Md5Sha1(Md5Sha1CompressFunction compress)
    : m_compress(compress), m_md5(Md5InitialChain()), m_sha1(Sha1InitialChain())
{
}

void Md5Sha1::Append(const void* data, std::size_t size)
{
    FeedBlocks(m_pending.data(), static_cast<std::size_t>(m_size % kDigestBlockSize),
               static_cast<const unsigned char*>(data), size, [this](const unsigned char* blocks, std::size_t count) {
                   m_compress(m_md5.data(), m_sha1.data(), blocks, count);
               });
    m_size += size;
}

Md5Sha1::Digests Md5Sha1::Finish()
{
    // The two write the length in different byte orders, so that they part at the last block.
    const auto held = static_cast<std::size_t>(m_size % kDigestBlockSize);
    FeedPadding(m_pending.data(), held, Md5LengthBytes(m_size * 8),
                [this](const unsigned char* blocks, std::size_t count) { Md5Compress(m_md5.data(), blocks, count); });
    FeedPadding(
        m_pending.data(), held, Sha1LengthBytes(m_size * 8),
        [this](const unsigned char* blocks, std::size_t count) { Sha1CompressPortable(m_sha1.data(), blocks, count); });
    return {Md5DigestOf(m_md5.data()), Sha1DigestOf(m_sha1.data())};
}

} // namespace quorvex
