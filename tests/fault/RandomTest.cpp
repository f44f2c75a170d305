// Where the boundaries' randomness comes from: the secure generator, and the C library's own where that one fails.

#include "CommonUtil.h"

#include "support/ImportTable.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>

// The C runtime's pointer to the function: the only entry through which it is called.
extern "C" int(__cdecl* __MINGW_IMP_SYMBOL(rand_s))(unsigned int*); // NOLINT(bugprone-reserved-identifier)

namespace
{

using quorvex::BoundaryToken;

unsigned secureDraws;
unsigned draws;

/// Five characters from the low end: "1", "2", "3", "4", and a number that goes up; then two bits for nothing.
int __cdecl knownNumber(unsigned int* number)
{
    *number = 1U | 2U << 6U | 3U << 12U | 4U << 18U | (10U + secureDraws) << 24U | 3U << 30U;
    ++secureDraws;
    return 0;
}

int __cdecl noNumber(unsigned int* number)
{
    *number = 0xFFFFFFFF;
    ++secureDraws;
    return EINVAL;
}

int __cdecl plainNumber()
{
    ++draws;
    return 5 | 6 << 6 | 7 << 12;
}

class Random : public testing::Test
{
protected:
    Random()
    {
        secureDraws = 0;
        draws = 0;
    }

    static support::ImportPatch secureGenerator(int(__cdecl* replacement)(unsigned int*))
    {
        return {reinterpret_cast<void**>(&__MINGW_IMP_SYMBOL(rand_s)), reinterpret_cast<void*>(replacement)};
    }

private:
    support::ImportPatch m_plain{support::ImportTable(GetModuleHandleW(nullptr)).entry("rand"),
                                 reinterpret_cast<void*>(&plainNumber)};
};

TEST_F(Random, FiveCharactersComeFromEachOfEightNumbers)
{
    const support::ImportPatch patch = secureGenerator(&knownNumber);
    EXPECT_EQ(BoundaryToken(), "1234a1234b1234c1234d1234e1234f1234g1234h");
    EXPECT_EQ(secureDraws, 8u);
    EXPECT_EQ(draws, 0u);
}

TEST_F(Random, ThePlainGeneratorStandsInForTheSecureOne)
{
    const support::ImportPatch patch = secureGenerator(&noNumber);
    EXPECT_EQ(BoundaryToken(), "5670056700567005670056700567005670056700");
    EXPECT_EQ(secureDraws, 8u);
    EXPECT_EQ(draws, 8u);
}

} // namespace
