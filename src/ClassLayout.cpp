// Hosts that were built years ago make these objects themselves: one more member would write behind theirs.

#include <quorvex/quorvex.h>

namespace quorvex
{

constexpr bool kIs64Bit = sizeof(void*) == 8;

static_assert(sizeof(netdisk::CNetDisk) == (kIs64Bit ? 40 : 24));
static_assert(sizeof(CFileStorage) == (kIs64Bit ? 48 : 24));
static_assert(sizeof(CFileStorage2) == (kIs64Bit ? 56 : 28));
static_assert(sizeof(CFileStorage3) == (kIs64Bit ? 40 : 20));
static_assert(sizeof(COnlineUserSearch) == (kIs64Bit ? 16 : 8));

} // namespace quorvex
