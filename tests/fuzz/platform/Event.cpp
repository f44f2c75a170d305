#include "Event.h"

#include "Platform/Event.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace
{

struct State
{
    std::mutex mutex;
    std::condition_variable changed;
    bool isSet = false;
    quorvex::fuzz::EventListener listener;
};

State& StateOf(void* handle)
{
    return *static_cast<State*>(handle);
}

thread_local int eventsUntilFailure = 0;

bool HasEvent()
{
    return eventsUntilFailure == 0 || --eventsUntilFailure != 0;
}

} // namespace

namespace quorvex::fuzz
{

void FailEvent(int count)
{
    eventsUntilFailure = count;
}

void Listen(void* handle, EventListener listener)
{
    State& state = StateOf(handle);
    const std::lock_guard lock(state.mutex);
    state.listener = std::move(listener);
    if (state.isSet && state.listener)
    {
        state.listener();
    }
}

bool TryTake(void* handle)
{
    State& state = StateOf(handle);
    const std::lock_guard lock(state.mutex);
    return std::exchange(state.isSet, false);
}

} // namespace quorvex::fuzz

namespace quorvex::Platform
{

Event::Event() : m_handle(HasEvent() ? new State : nullptr)
{
}

Event::~Event()
{
    delete static_cast<State*>(m_handle);
}

void Event::Set() const
{
    if (m_handle == nullptr)
    {
        return;
    }
    State& state = StateOf(m_handle);
    const std::lock_guard lock(state.mutex);
    state.isSet = true;
    if (state.listener)
    {
        state.listener();
    }
    // Notified under the lock: a waiter that is through may do away with the event.
    state.changed.notify_one();
}

void Event::Wait() const
{
    if (m_handle == nullptr)
    {
        return;
    }
    State& state = StateOf(m_handle);
    std::unique_lock lock(state.mutex);
    state.changed.wait(lock, [&] { return state.isSet; });
    state.isSet = false;
}

} // namespace quorvex::Platform
