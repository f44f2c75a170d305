#pragma once

#include <functional>

/// What the host's event service does with an event.
namespace quorvex::fuzz
{

/// Called for every signal, under the event's lock.
using EventListener = std::function<void()>;

/// An empty listener ends the listening.
void Listen(void* handle, EventListener listener);

/// @return whether it was signalled; it no longer is
bool TryTake(void* handle);

/// Makes the count-th event from now on of this thread one that the system does not give; 0 makes none so.
void FailEvent(int count);

} // namespace quorvex::fuzz
