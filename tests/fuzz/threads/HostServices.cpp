#include "HostServices.h"

#include "Expect.h"
#include "platform/Event.h"

#include <ferrolink/event.h>
#include <ferrolink/http_session.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace quorvex::fuzz
{

namespace
{

/// A thread that does what it is given, one after the other. It ends, with all done, when it is destroyed.
class Worker
{
public:
    Worker() : m_thread([this] { Run(); }) {}
    ~Worker()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnding = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Post(std::function<void()> task)
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
        m_changed.notify_all();
    }

    bool IsThis() const { return std::this_thread::get_id() == m_thread.get_id(); }

    void Pause(bool isPaused)
    {
        const std::lock_guard lock(m_mutex);
        m_isPaused = isPaused;
        m_changed.notify_all();
    }

private:
    void Run()
    {
        std::unique_lock lock(m_mutex);
        for (;;)
        {
            m_changed.wait(lock, [this] { return m_isPaused ? false : m_isEnding || !m_tasks.empty(); });
            if (m_tasks.empty())
            {
                return;
            }
            const std::function<void()> task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_tasks;
    bool m_isEnding = false;
    bool m_isPaused = false;
    std::thread m_thread;
};

using Handle = __frl_stru_handle__*;

struct Request
{
    Handle session = nullptr;
    std::wstring url;
    frl_http_completion callback = nullptr;
    void* context = nullptr;
    int status = 0;
};

struct Host
{
    std::mutex mutex;
    std::condition_variable changed;
    std::map<void*, std::pair<frl_event_callback, void*>> registrations;
    void* running = nullptr;
    std::size_t signals = 0;

    std::map<Handle, bool> sessions;
    std::map<Handle, Request> requests;
    std::size_t hanging = 0;
    std::uintptr_t lastHandle = 0;

    // The threads end first, since they use all this. What goes over the network comes back in its own time.
    Worker eventThread;
    Worker network;

    Handle NewHandle() { return reinterpret_cast<Handle>(++lastHandle); }
};

Host& TheHost()
{
    static Host host;
    return host;
}

thread_local bool failsSession = false;
thread_local bool failsRegistration = false;

void RunCallback(void* event)
{
    Host& host = TheHost();
    std::unique_lock lock(host.mutex);
    const auto found = host.registrations.find(event);
    if (found == host.registrations.end())
    {
        return;
    }
    const auto [callback, context] = found->second;
    host.running = event;
    lock.unlock();
    if (TryTake(event))
    {
        callback(event, context);
    }
    lock.lock();
    host.running = nullptr;
    host.changed.notify_all();
}

/// Ends a request on the event thread, once.
void Complete(Handle handle, int result, int status, std::string body)
{
    Host& host = TheHost();
    host.eventThread.Post([&host, handle, result, status, text = std::move(body)] {
        Request request;
        {
            const std::lock_guard lock(host.mutex);
            const auto found = host.requests.find(handle);
            if (found == host.requests.end() || found->second.callback == nullptr)
            {
                return;
            }
            found->second.status = status;
            request = found->second;
            found->second.callback = nullptr;
            if (request.url == kHangs)
            {
                --host.hanging;
            }
        }
        request.callback(handle, result, text.empty() ? nullptr : text.data(), text.size(), request.context);
        const std::lock_guard lock(host.mutex);
        host.requests.erase(handle);
    });
}

} // namespace

void FailSession()
{
    failsSession = true;
}

void FailRegistration()
{
    failsRegistration = true;
}

void AwaitHanging(std::size_t count)
{
    Host& host = TheHost();
    std::unique_lock lock(host.mutex);
    host.changed.wait(lock, [&] { return host.hanging >= count; });
}

PausedEventThread::PausedEventThread()
{
    TheHost().eventThread.Pause(true);
    const std::lock_guard lock(TheHost().mutex);
    TheHost().signals = 0;
}

PausedEventThread::~PausedEventThread()
{
    TheHost().eventThread.Pause(false);
}

void PausedEventThread::AwaitSignals(std::size_t count)
{
    Host& host = TheHost();
    std::unique_lock lock(host.mutex);
    host.changed.wait(lock, [&] { return host.signals >= count; });
}

bool IsEverythingClosed()
{
    const std::lock_guard lock(TheHost().mutex);
    return TheHost().registrations.empty() && TheHost().sessions.empty() && TheHost().hanging == 0;
}

} // namespace quorvex::fuzz

using namespace quorvex::fuzz;

int frl_event_add_win32_event(void* event, frl_event_callback callback, void* context)
{
    static constexpr int kNoMemory = 8;

    if (std::exchange(failsRegistration, false))
    {
        return kNoMemory;
    }
    Host& host = TheHost();
    {
        const std::lock_guard lock(host.mutex);
        Expect(host.registrations.emplace(event, std::pair(callback, context)).second, "an event is registered once");
    }
    Listen(event, [&host, event] {
        {
            const std::lock_guard lock(host.mutex);
            ++host.signals;
            host.changed.notify_all();
        }
        host.eventThread.Post([event] { RunCallback(event); });
    });
    return 0;
}

int frl_event_remove_win32_event(void* event)
{
    static constexpr int kNotFound = 1168;

    Listen(event, {});
    Host& host = TheHost();
    std::unique_lock lock(host.mutex);
    if (host.registrations.erase(event) == 0)
    {
        return kNotFound;
    }
    if (!host.eventThread.IsThis())
    {
        host.changed.wait(lock, [&] { return host.running != event; });
    }
    return 0;
}

__frl_stru_handle__* frl_http_session_create()
{
    if (std::exchange(failsSession, false))
    {
        return nullptr;
    }
    Host& host = TheHost();
    const std::lock_guard lock(host.mutex);
    const Handle session = host.NewHandle();
    host.sessions[session] = true;
    return session;
}

void frl_http_session_close(__frl_stru_handle__* session)
{
    Host& host = TheHost();
    std::vector<Handle> open;
    {
        const std::lock_guard lock(host.mutex);
        Expect(host.sessions.erase(session) == 1, "a session is closed once");
        std::erase_if(host.requests, [&](const auto& entry) {
            return entry.second.session == session && entry.second.callback == nullptr && entry.second.status == 0;
        });
        for (const auto& [handle, request] : host.requests)
        {
            if (request.session == session)
            {
                open.push_back(handle);
            }
        }
    }
    for (const Handle handle : open)
    {
        Complete(handle, FRL_HTTP_CLOSED, 0, {});
    }
}

__frl_stru_handle__* frl_http_request_open(__frl_stru_handle__* session, const wchar_t* method, const wchar_t* url,
                                           const wchar_t* headers)
{
    Expect(method != nullptr && url != nullptr && headers != nullptr, "a request has its texts");
    Host& host = TheHost();
    Expect(host.eventThread.IsThis(), "requests are made on the event thread");
    const std::lock_guard lock(host.mutex);
    if (host.sessions.count(session) == 0 || std::wstring_view(url) == kOpenFails)
    {
        return nullptr;
    }
    const Handle handle = host.NewHandle();
    host.requests[handle] = {.session = session, .url = url};
    return handle;
}

int frl_http_request_add_cookie(__frl_stru_handle__* request, const wchar_t* cookie)
{
    const std::lock_guard lock(TheHost().mutex);
    return TheHost().requests.count(request) == 0 || std::wstring_view(cookie) == kBadCookie ? 1 : 0;
}

int frl_http_request_set_timeouts(__frl_stru_handle__* request, int /*resolve*/, int /*connect*/, int /*send*/,
                                  int /*receive*/)
{
    const std::lock_guard lock(TheHost().mutex);
    const auto found = TheHost().requests.find(request);
    return found == TheHost().requests.end() || found->second.url == kTimeoutsFail ? 1 : 0;
}

int frl_http_request_perform(__frl_stru_handle__* request, const void* body, size_t length,
                             frl_http_completion callback, void* context)
{
    Host& host = TheHost();
    const std::lock_guard lock(host.mutex);
    const auto found = host.requests.find(request);
    if (found == host.requests.end())
    {
        return 1;
    }
    if (found->second.url == kPerformFails || host.sessions.count(found->second.session) == 0)
    {
        host.requests.erase(found);
        return 1;
    }
    found->second.callback = callback;
    found->second.context = context;
    const std::wstring url = found->second.url;
    if (url == kHangs)
    {
        ++host.hanging;
        host.changed.notify_all();
        return 0;
    }
    // The body is the caller's until the completion only, which may come from the session's end.
    host.network.Post([request, url, text = std::string(static_cast<const char*>(body), length)] {
        if (url == kFails || url == kTimesOut)
        {
            Complete(request, url == kFails ? FRL_HTTP_FAILED : FRL_HTTP_TIMED_OUT, 0, {});
        }
        else if (url == kMissing)
        {
            Complete(request, FRL_HTTP_COMPLETED, 404, {});
        }
        else
        {
            Complete(request, FRL_HTTP_COMPLETED, 200, text);
        }
    });
    return 0;
}

int frl_http_request_get_status_code(__frl_stru_handle__* request)
{
    const std::lock_guard lock(TheHost().mutex);
    const auto found = TheHost().requests.find(request);
    return found == TheHost().requests.end() ? 0 : found->second.status;
}
