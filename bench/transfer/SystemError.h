#pragma once

namespace quorvex::bench
{

/// Throws a std::runtime_error with the call's name and the thread's last error code.
[[noreturn]] void ThrowSystemError(const char* call);

/// @param isDone what the call returned, FALSE when it failed
inline void Check(int isDone, const char* call)
{
    if (isDone == 0)
    {
        ThrowSystemError(call);
    }
}

} // namespace quorvex::bench
