#ifndef FERROLINK_GUARDED_H
#define FERROLINK_GUARDED_H

#include <utility>

namespace ferrolink
{

/// Runs something that may run out of memory; nothing thrown leaves the library.
template <typename Result, typename Action>
Result Guarded(Result otherwise, Action&& action) noexcept
{
    try
    {
        return std::forward<Action>(action)();
    }
    catch (...)
    {
        return otherwise;
    }
}

} // namespace ferrolink

#endif
