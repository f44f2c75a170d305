// Hosts call with whatever stack their compiler leaves: on 32-bit Windows that is a multiple of four bytes, and no
// more. This file is built like such a host.

#include "Hex.h"
#include "Md5Sha1.h"

#include <quorvex/NetDisk.h>
#include <quorvex/Results.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

namespace quorvex
{
namespace
{

void Digest()
{
    const std::string message(1000, 'a');
    Md5Sha1 digest;
    digest.Append(message.data(), message.size());
    const Md5Sha1::Digests digests = digest.Finish();
    EXPECT_EQ(HexText(digests.md5).data(), std::string("cabe45dcc9ae5b66ba86600cca6b8ba8"));
    EXPECT_EQ(HexText(digests.sha1).data(), std::string("291e9a6c66994949b57ba5e650361e98fc36b1ba"));
}

void AskForTheQuota()
{
    netdisk::CNetDisk disk(L"http:");
    unsigned long long total = 0;
    unsigned long long used = 0;
    unsigned long maxFileSize = 0;
    EXPECT_EQ(disk.CapacityInfo(total, used, maxFileSize), Result::NotConnected);
}

/// Called through this, a function keeps a stack frame of its own.
template <typename Function>
using Opaque = Function* volatile;

/// @return where the stack was, in bytes beyond a multiple of 16
template <std::size_t words>
std::uintptr_t CallWithFrameOf()
{
    volatile std::array<std::uint32_t, words> frame{};
    const Opaque<void()> digest = Digest;
    const Opaque<void()> askForTheQuota = AskForTheQuota;
    digest();
    askForTheQuota();
    return reinterpret_cast<std::uintptr_t>(&frame) % 16;
}

TEST(StackAlignment, OfAHostNeedsOnlyFourBytes)
{
    std::set<std::uintptr_t> seen;
    for (const Opaque<std::uintptr_t()> call :
         {&CallWithFrameOf<5>, &CallWithFrameOf<6>, &CallWithFrameOf<7>, &CallWithFrameOf<8>})
        seen.insert(call());
    EXPECT_EQ(seen, (std::set<std::uintptr_t>{0, 4, 8, 12}));
}

} // namespace
} // namespace quorvex
