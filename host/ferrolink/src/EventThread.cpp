#include "EventThread.h"

#include "Guarded.h"
#include "Immortal.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ferrolink
{

/// One registered event. As a task it is a signal that the thread pool has seen.
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
    HANDLE m_poolWait = nullptr;
    __frl_stru_handle__* m_poolName = nullptr;
    bool m_isQueued = false;
    bool m_isRemoved = false;
};

EventThread& EventThread::Get() noexcept
{
    return Immortal<EventThread>();
}

int EventThread::Start() noexcept
{
    const std::lock_guard lock(m_mutex);
    if (m_thread)
        return 0;
    HMODULE self = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                            reinterpret_cast<const wchar_t*>(&ThreadMain), &self))
        return static_cast<int>(GetLastError());
    if (!m_wake)
        m_wake.reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!m_wake)
        return static_cast<int>(GetLastError());
    m_thread.reset(CreateThread(nullptr, 0, ThreadMain, this, 0, &m_threadId));
    return m_thread ? 0 : static_cast<int>(GetLastError());
}

DWORD WINAPI EventThread::ThreadMain(void* self) noexcept
{
    static_cast<EventThread*>(self)->Loop();
}

void EventThread::Loop() noexcept
{
    for (;;)
    {
        RunTasks();
        const DWORD place = WaitForSignals();
        std::shared_ptr<Registration> signalled;
        {
            const std::lock_guard lock(m_mutex);
            m_isWaiting = false;
            ++m_waits;
            if (m_removers != 0)
                m_left.notify_all();
            if (place >= m_direct.size())
                continue;
            // The system prefers the first of several, so whoever has had its turn goes last.
            const auto at = m_direct.begin() + static_cast<std::ptrdiff_t>(place);
            std::rotate(at, at + 1, m_direct.end());
            signalled = m_direct.back();
        }
        Call(*signalled);
    }
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
        const std::shared_ptr<EventTask> next = std::move(task->m_next);
        task->Run();
        task = next;
    }
}

/// @return the signalled event's place in m_direct, or any higher number when it was something else
DWORD EventThread::WaitForSignals() noexcept
{
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> handles{};
    DWORD count = 0;
    DWORD limit = INFINITE;
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_direct, [](const auto& registration) { return registration->m_isRemoved; });
        for (const auto& registration : m_direct)
            handles[count++] = registration->m_event.get();
        m_isWaiting = true;
        if (m_first)
            limit = 0;
    }
    handles[count] = m_wake.get();
    const DWORD place = WaitForMultipleObjects(count + 1, handles.data(), FALSE, limit);
    return place < count ? place : MAXIMUM_WAIT_OBJECTS;
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
    if (m_isWaiting)
        SetEvent(m_wake.get());
}

/// Systems differ in whether a signal may still come through after its wait has ended; by its name it is recognised.
void CALLBACK EventThread::OnPoolSignal(void* name, BOOLEAN /*timedOut*/) noexcept
{
    EventThread& thread = Get();
    auto registration = thread.m_pooled.Find(static_cast<__frl_stru_handle__*>(name));
    if (!registration)
        return;
    const std::lock_guard lock(thread.m_mutex);
    if (!std::exchange(registration->m_isQueued, true))
        thread.Enqueue(std::move(registration));
}

int EventThread::Add(void* event, frl_event_callback callback, void* context)
{
    if (callback == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (const int error = Start(); error != 0)
        return error;
    const HANDLE process = GetCurrentProcess();
    HANDLE own = nullptr;
    if (!DuplicateHandle(process, event, process, &own, SYNCHRONIZE, FALSE, 0))
        return static_cast<int>(GetLastError());
    const auto registration = std::make_shared<Registration>(KernelHandle(own), callback, context, event);

    const std::lock_guard lock(m_mutex);
    const auto [place, isNew] = m_registrations.emplace(event, registration);
    if (!isNew)
        return ERROR_ALREADY_EXISTS;
    const int error = Guarded<int>(ERROR_NOT_ENOUGH_MEMORY, [&] { return Watch(registration); });
    if (error != 0)
        m_registrations.erase(place);
    return error;
}

int EventThread::Watch(const std::shared_ptr<Registration>& registration)
{
    if (m_direct.size() < kMostDirect)
    {
        m_direct.push_back(registration);
        if (m_isWaiting)
            SetEvent(m_wake.get());
        return 0;
    }
    registration->m_poolName = m_pooled.Insert(registration);
    if (RegisterWaitForSingleObject(&registration->m_poolWait, registration->m_event.get(), OnPoolSignal,
                                    registration->m_poolName, INFINITE, WT_EXECUTEINWAITTHREAD))
        return 0;
    const DWORD error = GetLastError();
    m_pooled.Take(registration->m_poolName);
    return static_cast<int>(error);
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
    if (registration->m_poolWait != nullptr)
    {
        lock.unlock();
        m_pooled.Take(registration->m_poolName);
        UnregisterWaitEx(registration->m_poolWait, INVALID_HANDLE_VALUE);
        lock.lock();
    }
    if (GetCurrentThreadId() != m_threadId)
        WaitUntilLeft(*registration, lock);
    return 0;
}

/// Waits until the thread neither waits for the event, whose signals are its owner's again, nor runs the callback.
/// Other callbacks are not waited for.
void EventThread::WaitUntilLeft(const Registration& registration, std::unique_lock<std::mutex>& lock) noexcept
{
    const std::uint64_t waits = m_waits;
    const bool isAwaited = m_isWaiting && registration.m_poolWait == nullptr;
    if (isAwaited)
        SetEvent(m_wake.get());
    const auto isLeft = [&] { return (!isAwaited || m_waits != waits) && m_running != registration.m_name; };
    ++m_removers;
    // A process that ends kills its threads first; whoever cleans up after that must not wait for a dead one.
    while (!m_left.wait_for(lock, std::chrono::seconds(1), isLeft) && IsThreadAlive())
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
