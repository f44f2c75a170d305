#pragma once

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define QUORVEX_X86 1
#else
#define QUORVEX_X86 0
#endif

namespace quorvex
{

/// @return whether the processor has the SHA extensions and the vector instructions that go with them
///         (SSSE3 and SSE4.1)
bool HasShaInstructions();

} // namespace quorvex
