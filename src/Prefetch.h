#pragma once

#include <cstdint>

#if defined(__SSE__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace quorvex
{

/// Asks for the bytes that a pass over memory comes to some blocks later. The processor's own guess ends at each
/// page; without this a fast digest spends a third of its time waiting there. Past the end of the memory it does
/// nothing. Static because files built for different processors must not share their code.
static inline void PrefetchAhead(const unsigned char* block)
{
#if defined(__SSE__) || defined(_M_X64)
    constexpr std::uintptr_t distance = 1024;
    _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(block) + distance), _MM_HINT_T0);
#else
    static_cast<void>(block);
#endif
}

} // namespace quorvex
