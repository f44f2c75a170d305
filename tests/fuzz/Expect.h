#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program when a property does not hold; the fuzzer keeps the input then.
inline void Expect(bool holds, const char* property)
{
    if (!holds)
    {
        std::fprintf(stderr, "This does not hold: %s\n", property);
        std::abort();
    }
}
