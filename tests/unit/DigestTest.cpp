#include "CpuFeatures.h"
#include "Hex.h"
#include "Md5.h"
#include "Md5Sha1.h"
#include "Sha1.h"

#include <quorvex/Md5.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex
{
namespace
{

static_assert(offsetof(md5_state_t, count) == 0);
static_assert(offsetof(md5_state_t, abcd) == 8);
static_assert(offsetof(md5_state_t, buf) == 24);
static_assert(sizeof(md5_state_t) == 88);

/// Every length that reaches each position of a block, with one and with two blocks of padding, several times over.
constexpr std::size_t kLengths = 301;

/// Bytes without a period that a block could hide; always the same.
std::vector<unsigned char> SampleBytes(std::size_t size)
{
    std::vector<unsigned char> bytes(size);
    std::uint32_t number = 1;
    for (unsigned char& byte : bytes)
    {
        number = number * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(number >> 24);
    }
    return bytes;
}

template <class Digest>
std::string Hex(const Digest& digest)
{
    return HexText(digest).data();
}

template <class Digester>
Digester Fed(Digester digester, std::string_view text)
{
    digester.Append(text.data(), text.size());
    return digester;
}

Md5Digest ExportedMd5(const unsigned char* data, std::size_t size)
{
    md5_state_t state;
    md5_init(&state);
    md5_append(&state, data, static_cast<int>(size));
    Md5Digest digest;
    md5_finish(&state, digest.data());
    return digest;
}

std::string Md5Text(std::string_view text)
{
    return Hex(Md5Of(text.data(), text.size()));
}

struct Example
{
    std::string text;
    const char* digest;
};

TEST(Md5, GivesTheDigestsOfRfc1321)
{
    const Example examples[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const Example& example : examples)
    {
        EXPECT_EQ(Md5Text(example.text), example.digest);
        EXPECT_EQ(Hex(ExportedMd5(reinterpret_cast<const unsigned char*>(example.text.data()), example.text.size())),
                  example.digest);
    }
}

TEST(Md5, IsRightForEveryLengthOfTheLastBlock)
{
    const std::vector<unsigned char> bytes = SampleBytes(kLengths);
    Md5 all;
    for (std::size_t size = 0; size < kLengths; ++size)
    {
        const Md5Digest digest = Md5Of(bytes.data(), size);
        all.Append(digest.data(), digest.size());
    }
    EXPECT_EQ(Hex(all.Finish()), "7dd9e96d52b765455ef296cb758cd215");
}

TEST(Md5, DoesNotDependOnHowTheMessageIsCut)
{
    const std::vector<unsigned char> bytes = SampleBytes(kLengths);
    for (std::size_t size = 0; size < kLengths; ++size)
    {
        const Md5Digest whole = Md5Of(bytes.data(), size);
        for (std::size_t cut = 0; cut <= size; ++cut)
        {
            Md5 md5;
            md5.Append(bytes.data(), cut);
            md5.Append(bytes.data() + cut, size - cut);
            ASSERT_EQ(md5.Finish(), whole) << size << " bytes cut at " << cut;
        }
    }
}

TEST(Md5, TakesAMessageByteByByte)
{
    const std::vector<unsigned char> bytes = SampleBytes(kLengths);
    Md5 md5;
    for (const unsigned char& byte : bytes)
    {
        md5.Append(&byte, 1);
    }
    EXPECT_EQ(md5.Finish(), Md5Of(bytes.data(), bytes.size()));
}

TEST(Md5, TakesBytesAtAnyAddress)
{
    const std::vector<unsigned char> bytes = SampleBytes(1000);
    const Md5Digest expected = Md5Of(bytes.data(), bytes.size());
    for (std::size_t offset = 1; offset < 16; ++offset)
    {
        std::vector<unsigned char> moved(offset);
        moved.insert(moved.end(), bytes.begin(), bytes.end());
        EXPECT_EQ(Md5Of(moved.data() + offset, bytes.size()), expected) << offset;
    }
}

TEST(ExportedMd5, StartsWithTheStandardChainAndNoBits)
{
    md5_state_t state;
    std::fill_n(reinterpret_cast<unsigned char*>(&state), sizeof state, static_cast<unsigned char>(0xff));
    md5_init(&state);
    EXPECT_EQ(state.count[0], 0U);
    EXPECT_EQ(state.count[1], 0U);
    EXPECT_EQ(state.abcd[0], 0x67452301U);
    EXPECT_EQ(state.abcd[1], 0xefcdab89U);
    EXPECT_EQ(state.abcd[2], 0x98badcfeU);
    EXPECT_EQ(state.abcd[3], 0x10325476U);
}

TEST(ExportedMd5, KeepsWhatDoesNotFillABlock)
{
    const std::vector<unsigned char> bytes = SampleBytes(70);
    md5_state_t state;
    md5_init(&state);
    md5_append(&state, bytes.data(), 70);
    EXPECT_EQ(state.count[0], 560U);
    EXPECT_TRUE(std::equal(bytes.begin() + 64, bytes.end(), state.buf));
    EXPECT_NE(state.abcd[0], 0x67452301U);
}

TEST(ExportedMd5, AddsNothingForACountThatIsNotPositive)
{
    md5_state_t state;
    md5_init(&state);
    md5_append(&state, reinterpret_cast<const unsigned char*>("abc"), 3);
    for (const int count : {0, -1, -64, INT_MIN})
    {
        md5_append(&state, nullptr, count);
        EXPECT_EQ(state.count[0], 24U);
        EXPECT_EQ(state.count[1], 0U);
    }
    Md5Digest digest;
    md5_finish(&state, digest.data());
    EXPECT_EQ(Hex(digest), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(ExportedMd5, CanBeStartedAgain)
{
    md5_state_t state;
    Md5Digest digest;
    for (int i = 0; i < 2; ++i)
    {
        md5_init(&state);
        md5_append(&state, reinterpret_cast<const unsigned char*>("abc"), 3);
        md5_finish(&state, digest.data());
        EXPECT_EQ(Hex(digest), "900150983cd24fb0d6963f7d28e17f72");
    }
}

TEST(ExportedMd5, CarriesIntoTheHighWordOfTheBitCount)
{
    const std::array<unsigned char, 64> block{};
    md5_state_t state;
    md5_init(&state);
    state.count[0] = 0xfffffff8;
    md5_append(&state, block.data(), 1);
    EXPECT_EQ(state.count[0], 0U);
    EXPECT_EQ(state.count[1], 1U);

    md5_init(&state);
    state.count[0] = 0xfffffe00;
    state.count[1] = 6;
    md5_append(&state, block.data(), 64);
    EXPECT_EQ(state.count[0], 0U);
    EXPECT_EQ(state.count[1], 7U);
}

// The length in bits of these 600 MiB needs more than 32 bits.
TEST(ExportedMd5, IsRightBeyond512MiB)
{
    const std::vector<unsigned char> mebibyte = SampleBytes(1 << 20);
    md5_state_t state;
    md5_init(&state);
    for (int i = 0; i < 600; ++i)
    {
        md5_append(&state, mebibyte.data(), 1 << 20);
    }
    EXPECT_EQ(state.count[0], 738197504U);
    EXPECT_EQ(state.count[1], 1U);
    Md5Digest digest;
    md5_finish(&state, digest.data());
    EXPECT_EQ(Hex(digest), "88f7876b180a7b31cdb97f71b51bc843");
}

/// One way of computing SHA-1 that this processor can run.
struct Sha1Way
{
    const char* name;
    Sha1CompressFunction compress;
};

std::vector<Sha1Way> Sha1Ways()
{
    std::vector<Sha1Way> ways{{"Portable", Sha1CompressPortable}};
    if (HasShaInstructions())
    {
        ways.push_back({"ShaInstructions", FastestSha1Compress()});
    }
    return ways;
}

template <class Way>
std::string NameOfWay(const testing::TestParamInfo<Way>& info)
{
    return info.param.name;
}

/// Keeps GoogleTest from printing the address of a function, which is another one in each run.
void PrintTo(const Sha1Way& way, std::ostream* out)
{
    *out << way.name;
}

class Sha1Test : public testing::TestWithParam<Sha1Way>
{
protected:
    static Sha1 NewSha1() { return Sha1(GetParam().compress); }

    static Sha1Digest Of(const unsigned char* data, std::size_t size)
    {
        Sha1 sha1 = NewSha1();
        sha1.Append(data, size);
        return sha1.Finish();
    }
};

INSTANTIATE_TEST_SUITE_P(, Sha1Test, testing::ValuesIn(Sha1Ways()), NameOfWay<Sha1Way>);

TEST_P(Sha1Test, GivesTheDigestsOfFips180)
{
    const Example examples[] = {
        {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
        {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrst"
         "nopqrstu",
         "a49b2446a02c645bf419f995b67091253a04a259"},
        {std::string(1'000'000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
    };
    for (const Example& example : examples)
    {
        EXPECT_EQ(Hex(Fed(NewSha1(), example.text).Finish()), example.digest);
    }
}

TEST_P(Sha1Test, IsRightForEveryLengthOfTheLastBlock)
{
    const std::vector<unsigned char> bytes = SampleBytes(kLengths);
    Sha1 all = NewSha1();
    for (std::size_t size = 0; size < kLengths; ++size)
    {
        const Sha1Digest digest = Of(bytes.data(), size);
        all.Append(digest.data(), digest.size());
    }
    EXPECT_EQ(Hex(all.Finish()), "82fa681882e216468817eb177e7bd316f8cdcbfe");
}

TEST_P(Sha1Test, DoesNotDependOnHowTheMessageIsCut)
{
    const std::vector<unsigned char> bytes = SampleBytes(kLengths);
    for (std::size_t size = 0; size < kLengths; ++size)
    {
        const Sha1Digest whole = Of(bytes.data(), size);
        for (std::size_t cut = 0; cut <= size; ++cut)
        {
            Sha1 sha1 = NewSha1();
            sha1.Append(bytes.data(), cut);
            sha1.Append(bytes.data() + cut, size - cut);
            ASSERT_EQ(sha1.Finish(), whole) << size << " bytes cut at " << cut;
        }
    }
}

TEST_P(Sha1Test, TakesBytesAtAnyAddress)
{
    const std::vector<unsigned char> bytes = SampleBytes(1000);
    const Sha1Digest expected = Of(bytes.data(), bytes.size());
    for (std::size_t offset = 1; offset < 16; ++offset)
    {
        std::vector<unsigned char> moved(offset);
        moved.insert(moved.end(), bytes.begin(), bytes.end());
        EXPECT_EQ(Of(moved.data() + offset, bytes.size()), expected) << offset;
    }
}

TEST(Sha1, OfABufferIsOneCall)
{
    Sha1Digest digest{};
    Sha1Of("abc", 3, digest.data());
    EXPECT_EQ(Hex(digest), "a9993e364706816aba3e25717850c26c9cd0d89d");
    Sha1Of(nullptr, 0, digest.data());
    EXPECT_EQ(Hex(digest), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST(Sha1, TakesTheShaInstructionsWhereTheyAre)
{
    EXPECT_EQ(FastestSha1Compress() != Sha1CompressPortable, HasShaInstructions());
    EXPECT_EQ(FastestMd5Sha1Compress() != Md5Sha1CompressPortable, HasShaInstructions());
}

/// One way of computing both digests that this processor can run.
struct PairWay
{
    const char* name;
    Md5Sha1CompressFunction compress;
};

std::vector<PairWay> PairWays()
{
    std::vector<PairWay> ways{{"Portable", Md5Sha1CompressPortable}};
    if (HasShaInstructions())
    {
        ways.push_back({"ShaInstructions", FastestMd5Sha1Compress()});
    }
    return ways;
}

void PrintTo(const PairWay& way, std::ostream* out)
{
    *out << way.name;
}

class Md5Sha1Test : public testing::TestWithParam<PairWay>
{
protected:
    static Md5Sha1 NewPair() { return Md5Sha1(GetParam().compress); }
};

INSTANTIATE_TEST_SUITE_P(, Md5Sha1Test, testing::ValuesIn(PairWays()), NameOfWay<PairWay>);

TEST_P(Md5Sha1Test, GivesBothDigests)
{
    const Md5Sha1::Digests digests = Fed(NewPair(), "abc").Finish();
    EXPECT_EQ(Hex(digests.md5), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(Hex(digests.sha1), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST_P(Md5Sha1Test, GivesWhatTheTwoGiveAloneHoweverTheMessageIsCut)
{
    const std::vector<unsigned char> bytes = SampleBytes(kLengths);
    for (std::size_t size = 0; size < kLengths; ++size)
    {
        const Md5Digest md5 = Md5Of(bytes.data(), size);
        Sha1Digest sha1{};
        Sha1Of(bytes.data(), static_cast<std::uint32_t>(size), sha1.data());
        for (std::size_t cut = 0; cut <= size; ++cut)
        {
            Md5Sha1 pair = NewPair();
            pair.Append(bytes.data(), cut);
            pair.Append(bytes.data() + cut, size - cut);
            const Md5Sha1::Digests digests = pair.Finish();
            ASSERT_EQ(digests.md5, md5) << size << " bytes cut at " << cut;
            ASSERT_EQ(digests.sha1, sha1) << size << " bytes cut at " << cut;
        }
    }
}

// The length in bits of these 600 MiB needs more than 32 bits.
TEST_P(Md5Sha1Test, IsRightBeyond512MiB)
{
    const std::vector<unsigned char> mebibyte = SampleBytes(1 << 20);
    Md5Sha1 pair = NewPair();
    for (int i = 0; i < 600; ++i)
    {
        pair.Append(mebibyte.data(), mebibyte.size());
    }
    const Md5Sha1::Digests digests = pair.Finish();
    EXPECT_EQ(Hex(digests.md5), "88f7876b180a7b31cdb97f71b51bc843");
    EXPECT_EQ(Hex(digests.sha1), "86cd647786f9b8296b5d2f909dc7b95e5cc5471c");
}

TEST(HexText, IsLowercaseHighHalfFirstAndEndsWithAZero)
{
    const auto text = HexText(std::array<unsigned char, 4>{0x01, 0xab, 0xcd, 0xf0});
    static_assert(text.size() == 9);
    EXPECT_EQ(std::string(text.data(), text.size()), std::string("01abcdf0\0", 9));

    const auto md5 = HexText(Md5Digest{});
    const auto sha1 = HexText(Sha1Digest{});
    EXPECT_EQ(std::string(md5.data()), std::string(32, '0'));
    EXPECT_EQ(std::string(sha1.data()), std::string(40, '0'));
    EXPECT_EQ(md5.size(), 33U);
    EXPECT_EQ(sha1.size(), 41U);
}

} // namespace
} // namespace quorvex
