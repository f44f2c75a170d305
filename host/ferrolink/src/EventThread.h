#ifndef FERROLINK_EVENTTHREAD_H
#define FERROLINK_EVENTTHREAD_H

#include <ferrolink/event.h>

#include "HandleTable.h"
#include "Handles.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace ferrolink
{

/// Something to be done on the event thread. Queueing it takes no memory, and so cannot fail.
class EventTask
{
public:
    EventTask() = default;
    virtual ~EventTask() = default;

    EventTask(const EventTask&) = delete;
    EventTask& operator=(const EventTask&) = delete;

    virtual void Run() noexcept = 0;

private:
    friend class EventThread;

    std::shared_ptr<EventTask> m_next;
};

/// The event thread, with what is queued for it and the events it watches.
///
/// The system waits for 64 objects at a time. The thread waits for its first events itself, which wakes it by the
/// shortest way; any further ones are watched by the system's thread pool, which queues their signals here.
class EventThread
{
public:
    /// The only one.
    static EventThread& Get() noexcept;

    EventThread() { m_direct.reserve(kMostDirect); }
    ~EventThread() = default;

    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    /// Starts the thread unless it runs. From then on the library stays loaded, so that nobody has to wait for
    /// the thread's end, which unloading could not do without a deadlock.
    /// @return 0, or the system's error code
    int Start() noexcept;

    /// Queues a task; the thread must have been started. Tasks run in the order in which they came.
    void Post(std::shared_ptr<EventTask> task) noexcept;

    /// @return 0, or the system's error code
    int Add(void* event, frl_event_callback callback, void* context);

    /// @return 0, or the system's error code
    int Remove(void* event) noexcept;

private:
    class Registration;

    static DWORD WINAPI ThreadMain(void* self) noexcept;
    static void CALLBACK OnPoolSignal(void* name, BOOLEAN timedOut) noexcept;

    [[noreturn]] void Loop() noexcept;
    void RunTasks() noexcept;
    DWORD WaitForSignals() noexcept;
    void Call(Registration& registration) noexcept;
    void Enqueue(std::shared_ptr<EventTask> task) noexcept;
    int Watch(const std::shared_ptr<Registration>& registration);
    void WaitUntilLeft(const Registration& registration, std::unique_lock<std::mutex>& lock) noexcept;
    bool IsThreadAlive() const noexcept { return WaitForSingleObject(m_thread.get(), 0) == WAIT_TIMEOUT; }

    static constexpr std::size_t kMostDirect = MAXIMUM_WAIT_OBJECTS - 1;

    HandleTable<Registration> m_pooled;

    std::mutex m_mutex; // guards everything below
    std::condition_variable m_left;
    KernelHandle m_thread;
    DWORD m_threadId = 0;
    KernelHandle m_wake;

    std::shared_ptr<EventTask> m_first;
    EventTask* m_last = nullptr;

    std::map<void*, std::shared_ptr<Registration>> m_registrations;
    // Others only append to it; the thread itself erases and moves, so that places are the same before and after
    // its wait.
    std::vector<std::shared_ptr<Registration>> m_direct;

    bool m_isWaiting = false;
    std::uint64_t m_waits = 0;
    void* m_running = nullptr; // the event whose callback runs, which may have been registered anew meanwhile
    unsigned m_removers = 0;
};

} // namespace ferrolink

#endif
