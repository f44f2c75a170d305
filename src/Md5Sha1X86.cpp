#include "CpuFeatures.h"

#if QUORVEX_X86

#include "Md5Rounds.h"
#include "Md5Sha1.h"
#include "Sha1RoundsX86.h"

#include <algorithm>
#include <utility>

namespace quorvex
{

void Md5Sha1CompressX86(std::uint32_t* md5, std::uint32_t* sha1, const unsigned char* blocks, std::size_t count)
{
    Sha1ChainX86 sha1Chain(sha1);
    const auto sha1Beside = [&sha1Chain](auto step, const unsigned char* block) {
        constexpr int groups = 20;
        constexpr int done = step.value * groups / 64;
        if constexpr ((step.value + 1) * groups / 64 > done)
        {
            sha1Chain.FourRounds<done>(block);
        }
    };
    Md5Blocks(md5, blocks, count, sha1Beside, std::make_integer_sequence<int, 64>{});
    sha1Chain.Store(sha1);
}

} // namespace quorvex

#endif
