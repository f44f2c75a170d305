#ifndef FERROLINK_HTTPREQUEST_H
#define FERROLINK_HTTPREQUEST_H

#include <ferrolink/http_session.h>

#include "EventThread.h"
#include "HandleTable.h"
#include "Handles.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace ferrolink
{

/// A session of WinHTTP, which keeps connections and cookies. It lives as long as any of its requests.
class HttpSession
{
public:
    /// @return the session, or null when the system gives none
    static std::shared_ptr<HttpSession> Open();

    explicit HttpSession(InternetHandle handle) noexcept : m_handle(std::move(handle)) {}

    HINTERNET Handle() const noexcept { return m_handle.get(); }

    void Close() noexcept { m_isClosed = true; }
    bool IsClosed() const noexcept { return m_isClosed; }

private:
    InternetHandle m_handle;
    std::atomic<bool> m_isClosed{false};
};

/// One request, from its opening to its completion, which is its task on the event thread.
///
/// WinHTTP works for it on threads of its own, one step at a time, and touches nothing but the request's own memory:
/// a request whose session is closed is over at once for its caller, while WinHTTP may need until a time-out to let
/// go of it.
class HttpRequest final : public EventTask, public std::enable_shared_from_this<HttpRequest>
{
public:
    /// @return the request, or null when the system refuses a part of it
    static std::shared_ptr<HttpRequest> Open(std::shared_ptr<HttpSession> session, const wchar_t* method,
                                             const wchar_t* url, const wchar_t* headers);

    HttpRequest(std::shared_ptr<HttpSession> session, bool hasBodilessAnswer) noexcept
        : m_session(std::move(session)), m_hasBodilessAnswer(hasBodilessAnswer)
    {
    }

    /// What its completion callback is given.
    void SetHandle(__frl_stru_handle__* handle) noexcept { m_handle = handle; }

    /// @return 0, or the system's error code
    int AddCookie(const wchar_t* cookie);
    int SetTimeouts(int resolve, int connect, int send, int receive) noexcept;
    int Perform(const void* body, std::size_t length, frl_http_completion callback, void* context);

    /// Gives up a request that has not been performed.
    /// @return false when it has been
    bool Release() noexcept;

    /// Ends the request because its session is closed.
    /// @return whether it had not been performed; then nobody is told
    bool Abandon() noexcept;

    const HttpSession& Session() const noexcept { return *m_session; }
    int StatusCode() const noexcept { return m_status; }

    void Run() noexcept override;

private:
    enum class Phase
    {
        Opened,
        Sending,
        Writing,
        Receiving,
        Reading,
        Over
    };

    static void CALLBACK OnStatus(HINTERNET, DWORD_PTR context, DWORD status, void* information, DWORD length) noexcept;
    friend class HttpSession;

    bool OpenHandles(const wchar_t* method, const wchar_t* url);
    bool SetNumber(DWORD option, DWORD value) noexcept;
    bool AddHeaders(const wchar_t* headers, DWORD flags) noexcept;

    void Continue(DWORD error, DWORD count) noexcept;
    void TakeSteps() noexcept;
    void Step() noexcept;
    std::optional<int> Proceed(DWORD count);
    std::optional<int> Recover(DWORD error) noexcept;

    bool Send();
    std::optional<int> WriteOn();
    std::optional<int> Receive() noexcept;
    std::optional<int> BeginReading();
    std::optional<int> ReadOn();
    void Finish(int result, std::unique_lock<std::mutex>& lock) noexcept;
    void QueryAnnouncedLength() noexcept;
    bool IsWhole() const noexcept;

    std::shared_ptr<HttpSession> m_session;
    // WinHTTP's share in the object, given back when it has let go of the request.
    std::shared_ptr<HttpRequest> m_keptByWinHttp;
    InternetHandle m_connection;
    __frl_stru_handle__* m_handle = nullptr;
    bool m_hasBodilessAnswer;

    std::mutex m_mutex; // guards the phase, the request's handle and every use of the two, and the caller's body
    Phase m_phase = Phase::Opened;
    InternetHandle m_request;
    const char* m_body = nullptr;
    std::size_t m_bodyLength = 0;
    std::size_t m_bodySent = 0;

    // How the last step ended. There is one at a time, so that its end and the next one's beginning are in order.
    std::atomic<unsigned> m_steps{0};
    DWORD m_stepError = 0;
    DWORD m_stepCount = 0;

    std::string m_outgoing;
    std::string m_answer; // may have more room than what has been received
    std::size_t m_received = 0;
    std::optional<std::uint64_t> m_announced;

    frl_http_completion m_callback = nullptr;
    void* m_context = nullptr;
    int m_result = FRL_HTTP_FAILED;
    int m_answerStatus = 0;
    int m_status = 0;
};

/// What callers hold handles of.
HandleTable<HttpSession>& Sessions() noexcept;
HandleTable<HttpRequest>& Requests() noexcept;

} // namespace ferrolink

#endif
