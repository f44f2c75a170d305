#include "http_sync.h"

#include "CommonUtil.h"

#include <ferrolink/event.h>
#include <quorvex/Results.h>

#include <mutex>
#include <new>

namespace quorvex
{

namespace
{

constexpr unsigned long kSpinCount = 4000;

} // namespace

__frl_stru_handle__* CreateSession()
{
    __frl_stru_handle__* const session = frl_http_session_create();
    if (session == nullptr)
    {
        LOG_FAILED_CALL(L"frl_http_session_create error");
    }
    return session;
}

void CloseSession(std::atomic<__frl_stru_handle__*>& session)
{
    if (__frl_stru_handle__* const handle = session.exchange(nullptr); handle != nullptr)
    {
        frl_http_session_close(handle);
    }
}

RequestDispatcher::RequestDispatcher(SyncTimeouts timeouts) : m_timeouts(timeouts), m_lock(kSpinCount)
{
    if (!m_requestCame)
    {
        LOG_FAILED_CALL(L"CreateEvent error");
        return;
    }
    const int result = frl_event_add_win32_event(m_requestCame.Handle(), OnSignalled, this);
    m_isRegistered = result == 0;
    if (!m_isRegistered)
    {
        LOG_ERROR(L"frl_event_add_win32_event error, return " << result);
    }
}

RequestDispatcher::~RequestDispatcher()
{
    std::list<PendingRequest> abandoned;
    {
        const std::lock_guard lock(m_lock);
        m_isStopping = true;
        abandoned.swap(m_queue);
    }
    for (const PendingRequest& pending : abandoned)
    {
        Complete(*pending.waiter, FRL_HTTP_CLOSED, 0, {});
    }
    if (m_isRegistered)
    {
        frl_event_remove_win32_event(m_requestCame.Handle());
    }
}

int RequestDispatcher::Perform(__frl_stru_handle__* session, const SyncRequest& request, SyncAnswer* answer)
{
    if (session == nullptr || !m_isRegistered)
    {
        return Result::RequestRefused;
    }
    Waiter waiter{{}, answer, request.longest};
    if (!waiter.done)
    {
        LOG_FAILED_CALL(L"CreateEvent error");
        return Result::RequestRefused;
    }
    const int result = Enqueue({session, request, &waiter});
    if (result == Result::Ok)
    {
        waiter.done.Wait();
    }
    if (waiter.isOutOfMemory)
    {
        throw std::bad_alloc();
    }
    return result;
}

int RequestDispatcher::Enqueue(const PendingRequest& pending)
{
    const std::lock_guard lock(m_lock);
    if (m_isStopping)
    {
        return Result::RequestRefused;
    }
    m_queue.push_back(pending);
    m_requestCame.Set();
    return Result::Ok;
}

void RequestDispatcher::OnSignalled(void* /*event*/, void* context)
{
    auto& dispatcher = *static_cast<RequestDispatcher*>(context);
    std::list<PendingRequest> requests;
    {
        const std::lock_guard lock(dispatcher.m_lock);
        requests.swap(dispatcher.m_queue);
    }
    for (const PendingRequest& pending : requests)
    {
        dispatcher.Start(pending);
    }
}

void RequestDispatcher::Start(const PendingRequest& pending) const
{
    const SyncRequest& what = pending.request;
    __frl_stru_handle__* const request = frl_http_request_open(pending.session, what.method, what.url, what.headers);
    if (request == nullptr)
    {
        Complete(*pending.waiter, FRL_HTTP_FAILED, 0, {});
        return;
    }
    if (*what.cookie != L'\0' && frl_http_request_add_cookie(request, what.cookie) != 0)
    {
        LOG_ERROR(L"frl_http_request_add_cookie error");
    }
    if (frl_http_request_set_timeouts(request, m_timeouts.resolve, m_timeouts.connect, m_timeouts.send,
                                      m_timeouts.receive) != 0)
    {
        LOG_ERROR(L"frl_http_request_set_timeouts error");
    }
    const int result =
        frl_http_request_perform(request, what.body.data(), what.body.size(), OnCompleted, pending.waiter);
    if (result != 0)
    {
        // What perform returns is none of the results that a request ends with.
        LOG_ERROR(L"frl_http_request_perform error, return " << result);
        Complete(*pending.waiter, FRL_HTTP_FAILED, 0, {});
    }
}

void RequestDispatcher::OnCompleted(__frl_stru_handle__* request, int result, const void* body, size_t length,
                                    void* context)
{
    const std::string_view text =
        body != nullptr ? std::string_view(static_cast<const char*>(body), length) : std::string_view();
    Complete(*static_cast<Waiter*>(context), result, frl_http_request_get_status_code(request), text);
}

/// The waiter is gone as soon as its event is set.
void RequestDispatcher::Complete(Waiter& waiter, int result, int code, std::string_view body)
{
    static constexpr int kLastGoodCode = 299;

    if (waiter.answer == nullptr)
    {
        LOG_ERROR(L"! frl_http_request_sync _sync_cb rd is empty!");
        waiter.done.Set();
        return;
    }
    if (body.size() > waiter.longest)
    {
        LOG_ERROR(L"_sync_cb gives too long a response, limit=" << waiter.longest);
        result = FRL_HTTP_FAILED;
        body = {};
    }
    SyncAnswer& answer = *waiter.answer;
    answer.result = result;
    answer.code = code;
    try
    {
        answer.body = body;
    }
    catch (const std::bad_alloc&)
    {
        // The waiting thread raises it again.
        answer.body.clear();
        waiter.isOutOfMemory = true;
    }
    if (answer.result == FRL_HTTP_COMPLETED && answer.code <= kLastGoodCode)
    {
        LOG_DEBUG(L"_sync_cb result=" << answer.result << L" code=" << answer.code << L" body=\"" << answer.body
                                      << L"\"");
    }
    else
    {
        LOG_ERROR(L"_sync_cb result=" << answer.result << L" code=" << answer.code << L" body=\"" << answer.body
                                      << L"\"");
    }
    waiter.done.Set();
}

} // namespace quorvex
