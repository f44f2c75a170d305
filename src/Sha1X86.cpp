#include "CpuFeatures.h"

#if QUORVEX_X86

#include "Prefetch.h"
#include "Sha1.h"
#include "Sha1RoundsX86.h"

#include <utility>

namespace quorvex
{
namespace
{

template <int... Group>
void DoBlock(Sha1ChainX86& sha1, const unsigned char* block, std::integer_sequence<int, Group...>)
{
    (sha1.FourRounds<Group>(block), ...);
}

} // namespace

void Sha1CompressX86(std::uint32_t* chain, const unsigned char* blocks, std::size_t count)
{
    Sha1ChainX86 sha1(chain);
    for (; count != 0; --count, blocks += kDigestBlockSize)
    {
        PrefetchAhead(blocks);
        DoBlock(sha1, blocks, std::make_integer_sequence<int, 20>{});
    }
    sha1.Store(chain);
}

} // namespace quorvex

#endif
