#include "CpuFeatures.h"

#if QUORVEX_X86
#ifdef _MSC_VER
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#endif

namespace quorvex
{

#if QUORVEX_X86
namespace
{

struct CpuidRegisters
{
    unsigned int eax, ebx, ecx, edx;
};

/// All zero for a leaf that the processor does not have.
CpuidRegisters Cpuid(unsigned int leaf)
{
    CpuidRegisters registers{};
#ifdef _MSC_VER
    int values[4];
    __cpuid(values, 0);
    if (static_cast<unsigned int>(values[0]) >= leaf)
    {
        __cpuidex(values, static_cast<int>(leaf), 0);
        registers = {static_cast<unsigned int>(values[0]), static_cast<unsigned int>(values[1]),
                     static_cast<unsigned int>(values[2]), static_cast<unsigned int>(values[3])};
    }
#else
    __get_cpuid_count(leaf, 0, &registers.eax, &registers.ebx, &registers.ecx, &registers.edx);
#endif
    return registers;
}

bool DetectShaInstructions()
{
    constexpr unsigned int ssse3 = 1U << 9;
    constexpr unsigned int sse41 = 1U << 19;
    constexpr unsigned int sha = 1U << 29;
    return (Cpuid(1).ecx & ssse3) != 0 && (Cpuid(1).ecx & sse41) != 0 && (Cpuid(7).ebx & sha) != 0;
}

} // namespace

bool HasShaInstructions()
{
    static const bool has = DetectShaInstructions();
    return has;
}
#else
bool HasShaInstructions()
{
    return false;
}
#endif

} // namespace quorvex
