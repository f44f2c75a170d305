// Blocking requests against the same requests made straight through the host's session service.

#include "LoopbackServer.h"
#include "Pairs.h"
#include "http_sync.h"

#include <ferrolink/http_session.h>
#include <ferrolink/log.h>

#include <windows.h>

#include <cstddef>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

namespace
{

using namespace quorvex;
using namespace quorvex::bench;

constexpr int kRequests = 500;
constexpr int kRuns = 11;
constexpr int kTimeout = 30000;

void Check(bool worked, const char* what)
{
    if (!worked)
    {
        throw std::runtime_error(what);
    }
}

/// A session of the service that is used as the service wants it to be: the caller opens and performs, and a callback
/// tells it when the request is over.
class StraightClient
{
public:
    StraightClient() : m_session(frl_http_session_create()), m_done(::CreateEventW(nullptr, FALSE, FALSE, nullptr))
    {
        Check(m_session != nullptr && m_done != nullptr, "there is no session to be had");
    }
    ~StraightClient()
    {
        frl_http_session_close(m_session);
        ::CloseHandle(m_done);
    }
    StraightClient(const StraightClient&) = delete;
    StraightClient& operator=(const StraightClient&) = delete;

    void Get(const std::wstring& url)
    {
        __frl_stru_handle__* const request = frl_http_request_open(m_session, L"GET", url.c_str(), L"");
        Check(request != nullptr, "a request was not opened");
        frl_http_request_set_timeouts(request, kTimeout, kTimeout, kTimeout, kTimeout);
        Check(frl_http_request_perform(request, nullptr, 0, OnCompleted, this) == 0, "a request was not sent");
        ::WaitForSingleObject(m_done, INFINITE);
        Check(m_result == 0 && m_code == 200 && !m_body.empty(), "a request was not answered");
    }

private:
    static void OnCompleted(__frl_stru_handle__* request, int result, const void* body, std::size_t length,
                            void* context)
    {
        auto* const self = static_cast<StraightClient*>(context);
        self->m_result = result;
        self->m_code = frl_http_request_get_status_code(request);
        self->m_body.assign(static_cast<const char*>(body), length);
        ::SetEvent(self->m_done);
    }

    __frl_stru_handle__* m_session;
    HANDLE m_done;
    int m_result = 0;
    int m_code = 0;
    std::string m_body;
};

/// The module's own way to the service.
class BlockingClient
{
public:
    BlockingClient() : m_session(CreateSession()), m_dispatcher({kTimeout, kTimeout, kTimeout, kTimeout}) {}
    ~BlockingClient() { CloseSession(m_session); }
    BlockingClient(const BlockingClient&) = delete;
    BlockingClient& operator=(const BlockingClient&) = delete;

    void Get(const std::wstring& url)
    {
        SyncAnswer answer;
        Check(m_dispatcher.Perform(m_session, {.method = L"GET", .url = url.c_str()}, &answer) == 0 &&
                  answer.result == 0 && answer.code == 200 && !answer.body.empty(),
              "a blocking request was not answered");
    }

private:
    std::atomic<__frl_stru_handle__*> m_session;
    RequestDispatcher m_dispatcher;
};

void BenchRequests()
{
    const LoopbackServer server;
    const std::wstring url = L"http://127.0.0.1:" + std::to_wstring(server.Port()) + L"/status.php?st=2&app=im";
    StraightClient straight;
    BlockingClient blocking;
    const Pair requests{.name = "GET, 500 requests",
                        .first = [&] { straight.Get(url); },
                        .second = [&] { blocking.Get(url); },
                        .repetitions = kRequests};
    CompareAndPrint({"request", "straight", "blocking", "blocking / straight"}, {Target::Bound::AtMost, 1.05},
                    {requests}, kRuns);
}

} // namespace

int main()
{
    try
    {
        frl_log_set_level(0);
        BenchRequests();
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << "quorvex-sync-bench: " << error.what() << '\n';
        return 1;
    }
}
