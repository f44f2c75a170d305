#pragma once

#include <atomic>
#include <functional>
#include <string>

namespace quorvex::console
{

/// Ctrl+C. Where work goes block by block, it ends behind the block that is under way, so that the same command can
/// go on from there; a second Ctrl+C, and every one elsewhere, ends the program at once.

/// Whether the user wants the work to end.
inline std::atomic<bool> isAskedToStop{false};

/// As long as one lives, the work looks at isAskedToStop by itself.
class StoppableWork
{
public:
    StoppableWork();
    ~StoppableWork();

    StoppableWork(const StoppableWork&) = delete;
    StoppableWork& operator=(const StoppableWork&) = delete;
};

/// Takes Ctrl+C from now on.
/// @param tell tells what there is to say when the program is about to end at once; called on a thread of the system's
void TakeInterruptions(std::function<void()> tell);

} // namespace quorvex::console
