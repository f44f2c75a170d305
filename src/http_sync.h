#pragma once

#include "Platform/CriticalSection.h"
#include "Platform/Event.h"
#include "ResponseLimit.h"

#include <ferrolink/http_session.h>

#include <atomic>
#include <cstddef>
#include <list>
#include <string>
#include <string_view>

/// Blocking requests over the host's HTTP session service, which is asynchronous and does its work on the host's event
/// thread. A caller must not be on that thread: it would wait for itself.
namespace quorvex
{

/// How a request ended.
struct SyncAnswer
{
    int result = 0; ///< the service's result; 0 when an answer came, whatever its status
    int code = 0;   ///< the HTTP status
    std::string body;
};

/// What is sent. Texts and body belong to the caller, who waits.
struct SyncRequest
{
    const wchar_t* method;
    const wchar_t* url;
    const wchar_t* headers = L""; ///< with CR LF between them and perhaps behind the last
    std::string_view body = {};
    const wchar_t* cookie = L"";
    std::size_t longest = kLongestResponse; ///< bytes that the answer may have; a longer one is a failure
};

/// Opens a session of the service.
/// @return null when the system gives none
__frl_stru_handle__* CreateSession();

/// Closes a session, once; requests that are under way end with a failure.
void CloseSession(std::atomic<__frl_stru_handle__*>& session);

/// The time-outs of a request in milliseconds, in the order in which the service takes them.
struct SyncTimeouts
{
    int resolve;
    int connect;
    int send;
    int receive;
};

/// Hands the requests of one client over to the event thread, in the order in which they come. Requests may come from
/// several threads.
class RequestDispatcher
{
public:
    explicit RequestDispatcher(SyncTimeouts timeouts);

    /// Requests that the event thread has not taken over yet end with a failure; those that it has are the service's.
    ~RequestDispatcher();
    RequestDispatcher(const RequestDispatcher&) = delete;
    RequestDispatcher& operator=(const RequestDispatcher&) = delete;

    /// Sends a request and waits until it is over.
    /// @param session null stands for a session that has been closed
    /// @param answer  receives how it ended
    /// @return 0 when the request was made, however it ended; -1 when it was not
    /// @throw std::bad_alloc when there was no memory for the answer's body
    int Perform(__frl_stru_handle__* session, const SyncRequest& request, SyncAnswer* answer);

private:
    /// Who waits for a request.
    struct Waiter
    {
        Platform::Event done;
        SyncAnswer* answer;
        std::size_t longest;
        bool isOutOfMemory = false;
    };

    struct PendingRequest
    {
        __frl_stru_handle__* session;
        SyncRequest request;
        Waiter* waiter;
    };

    int Enqueue(const PendingRequest& pending);
    void Start(const PendingRequest& pending) const;
    static void Complete(Waiter& waiter, int result, int code, std::string_view body);
    static void OnSignalled(void* event, void* context);
    static void OnCompleted(__frl_stru_handle__* request, int result, const void* body, size_t length, void* context);

    SyncTimeouts m_timeouts;
    Platform::CriticalSection m_lock;
    std::list<PendingRequest> m_queue; // guarded by m_lock, and so is the flag
    bool m_isStopping = false;
    Platform::Event m_requestCame;
    bool m_isRegistered = false;
};

} // namespace quorvex
