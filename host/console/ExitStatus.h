#pragma once

/// How the program ends.
namespace quorvex::console::ExitStatus
{

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;         ///< the command line is wrong; nothing was done
inline constexpr int kInterrupted = 130; ///< by Ctrl+C, as shells number it

} // namespace quorvex::console::ExitStatus
