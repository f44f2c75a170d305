#ifndef FERROLINK_EVENTTHREAD_H
#define FERROLINK_EVENTTHREAD_H

#include <ferrolink/event.h>

#include "Handles.h"

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
/// The system waits for 64 objects at a time. The thread waits for the first events itself, which wakes it by the
/// shortest way; any further ones have threads that only wait, and queue the signals that they see.
class EventThread
{
public:
    /// The only one.
    static EventThread& Get() noexcept;

    EventThread() = default;
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

    /// A thread that waits, and the events that it waits for.
    struct Watcher
    {
        int Start(LPTHREAD_START_ROUTINE main) noexcept;
        void Wake() const noexcept;

        KernelHandle thread;
        DWORD threadId = 0;
        KernelHandle wake;
        // Others only append to it; the thread itself erases and moves, so that places are the same before and after
        // its wait.
        std::vector<std::shared_ptr<Registration>> events;
        bool isWaiting = false;
        std::uint64_t waits = 0;
    };

    static DWORD WINAPI RunEventThread(void* watcher) noexcept;
    static DWORD WINAPI RunFurtherWatcher(void* watcher) noexcept;

    std::shared_ptr<Registration> NextSignal(Watcher& watcher) noexcept;
    void RunTasks() noexcept;
    void Call(Registration& registration) noexcept;
    void Enqueue(std::shared_ptr<EventTask> task) noexcept;
    void EnqueueSignal(std::shared_ptr<Registration> registration) noexcept;
    Watcher* WatcherWithRoom();
    void WaitUntilLeft(const Registration& registration, std::unique_lock<std::mutex>& lock) noexcept;

    std::mutex m_mutex; // guards everything below, the watchers included
    std::condition_variable m_left;
    Watcher m_main;
    std::vector<std::unique_ptr<Watcher>> m_further;
    std::map<void*, std::shared_ptr<Registration>> m_registrations;

    std::shared_ptr<EventTask> m_first;
    EventTask* m_last = nullptr;

    void* m_running = nullptr; // the event whose callback runs, which may have been registered anew meanwhile
    unsigned m_removers = 0;
};

} // namespace ferrolink

#endif
