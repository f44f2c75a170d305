#ifndef FERROLINK_HTTP_SESSION_H
#define FERROLINK_HTTP_SESSION_H

#include "export.h"

#include <stddef.h>

/// @file
/// The host's HTTP session service: asynchronous requests that complete on the host's event thread (see event.h).
/// Every function may be called from any thread, also from within a callback, and none of them waits for the network.
/// A handle that is not valid, or no longer, is refused by each of them.
///
/// Requests go out over HTTP/1.1 with the system's proxy settings; connections are used again within a session. Bodies
/// are neither packed nor unpacked: no Accept-Encoding is sent, and an answer's body is what came over the wire, less
/// the marks of its chunks. Redirections are not followed, since body and cookies were meant for the first host: such
/// an answer completes with its own status.

#ifdef __cplusplus
extern "C"
{
#endif

    /// A session or a request of the service.
    typedef struct __frl_stru_handle__ __frl_stru_handle__;

    /// How a request ended.
    enum frl_http_result
    {
        FRL_HTTP_COMPLETED = 0,  ///< an answer came, whatever its status
        FRL_HTTP_FAILED = -1,    ///< it could not be sent, no whole answer came, or one of 2 GiB or more
        FRL_HTTP_TIMED_OUT = -2, ///< one of its time-outs ran out
        FRL_HTTP_CLOSED = -3     ///< its session was closed
    };

    /// Called once on the event thread when a request is over. It must not throw.
    /// @param request the request; its handle is valid until the callback returns, and never again
    /// @param result  FRL_HTTP_COMPLETED, or why there is no answer
    /// @param body    the answer's body; null when it is empty or there is no answer; valid during the call only
    /// @param length  bytes of the body
    /// @param context what was given to frl_http_request_perform
    typedef void (*frl_http_completion)(__frl_stru_handle__* request, int result, const void* body, size_t length,
                                        void* context);

    /// Opens a session. Cookies that servers set live as long as it does.
    /// @return the session, to be closed with frl_http_session_close; null when the system gives none
    FERROLINK_API __frl_stru_handle__* frl_http_session_create(void);

    /// Closes a session. Requests that are not over complete with FRL_HTTP_CLOSED, never in silence, each on the
    /// event thread and possibly after this function has returned. Requests that were opened and not performed are
    /// released; new ones cannot be opened.
    /// @param session the session; null is allowed
    FERROLINK_API void frl_http_session_close(__frl_stru_handle__* session);

    /// Opens a request, which belongs to the service: it is released by itself after frl_http_request_perform, or
    /// with its session.
    /// @param session the session
    /// @param method  "GET", "POST" ...
    /// @param url     scheme, host, optional port, path and query
    /// @param headers header lines, with CR LF between them and perhaps behind the last; null or empty for none
    /// @return the request; null when the session is closed, the URL cannot be used, or memory ran out
    FERROLINK_API __frl_stru_handle__* frl_http_request_open(__frl_stru_handle__* session, const wchar_t* method,
                                                             const wchar_t* url, const wchar_t* headers);

    /// Adds a cookie to a request that has not been performed, beside those that its session has for the host. Cookies
    /// that are added one after the other are all sent.
    /// @param request the request
    /// @param cookie  "name=value", several with "; " between them; a line break is refused
    /// @return 0, or another value when it could not be added
    FERROLINK_API int frl_http_request_add_cookie(__frl_stru_handle__* request, const wchar_t* cookie);

    /// Sets the time-outs of a request that has not been performed, in milliseconds. 0 is no limit; a negative value
    /// leaves the system's own.
    /// @param request the request
    /// @param resolve for finding the host's address
    /// @param connect for connecting to it
    /// @param send    for sending the request
    /// @param receive for the answer's head, and for each piece of its body
    /// @return 0, or another value when they could not be set
    FERROLINK_API int frl_http_request_set_timeouts(__frl_stru_handle__* request, int resolve, int connect, int send,
                                                    int receive);

    /// Sends a request.
    /// @param request  a request that has not been performed
    /// @param body     its body, which the caller keeps as it is until the completion, and which is not touched from
    ///                 then on; null when there is none
    /// @param length   bytes of the body; any number
    /// @param callback called once when the request is over; not null
    /// @param context  passed to it as it is
    /// @return 0; any other value says that it was not sent: then it has been released and the callback is not called.
    ///         A request that has been performed cannot be again; the first performance is not disturbed.
    FERROLINK_API int frl_http_request_perform(__frl_stru_handle__* request, const void* body, size_t length,
                                               frl_http_completion callback, void* context);

    /// @param request the request that is over, within its callback
    /// @return its HTTP status; 0 when no answer came
    FERROLINK_API int frl_http_request_get_status_code(__frl_stru_handle__* request);

#ifdef __cplusplus
} // extern "C"
#endif

#endif
