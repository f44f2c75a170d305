#include <ferrolink/http_session.h>

#include "EventThread.h"
#include "Guarded.h"
#include "HttpRequest.h"

#include <memory>

namespace
{

using namespace ferrolink;

using Handle = __frl_stru_handle__*;

Handle OpenSession()
{
    if (EventThread::Get().Start() != 0)
        return nullptr;
    auto session = HttpSession::Open();
    return session ? Sessions().Insert(std::move(session)) : nullptr;
}

void CloseSession(Handle handle) noexcept
{
    const std::shared_ptr<HttpSession> session = Sessions().Take(handle);
    if (!session)
        return;
    session->Close();
    Requests().EraseIf([&](HttpRequest& request) { return &request.Session() == session.get() && request.Abandon(); });
}

Handle OpenRequest(Handle sessionHandle, const wchar_t* method, const wchar_t* url, const wchar_t* headers)
{
    const std::shared_ptr<HttpSession> session = Sessions().Find(sessionHandle);
    if (!session)
        return nullptr;
    const auto request = HttpRequest::Open(session, method, url, headers);
    if (!request)
        return nullptr;
    auto* const handle = Guarded<Handle>(nullptr, [&] { return Requests().Insert(request); });
    request->SetHandle(handle);
    // Whoever closed the session meanwhile may have gone through the table before the request was in it.
    if (handle == nullptr || session->IsClosed())
    {
        Requests().Take(handle);
        request->Release();
        return nullptr;
    }
    return handle;
}

int PerformRequest(Handle handle, const void* body, std::size_t length, frl_http_completion callback, void* context)
{
    const std::shared_ptr<HttpRequest> request = Requests().Find(handle);
    if (!request)
        return ERROR_INVALID_HANDLE;
    const auto perform = [&] { return request->Perform(body, length, callback, context); };
    const int error = Guarded<int>(ERROR_NOT_ENOUGH_MEMORY, perform);
    if (error != 0 && request->Release())
        Requests().Take(handle);
    return error;
}

} // namespace

extern "C"
{

    __frl_stru_handle__* frl_http_session_create(void)
    {
        return Guarded<Handle>(nullptr, [] { return OpenSession(); });
    }

    void frl_http_session_close(__frl_stru_handle__* session)
    {
        CloseSession(session);
    }

    __frl_stru_handle__* frl_http_request_open(__frl_stru_handle__* session, const wchar_t* method, const wchar_t* url,
                                               const wchar_t* headers)
    {
        return Guarded<Handle>(nullptr, [&] { return OpenRequest(session, method, url, headers); });
    }

    int frl_http_request_add_cookie(__frl_stru_handle__* request, const wchar_t* cookie)
    {
        const auto opened = Requests().Find(request);
        const auto add = [&] { return opened ? opened->AddCookie(cookie) : ERROR_INVALID_HANDLE; };
        return Guarded<int>(ERROR_NOT_ENOUGH_MEMORY, add);
    }

    int frl_http_request_set_timeouts(__frl_stru_handle__* request, int resolve, int connect, int send, int receive)
    {
        const auto opened = Requests().Find(request);
        return opened ? opened->SetTimeouts(resolve, connect, send, receive) : ERROR_INVALID_HANDLE;
    }

    int frl_http_request_perform(__frl_stru_handle__* request, const void* body, size_t length,
                                 frl_http_completion callback, void* context)
    {
        return PerformRequest(request, body, length, callback, context);
    }

    int frl_http_request_get_status_code(__frl_stru_handle__* request)
    {
        const auto known = Requests().Find(request);
        return known ? known->StatusCode() : 0;
    }

} // extern "C"
