#include "EventThread.h"

#include "Guarded.h"
#include "Immortal.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace ferrolink
{

namespace
{

// One place is for waking the thread.
constexpr std::size_t kMostEvents = MAXIMUM_WAIT_OBJECTS - 1;

} // namespace

/// One registered event. As a task it is a signal that a further watcher has seen.
class EventThread::Registration final : public EventTask
{
public:
    Registration(KernelHandle event, frl_event_callback callback, void* context, void* name)
        : m_event(std::move(event)), m_callback(callback), m_context(context), m_name(name)
    {
    }

    void Run() noexcept override { Get().Call(*this); }

    // A handle of our own: the caller's may be closed too early, and waiting for it would then fail for all.
    KernelHandle m_event;
    frl_event_callback m_callback;
    void* m_context;
    void* m_name;
    Watcher* m_watcher = nullptr;
    bool m_isQueued = false;
    bool m_isRemoved = false;
};

EventThread& EventThread::Get() noexcept
{
    return Immortal<EventThread>();
}

int EventThread::Watcher::Start(LPTHREAD_START_ROUTINE main) noexcept
{
    if (!wake)
        wake.reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (wake)
        thread.reset(CreateThread(nullptr, 0, main, this, 0, &threadId));
    return thread ? 0 : static_cast<int>(GetLastError());
}

void EventThread::Watcher::Wake() const noexcept
{
    if (isWaiting)
        SetEvent(wake.get());
}

int EventThread::Start() noexcept
{
    const std::lock_guard lock(m_mutex);
    if (m_main.thread)
        return 0;
    HMODULE self = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                            reinterpret_cast<const wchar_t*>(&RunEventThread), &self))
        return static_cast<int>(GetLastError());
    return m_main.Start(RunEventThread);
}

DWORD WINAPI EventThread::RunEventThread(void* watcher) noexcept
{
    EventThread& self = Get();
    for (;;)
    {
        self.RunTasks();
        if (const auto registration = self.NextSignal(*static_cast<Watcher*>(watcher)))
            self.Call(*registration);
    }
}

DWORD WINAPI EventThread::RunFurtherWatcher(void* watcher) noexcept
{
    EventThread& self = Get();
    for (;;)
    {
        if (auto registration = self.NextSignal(*static_cast<Watcher*>(watcher)))
            self.EnqueueSignal(std::move(registration));
    }
}

/// Waits.
/// @return the event that was signalled; null when it was something else
std::shared_ptr<EventThread::Registration> EventThread::NextSignal(Watcher& watcher) noexcept
{
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> handles{};
    DWORD count = 0;
    DWORD limit = INFINITE;
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(watcher.events, [](const auto& registration) { return registration->m_isRemoved; });
        for (const auto& registration : watcher.events)
            handles[count++] = registration->m_event.get();
        watcher.isWaiting = true;
        if (&watcher == &m_main && m_first)
            limit = 0;
    }
    handles[count] = watcher.wake.get();
    const DWORD place = WaitForMultipleObjects(count + 1, handles.data(), FALSE, limit);

    const std::lock_guard lock(m_mutex);
    watcher.isWaiting = false;
    ++watcher.waits;
    if (m_removers != 0)
        m_left.notify_all();
    if (place >= count)
        return nullptr;
    // The system prefers the first of several, so whoever has had its turn goes last.
    const auto at = watcher.events.begin() + static_cast<std::ptrdiff_t>(place);
    std::rotate(at, at + 1, watcher.events.end());
    return watcher.events.back();
}

/// Runs what is queued by now, and not what is queued meanwhile: events get their turn in between.
void EventThread::RunTasks() noexcept
{
    std::shared_ptr<EventTask> task;
    {
        const std::lock_guard lock(m_mutex);
        task = std::move(m_first);
        m_last = nullptr;
    }
    while (task)
    {
        // Taken out first: a task may be queued again as soon as it runs.
        const std::shared_ptr<EventTask> next = std::move(task->m_next);
        task->Run();
        task = next;
    }
}

void EventThread::Call(Registration& registration) noexcept
{
    {
        const std::lock_guard lock(m_mutex);
        registration.m_isQueued = false;
        if (registration.m_isRemoved)
            return;
        m_running = registration.m_name;
    }
    registration.m_callback(registration.m_name, registration.m_context);
    const std::lock_guard lock(m_mutex);
    m_running = nullptr;
    if (m_removers != 0)
        m_left.notify_all();
}

void EventThread::Post(std::shared_ptr<EventTask> task) noexcept
{
    const std::lock_guard lock(m_mutex);
    Enqueue(std::move(task));
}

void EventThread::Enqueue(std::shared_ptr<EventTask> task) noexcept
{
    EventTask* const last = task.get();
    (m_last != nullptr ? m_last->m_next : m_first) = std::move(task);
    m_last = last;
    m_main.Wake();
}

void EventThread::EnqueueSignal(std::shared_ptr<Registration> registration) noexcept
{
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(registration->m_isQueued, true))
        Enqueue(std::move(registration));
}

int EventThread::Add(void* event, frl_event_callback callback, void* context)
{
    if (callback == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (const int error = Start(); error != 0)
        return error;
    auto* const process = GetCurrentProcess();
    HANDLE own = nullptr;
    if (!DuplicateHandle(process, event, process, &own, SYNCHRONIZE, FALSE, 0))
        return static_cast<int>(GetLastError());
    const auto registration = std::make_shared<Registration>(KernelHandle(own), callback, context, event);

    const std::lock_guard lock(m_mutex);
    if (m_registrations.contains(event))
        return ERROR_ALREADY_EXISTS;
    Watcher* const watcher = WatcherWithRoom();
    if (watcher == nullptr)
        return static_cast<int>(GetLastError());
    watcher->events.reserve(kMostEvents);
    m_registrations.emplace(event, registration);
    registration->m_watcher = watcher;
    watcher->events.push_back(registration);
    watcher->Wake();
    return 0;
}

/// @return null when the system refuses another thread
EventThread::Watcher* EventThread::WatcherWithRoom()
{
    const auto hasRoom = [](const Watcher& watcher) { return watcher.events.size() < kMostEvents; };
    if (hasRoom(m_main))
        return &m_main;
    const auto place = std::ranges::find_if(m_further, [&](const auto& watcher) { return hasRoom(*watcher); });
    if (place != m_further.end())
        return place->get();
    auto watcher = std::make_unique<Watcher>();
    m_further.reserve(m_further.size() + 1);
    if (watcher->Start(RunFurtherWatcher) != 0)
        return nullptr;
    m_further.push_back(std::move(watcher));
    return m_further.back().get();
}

int EventThread::Remove(void* event) noexcept
{
    std::unique_lock lock(m_mutex);
    const auto place = m_registrations.find(event);
    if (place == m_registrations.end())
        return ERROR_NOT_FOUND;
    const std::shared_ptr<Registration> registration = std::move(place->second);
    m_registrations.erase(place);
    registration->m_isRemoved = true;
    WaitUntilLeft(*registration, lock);
    return 0;
}

/// Waits until no thread waits for the event, whose signals are its owner's again, nor runs its callback. Other
/// callbacks are not waited for.
void EventThread::WaitUntilLeft(const Registration& registration, std::unique_lock<std::mutex>& lock) noexcept
{
    const Watcher& watcher = *registration.m_watcher;
    const std::uint64_t waits = watcher.waits;
    const bool isAwaited = watcher.isWaiting;
    const bool isOwnThread = GetCurrentThreadId() == m_main.threadId;
    const auto isLeft = [&] {
        return (!isAwaited || watcher.waits != waits) && (isOwnThread || m_running != registration.m_name);
    };
    watcher.Wake();
    ++m_removers;
    // A process that ends kills its threads first; whoever cleans up after that must not wait for a dead one.
    while (!m_left.wait_for(lock, std::chrono::seconds(1), isLeft) &&
           WaitForSingleObject(m_main.thread.get(), 0) == WAIT_TIMEOUT)
    {
    }
    --m_removers;
}

} // namespace ferrolink

extern "C"
{

    int frl_event_add_win32_event(void* event, frl_event_callback callback, void* context)
    {
        const auto add = [&] { return ferrolink::EventThread::Get().Add(event, callback, context); };
        return ferrolink::Guarded<int>(ERROR_NOT_ENOUGH_MEMORY, add);
    }

    int frl_event_remove_win32_event(void* event)
    {
        return ferrolink::EventThread::Get().Remove(event);
    }

} // extern "C"
