#include "FerrolinkServer.h"
#include "support/ImportTable.h"
#include "support/ScriptedServer.h"
#include "support/TempFolder.h"

#include <ferrolink/event.h>
#include <ferrolink/http_session.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <windows.h>
#include <winhttp.h>

namespace
{

using Handle = __frl_stru_handle__*;
using support::Exchange;
using support::patternBytes;
using support::ScriptedServer;

/// How a request ended, as its callback saw it.
struct Outcome
{
    Handle request = nullptr;
    int result = 99;
    int status = -1;
    std::string body;
    bool isNull = false;
    DWORD thread = 0;
};

void keepOutcome(Handle request, int result, const void* body, size_t length, void* context)
{
    const std::unique_ptr<std::promise<Outcome>> promise(static_cast<std::promise<Outcome>*>(context));
    Outcome outcome{request, result,          frl_http_request_get_status_code(request),
                    {},      body == nullptr, GetCurrentThreadId()};
    if (body != nullptr)
        outcome.body.assign(static_cast<const char*>(body), length);
    promise->set_value(std::move(outcome));
}

/// A session with the life of this object.
class Session
{
public:
    Session() : m_handle(frl_http_session_create()) {}
    ~Session() { close(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Handle get() const { return m_handle; }
    void close() { frl_http_session_close(std::exchange(m_handle, nullptr)); }

    Handle open(const std::wstring& url, const wchar_t* method = L"GET", const wchar_t* headers = nullptr) const
    {
        const Handle request = frl_http_request_open(m_handle, method, url.c_str(), headers);
        EXPECT_NE(request, nullptr);
        return request;
    }

private:
    Handle m_handle;
};

std::future<Outcome> perform(Handle request, std::string_view body = {})
{
    auto promise = std::make_unique<std::promise<Outcome>>();
    std::future<Outcome> future = promise->get_future();
    const bool isSent = frl_http_request_perform(request, body.data(), body.size(), keepOutcome, promise.get()) == 0;
    EXPECT_TRUE(isSent);
    if (isSent)
        static_cast<void>(promise.release());
    return future;
}

/// One request from beginning to end, in a session of its own.
Outcome fetch(const std::wstring& url, const wchar_t* method = L"GET", std::string_view body = {},
              const wchar_t* headers = nullptr)
{
    const Session session;
    return perform(session.open(url, method, headers), body).get();
}

std::wstring urlOf(unsigned short port, const std::wstring& path = L"/")
{
    return L"http://127.0.0.1:" + std::to_wstring(port) + path;
}

/// The outcome of a plain request that is answered by these raw bytes, after which the connection is closed.
Outcome fetchRaw(const std::string& bytes, const wchar_t* method = L"GET")
{
    ScriptedServer server;
    server.play({{.pieces = {bytes}}});
    return fetch(urlOf(server.port()), method);
}

std::string echo(const FerrolinkServer::Request& request)
{
    return FerrolinkServer::answer(request.body);
}

TEST(FerrolinkHttp, EveryStatusIsAnAnswer)
{
    for (const int status : {200, 201, 206, 301, 302, 307, 400, 401, 403, 404, 409, 500, 503})
    {
        const FerrolinkServer server([&](const auto&) {
            return FerrolinkServer::answer("text", std::to_string(status) + " Some", "Location: /elsewhere\r\n");
        });
        const Outcome outcome = fetch(server.url(L"/"));
        EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED}) << status;
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.body, "text") << status;
    }
}

TEST(FerrolinkHttp, RedirectIsNotFollowed)
{
    FerrolinkServer server(
        [](const auto&) { return FerrolinkServer::answer("", "302 Found", "Location: /elsewhere\r\n"); });
    EXPECT_EQ(fetch(server.url(L"/")).status, 302);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST(FerrolinkHttp, CompletionRunsOnTheEventThreadWithTheRequestsHandle)
{
    std::promise<DWORD> eventThread;
    const HANDLE event = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    const auto onEvent = [](void*, void* context) {
        static_cast<std::promise<DWORD>*>(context)->set_value(GetCurrentThreadId());
    };
    ASSERT_EQ(frl_event_add_win32_event(event, onEvent, &eventThread), 0);

    const FerrolinkServer server(echo);
    const Session session;
    const Handle request = session.open(server.url(L"/"));
    const Outcome outcome = perform(request).get();
    EXPECT_EQ(outcome.request, request);
    EXPECT_EQ(outcome.thread, eventThread.get_future().get());
    EXPECT_EQ(frl_event_remove_win32_event(event), 0);
    CloseHandle(event);
}

TEST(FerrolinkHttp, HandleIsInvalidAfterTheCallback)
{
    const FerrolinkServer server(echo);
    const Session session;
    const Handle request = session.open(server.url(L"/"));
    perform(request).get();
    // The next one's callback runs after the first has returned.
    perform(session.open(server.url(L"/"))).get();
    EXPECT_EQ(frl_http_request_get_status_code(request), 0);
    EXPECT_NE(frl_http_request_add_cookie(request, L"a=b"), 0);
    EXPECT_NE(frl_http_request_set_timeouts(request, 1, 1, 1, 1), 0);
    EXPECT_NE(frl_http_request_perform(request, nullptr, 0, keepOutcome, nullptr), 0);
}

TEST(FerrolinkHttp, EmptyBodyIsNull)
{
    for (const char* answer :
         {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", "HTTP/1.1 200 OK\r\n\r\n", "HTTP/1.1 204 No Content\r\n\r\n",
          "HTTP/1.1 304 Not Modified\r\n\r\n", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"})
    {
        const Outcome outcome = fetchRaw(answer);
        EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED}) << answer;
        EXPECT_TRUE(outcome.isNull) << answer;
    }
}

TEST(FerrolinkHttp, LengthOfABodyThatIsNotSentIsNoShortAnswer)
{
    const Outcome head = fetchRaw("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n", L"HEAD");
    EXPECT_EQ(head.result, int{FRL_HTTP_COMPLETED});
    EXPECT_TRUE(head.isNull);
    const Outcome unmodified = fetchRaw("HTTP/1.1 304 Not Modified\r\nContent-Length: 10\r\n\r\n");
    EXPECT_EQ(unmodified.result, int{FRL_HTTP_COMPLETED});
    EXPECT_EQ(unmodified.status, 304);
}

TEST(FerrolinkHttp, BodiesOfEverySizeGoBothWays)
{
    const FerrolinkServer server(echo);
    for (const std::size_t size : {1u, 65537u, 262143u, 262144u, 262145u, 524288u, 1000003u, 30000000u})
    {
        const std::string body = patternBytes(size);
        const Outcome outcome = fetch(server.url(L"/"), L"POST", body);
        EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED}) << size;
        EXPECT_TRUE(outcome.body == body) << size;
    }
}

TEST(FerrolinkHttp, AnswerOfUnknownLengthIsWhole)
{
    const std::string body = patternBytes(300000);
    const Outcome outcome = fetchRaw("HTTP/1.1 200 OK\r\n\r\n" + body);
    EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED});
    EXPECT_TRUE(outcome.body == body);
}

TEST(FerrolinkHttp, AnswerInChunksIsWhole)
{
    const Outcome outcome = fetchRaw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                     "5\r\nhello\r\n1\r\n \r\n5\r\nworld\r\n0\r\n\r\n");
    EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED});
    EXPECT_EQ(outcome.body, "hello world");
}

TEST(FerrolinkHttp, BodyComesAsItIsOnTheWire)
{
    const std::string body("\x1F\x8B\x08\x00\xFF\x00", 6);
    const Outcome outcome = fetchRaw("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 6\r\n\r\n" + body);
    EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED});
    EXPECT_EQ(outcome.body, body);
}

TEST(FerrolinkHttp, AnswerShorterThanAnnouncedFails)
{
    for (const char* answer :
         {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n"})
    {
        const Outcome outcome = fetchRaw(answer);
        EXPECT_EQ(outcome.result, int{FRL_HTTP_FAILED}) << answer;
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(outcome.isNull);
    }
}

TEST(FerrolinkHttp, AnswerEndsWhereItIsAnnouncedTo)
{
    const Outcome outcome = fetchRaw("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello and more");
    EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED});
    EXPECT_EQ(outcome.body, "hello");
}

TEST(FerrolinkHttp, AnswerBeyondTheBoundFailsAtOnce)
{
    for (const char* length : {"2147483648", "4294967296", "99999999999999999999"})
    {
        const FerrolinkServer server([&](const auto&) {
            return std::string("HTTP/1.1 200 OK\r\nContent-Length: ") + length + "\r\n\r\nbeginning";
        });
        EXPECT_EQ(fetch(server.url(L"/")).result, int{FRL_HTTP_FAILED}) << length;
    }
}

TEST(FerrolinkHttp, ServerThatIsNoneFails)
{
    EXPECT_EQ(fetchRaw("").result, int{FRL_HTTP_FAILED});
    EXPECT_EQ(fetchRaw("SSH-2.0-OpenSSH\r\n\r\n").result, int{FRL_HTTP_FAILED});
    const support::RefusingPort port;
    const Outcome outcome = fetch(urlOf(port.port()));
    EXPECT_EQ(outcome.result, int{FRL_HTTP_FAILED});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.isNull);
}

TEST(FerrolinkHttp, ResetConnectionFails)
{
    ScriptedServer server;
    server.play(
        {{.pieces = {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort"}, .ending = Exchange::Ending::Reset}});
    EXPECT_EQ(fetch(urlOf(server.port())).result, int{FRL_HTTP_FAILED});
}

TEST(FerrolinkHttp, AnswerThatComesBeforeTheWholeBodyCounts)
{
    ScriptedServer server;
    server.play({{.bodyBytesBeforeReply = 1000, .pieces = {FerrolinkServer::answer("no", "403 Forbidden")}}});
    const Outcome outcome = fetch(urlOf(server.port()), L"POST", patternBytes(5000000));
    EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED});
    EXPECT_EQ(outcome.status, 403);
    EXPECT_EQ(outcome.body, "no");
}

TEST(FerrolinkHttp, RequestIsSentAsItIsGiven)
{
    FerrolinkServer server(echo);
    fetch(server.url(L"/a/b%20c?k=v&x=%E6#part"), L"POST", "key=value",
          L"Content-Type: application/x-www-form-urlencoded\r\nX-Other:1\r\n");
    fetch(server.url(L"/?k"), L"DELETE", {}, L"Range: bytes=0-9");
    fetch(server.url(L""), L"GET", {}, L"");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].head.substr(0, requests[0].head.find("\r\n")), "POST /a/b%20c?k=v&x=%E6 HTTP/1.1");
    EXPECT_EQ(requests[0].header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(requests[0].header("X-Other"), "1");
    EXPECT_EQ(requests[0].header("Content-Length"), "9");
    EXPECT_EQ(requests[0].header("Accept-Encoding"), "");
    EXPECT_EQ(requests[0].header("Cookie"), "");
    EXPECT_EQ(requests[0].body, "key=value");
    EXPECT_EQ(requests[1].head.substr(0, requests[1].head.find("\r\n")), "DELETE /?k HTTP/1.1");
    EXPECT_EQ(requests[1].header("Range"), "bytes=0-9");
    EXPECT_EQ(requests[2].path(), "/");
}

TEST(FerrolinkHttp, ConnectionIsUsedAgain)
{
    FerrolinkServer server(echo);
    const Session session;
    for (int i = 0; i < 10; ++i)
        perform(session.open(server.url(L"/"), L"POST"), "body").get();
    const auto requests = server.requests();
    EXPECT_EQ(std::ranges::count_if(requests, [](const auto& request) { return request.isFirst; }), 1);
}

TEST(FerrolinkHttp, CookiesThatAreAddedAreSent)
{
    FerrolinkServer server(echo);
    const Session session;
    const Handle request = session.open(server.url(L"/"));
    EXPECT_EQ(frl_http_request_add_cookie(request, L"ssid=1"), 0);
    EXPECT_EQ(frl_http_request_add_cookie(request, L"b=2; c=3"), 0);
    perform(request).get();
    perform(session.open(server.url(L"/"))).get();
    EXPECT_EQ(server.requests()[0].header("Cookie"), "ssid=1; b=2; c=3");
    EXPECT_EQ(server.requests()[1].header("Cookie"), "");
}

TEST(FerrolinkHttp, CookiesThatServersSetLiveAsLongAsTheSession)
{
    FerrolinkServer server([](const auto& request) {
        return FerrolinkServer::answer("", "200 OK", request.path() == "/login" ? "Set-Cookie: jar=9; path=/\r\n" : "");
    });
    {
        const Session session;
        perform(session.open(server.url(L"/login"))).get();
        perform(session.open(server.url(L"/a"))).get();
        const Handle request = session.open(server.url(L"/b"));
        EXPECT_EQ(frl_http_request_add_cookie(request, L"own=1"), 0);
        perform(request).get();
    }
    fetch(server.url(L"/c"));
    const auto requests = server.requests();
    EXPECT_EQ(requests[0].header("Cookie"), "");
    EXPECT_EQ(requests[1].header("Cookie"), "jar=9");
    const std::string both = requests[2].header("Cookie");
    EXPECT_TRUE(both == "own=1; jar=9" || both == "jar=9; own=1") << both;
    EXPECT_EQ(requests[3].header("Cookie"), "");
}

TEST(FerrolinkHttp, CookieThatIsNoneIsRefused)
{
    FerrolinkServer server(echo);
    const Session session;
    const Handle request = session.open(server.url(L"/"));
    EXPECT_NE(frl_http_request_add_cookie(request, nullptr), 0);
    EXPECT_NE(frl_http_request_add_cookie(request, L""), 0);
    EXPECT_NE(frl_http_request_add_cookie(request, L"a=b\r\nX-Other: 1"), 0);
    perform(request).get();
    EXPECT_EQ(server.requests()[0].header("Cookie"), "");
    EXPECT_EQ(server.requests()[0].header("X-Other"), "");
}

constexpr int kShort = 50;

TEST(FerrolinkHttp, SilentServerRunsIntoTheReceiveTimeout)
{
    const SilentServer server;
    const Session session;
    const Handle request = session.open(server.url());
    EXPECT_EQ(frl_http_request_set_timeouts(request, 0, 0, 0, kShort), 0);
    const Outcome outcome = perform(request).get();
    EXPECT_EQ(outcome.result, int{FRL_HTTP_TIMED_OUT});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.isNull);
}

TEST(FerrolinkHttp, BodyThatStopsRunsIntoTheReceiveTimeout)
{
    const FerrolinkServer server(
        [](const auto&) { return std::string("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nbeginning"); });
    const Session session;
    const Handle request = session.open(server.url(L"/"));
    EXPECT_EQ(frl_http_request_set_timeouts(request, -1, -1, -1, kShort), 0);
    EXPECT_EQ(perform(request).get().result, int{FRL_HTTP_TIMED_OUT});
}

TEST(FerrolinkHttp, TimeoutsHoldOnAConnectionThatIsUsedAgain)
{
    const FerrolinkServer server([](const auto& request) { return request.isFirst ? echo(request) : std::string(); });
    const Session session;
    perform(session.open(server.url(L"/"))).get();
    const Handle request = session.open(server.url(L"/"));
    EXPECT_EQ(frl_http_request_set_timeouts(request, 1000, 1000, 1000, kShort), 0);
    EXPECT_EQ(perform(request).get().result, int{FRL_HTTP_TIMED_OUT});
}

TEST(FerrolinkHttp, ServerThatDoesNotReadRunsIntoATimeout)
{
    const SilentServer server;
    const Session session;
    const Handle request = session.open(server.url(), L"POST");
    EXPECT_EQ(frl_http_request_set_timeouts(request, 1000, 1000, kShort, kShort), 0);
    const std::string body(30000000, 'x');
    EXPECT_EQ(perform(request, body).get().result, int{FRL_HTTP_TIMED_OUT});
}

TEST(FerrolinkHttp, TimeoutsOfZeroAreNoLimit)
{
    const FerrolinkServer server(echo);
    const Session session;
    const Handle request = session.open(server.url(L"/"), L"POST");
    EXPECT_EQ(frl_http_request_set_timeouts(request, 0, 0, 0, 0), 0);
    EXPECT_EQ(perform(request, "text").get().body, "text");
}

TEST(FerrolinkHttp, RefusedCallsGiveNoRequest)
{
    const Session session;
    for (const wchar_t* url : {L"", L"no url", L"127.0.0.1/path", L"ftp://127.0.0.1/", L"http://", L"http:///path",
                               L"http://127.0.0.1:99999/"})
        EXPECT_EQ(frl_http_request_open(session.get(), L"GET", url, nullptr), nullptr) << url;
    EXPECT_EQ(frl_http_request_open(session.get(), L"GET", nullptr, nullptr), nullptr);
    EXPECT_EQ(frl_http_request_open(session.get(), nullptr, L"http://127.0.0.1/", nullptr), nullptr);
    EXPECT_EQ(frl_http_request_open(session.get(), L"", L"http://127.0.0.1/", nullptr), nullptr);
    EXPECT_EQ(frl_http_request_open(nullptr, L"GET", L"http://127.0.0.1/", nullptr), nullptr);
    EXPECT_NE(frl_http_request_add_cookie(nullptr, L"a=b"), 0);
    EXPECT_NE(frl_http_request_set_timeouts(nullptr, 1, 1, 1, 1), 0);
    EXPECT_NE(frl_http_request_perform(nullptr, nullptr, 0, keepOutcome, nullptr), 0);
    EXPECT_EQ(frl_http_request_get_status_code(nullptr), 0);
}

TEST(FerrolinkHttp, RefusedRequestIsReleasedWithoutACallback)
{
    FerrolinkServer server(echo);
    const Session session;
    Handle request = session.open(server.url(L"/"));
    EXPECT_NE(frl_http_request_perform(request, nullptr, 0, nullptr, nullptr), 0);
    EXPECT_NE(frl_http_request_add_cookie(request, L"a=b"), 0);
    request = session.open(server.url(L"/"));
    EXPECT_NE(frl_http_request_perform(request, nullptr, 1, keepOutcome, nullptr), 0);
    EXPECT_NE(frl_http_request_add_cookie(request, L"a=b"), 0);
    EXPECT_TRUE(server.requests().empty());
}

TEST(FerrolinkHttp, RequestUnderWayCannotBeChangedOrPerformedAgain)
{
    FerrolinkServer server([](const auto&) { return std::string(); });
    Session session;
    const Handle request = session.open(server.url(L"/"));
    std::future<Outcome> outcome = perform(request);
    server.waitForRequests(1);
    EXPECT_NE(frl_http_request_perform(request, nullptr, 0, keepOutcome, nullptr), 0);
    EXPECT_NE(frl_http_request_add_cookie(request, L"a=b"), 0);
    EXPECT_NE(frl_http_request_set_timeouts(request, 1, 1, 1, 1), 0);
    session.close();
    EXPECT_EQ(outcome.get().result, int{FRL_HTTP_CLOSED});
}

TEST(FerrolinkHttp, ClosingASessionEndsEveryRequest)
{
    FerrolinkServer server([](const auto&) { return std::string(); });
    Session session;
    std::vector<std::future<Outcome>> outcomes;
    for (int i = 0; i < 20; ++i)
    {
        const Handle request = session.open(server.url(L"/"));
        EXPECT_EQ(frl_http_request_set_timeouts(request, 0, 0, 0, 2000), 0);
        outcomes.push_back(perform(request));
    }
    server.waitForRequests(10);
    session.close();
    for (auto& outcome : outcomes)
    {
        const Outcome end = outcome.get();
        EXPECT_EQ(end.result, int{FRL_HTTP_CLOSED});
        EXPECT_EQ(end.status, 0);
        EXPECT_TRUE(end.isNull);
    }
}

TEST(FerrolinkHttp, BodyIsTheCallersAgainOnceTheSessionIsClosed)
{
    const SilentServer server;
    Session session;
    auto body = std::make_unique<std::string>(30000000, 'x');
    const Handle request = session.open(server.url(), L"POST");
    EXPECT_EQ(frl_http_request_set_timeouts(request, 0, 0, 200, 200), 0);
    std::future<Outcome> outcome = perform(request, *body);
    session.close();
    EXPECT_EQ(outcome.get().result, int{FRL_HTTP_CLOSED});
    body.reset();
}

TEST(FerrolinkHttp, ClosedSessionOpensAndPerformsNothing)
{
    FerrolinkServer server(echo);
    Session session;
    const Handle handle = session.get();
    const Handle request = session.open(server.url(L"/"));
    session.close();
    EXPECT_EQ(frl_http_request_open(handle, L"GET", server.url(L"/").c_str(), nullptr), nullptr);
    EXPECT_NE(frl_http_request_perform(request, nullptr, 0, keepOutcome, nullptr), 0);
    frl_http_session_close(handle);
    frl_http_session_close(nullptr);
    EXPECT_TRUE(server.requests().empty());
}

TEST(FerrolinkHttp, ClosingOneSessionLeavesTheOthersAlone)
{
    FerrolinkServer server([](const auto& request) { return request.path() == "/" ? std::string() : echo(request); });
    Session closed;
    const Session other;
    const Handle request = closed.open(server.url(L"/"));
    EXPECT_EQ(frl_http_request_set_timeouts(request, 0, 0, 0, 2000), 0);
    std::future<Outcome> outcome = perform(request);
    server.waitForRequests(1);
    const Handle later = other.open(server.url(L"/later"), L"POST");
    closed.close();
    EXPECT_EQ(outcome.get().result, int{FRL_HTTP_CLOSED});
    EXPECT_EQ(perform(later, "text").get().body, "text");
}

/// Sends one request after the other, each from within the callback of the one before.
struct Chain
{
    Handle session;
    std::wstring url;
    int left;
    std::promise<void> done;

    static void next(Handle, int result, const void*, size_t, void* context)
    {
        auto& self = *static_cast<Chain*>(context);
        EXPECT_EQ(result, int{FRL_HTTP_COMPLETED});
        if (--self.left == 0)
        {
            frl_http_session_close(self.session);
            self.done.set_value();
            return;
        }
        const Handle request = frl_http_request_open(self.session, L"GET", self.url.c_str(), nullptr);
        EXPECT_EQ(frl_http_request_perform(request, nullptr, 0, next, context), 0);
    }
};

TEST(FerrolinkHttp, CallbackMaySendTheNextRequestAndCloseTheSession)
{
    FerrolinkServer server(echo);
    Chain chain{frl_http_session_create(), server.url(L"/"), 50, {}};
    const Handle request = frl_http_request_open(chain.session, L"GET", chain.url.c_str(), nullptr);
    ASSERT_EQ(frl_http_request_perform(request, nullptr, 0, Chain::next, &chain), 0);
    chain.done.get_future().get();
    EXPECT_EQ(server.requests().size(), 50u);
}

TEST(FerrolinkHttp, ManyRequestsAtOnceEachGetTheirOwnAnswer)
{
    const FerrolinkServer server(echo);
    const Session session;
    std::vector<std::string> bodies;
    for (int i = 0; i < 200; ++i)
        bodies.push_back(std::to_string(i));
    std::vector<std::future<Outcome>> outcomes;
    for (const std::string& body : bodies)
        outcomes.push_back(perform(session.open(server.url(L"/"), L"POST"), body));
    for (std::size_t i = 0; i < outcomes.size(); ++i)
    {
        const Outcome outcome = outcomes[i].get();
        EXPECT_EQ(outcome.result, int{FRL_HTTP_COMPLETED});
        EXPECT_EQ(outcome.body, bodies[i]);
    }
}

TEST(FerrolinkHttp, ManyThreadsWithTheirOwnSessionsDoNotMix)
{
    const FerrolinkServer server([](const auto& request) { return FerrolinkServer::answer(request.path()); });
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&, i] {
            const Session session;
            for (int round = 0; round < 50; ++round)
            {
                const std::wstring path = L'/' + std::to_wstring(i) + L'/' + std::to_wstring(round);
                const Outcome outcome = perform(session.open(server.url(path))).get();
                ASSERT_EQ(outcome.result, int{FRL_HTTP_COMPLETED});
                ASSERT_EQ(outcome.body, std::string(path.begin(), path.end()));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(FerrolinkHttp, SessionsMayBeClosedWhileOtherThreadsUseThem)
{
    const FerrolinkServer server(echo);
    for (int round = 0; round < 30; ++round)
    {
        const Handle session = frl_http_session_create();
        std::atomic<int> open{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (;;)
                {
                    const Handle request = frl_http_request_open(session, L"GET", server.url(L"/").c_str(), nullptr);
                    ++open;
                    if (request == nullptr)
                        return;
                    auto promise = std::make_unique<std::promise<Outcome>>();
                    std::future<Outcome> future = promise->get_future();
                    if (frl_http_request_perform(request, nullptr, 0, keepOutcome, promise.get()) != 0)
                        continue;
                    static_cast<void>(promise.release());
                    const int result = future.get().result;
                    ASSERT_TRUE(result == FRL_HTTP_COMPLETED || result == FRL_HTTP_CLOSED) << result;
                }
            });
        while (open < 20)
            SwitchToThread();
        frl_http_session_close(session);
        for (std::thread& thread : threads)
            thread.join();
    }
}

/// The library's way to one function of the system, which leads elsewhere as long as this object lives.
class Detour : public support::ImportPatch
{
public:
    template <typename Function>
    Detour(const char* name, Function* replacement)
        : ImportPatch(support::ImportTable(GetModuleHandleW(L"ferrolink.dll")).entry(name),
                      reinterpret_cast<void*>(replacement))
    {
    }
};

/// Books the handles of WinHTTP that the library opens and closes; those that it had before are none of this book's.
class HandleBook
{
public:
    HandleBook()
    {
        opened.clear();
        openedInAll = 0;
    }

    /// WinHTTP may need a while to let go of a request whose session was closed.
    /// @return how many there were in all
    static int waitUntilNoneIsOpen()
    {
        std::unique_lock lock(mutex);
        allClosed.wait(lock, [] { return opened.empty(); });
        return openedInAll;
    }

private:
    static inline std::mutex mutex;
    static inline std::condition_variable allClosed;
    static inline std::set<HINTERNET> opened;
    static inline int openedInAll = 0;

    static HINTERNET booked(HINTERNET handle)
    {
        const std::lock_guard lock(mutex);
        if (handle != nullptr && opened.insert(handle).second)
            ++openedInAll;
        return handle;
    }

    static HINTERNET WINAPI open(LPCWSTR agent, DWORD type, LPCWSTR proxy, LPCWSTR bypass, DWORD flags)
    {
        return booked(WinHttpOpen(agent, type, proxy, bypass, flags));
    }
    static HINTERNET WINAPI connect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, DWORD reserved)
    {
        return booked(WinHttpConnect(session, host, port, reserved));
    }
    static HINTERNET WINAPI openRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR object, LPCWSTR version,
                                        LPCWSTR referrer, LPCWSTR* types, DWORD flags)
    {
        return booked(WinHttpOpenRequest(connection, verb, object, version, referrer, types, flags));
    }
    static BOOL WINAPI close(HINTERNET handle)
    {
        {
            // Before the call, which makes the number free for another thread's handle.
            const std::lock_guard lock(mutex);
            opened.erase(handle);
        }
        allClosed.notify_all();
        const BOOL isClosed = WinHttpCloseHandle(handle);
        EXPECT_TRUE(isClosed);
        return isClosed;
    }

    Detour m_open{"WinHttpOpen", open};
    Detour m_connect{"WinHttpConnect", connect};
    Detour m_openRequest{"WinHttpOpenRequest", openRequest};
    Detour m_close{"WinHttpCloseHandle", close};
};

TEST(FerrolinkHttp, EveryHandleIsClosedHoweverARequestEnds)
{
    FerrolinkServer server([](const auto& request) {
        return request.path() == "/silent"  ? std::string()
               : request.path() == "/short" ? "HTTP/1.1 200 OK\r\nContent-Length: 2147483648\r\n\r\n"
                                            : echo(request);
    });
    const support::RefusingPort port;
    const HandleBook handles;
    constexpr int rounds = 5;
    {
        Session session;
        for (int i = 0; i < rounds; ++i)
        {
            perform(session.open(server.url(L"/"), L"POST"), "text").get();
            perform(session.open(server.url(L"/short"))).get();
            perform(session.open(urlOf(port.port()))).get();
            session.open(server.url(L"/never-performed"));
            frl_http_request_perform(session.open(server.url(L"/refused")), nullptr, 0, nullptr, nullptr);
            EXPECT_EQ(frl_http_request_open(session.get(), L"GET", L"no url", nullptr), nullptr);
            const Handle silent = session.open(server.url(L"/silent"));
            frl_http_request_set_timeouts(silent, -1, -1, -1, kShort);
            EXPECT_EQ(perform(silent).get().result, int{FRL_HTTP_TIMED_OUT});
        }
        const Handle inFlight = session.open(server.url(L"/silent"));
        frl_http_request_set_timeouts(inFlight, -1, -1, -1, 200);
        std::future<Outcome> outcome = perform(inFlight);
        session.close();
        EXPECT_EQ(outcome.get().result, int{FRL_HTTP_CLOSED});
    }
    EXPECT_EQ(HandleBook::waitUntilNoneIsOpen(), 1 + 2 * (rounds * 6 + 1));
}

template <typename Function>
struct Failing;

template <typename Result, typename... Arguments>
struct Failing<Result(WINAPI*)(Arguments...)>
{
    static Result WINAPI call(Arguments...)
    {
        SetLastError(ERROR_WINHTTP_INTERNAL_ERROR);
        return Result{};
    }
};

/// Makes every call of a function fail.
#define FAILING(function) const Detour failing##function(#function, Failing<decltype(&(function))>::call)

TEST(FerrolinkHttp, SystemThatRefusesGivesNoSession)
{
    FAILING(WinHttpOpen);
    EXPECT_EQ(frl_http_session_create(), nullptr);
}

TEST(FerrolinkHttp, SystemThatRefusesGivesNoRequest)
{
    const Session session;
    const wchar_t* const url = L"http://127.0.0.1/";
    const wchar_t* const headers = L"X-Other: 1";
    {
        FAILING(WinHttpConnect);
        EXPECT_EQ(frl_http_request_open(session.get(), L"GET", url, headers), nullptr);
    }
    {
        FAILING(WinHttpOpenRequest);
        EXPECT_EQ(frl_http_request_open(session.get(), L"GET", url, headers), nullptr);
    }
    {
        FAILING(WinHttpSetOption);
        EXPECT_EQ(frl_http_request_open(session.get(), L"GET", url, headers), nullptr);
    }
    {
        FAILING(WinHttpAddRequestHeaders);
        EXPECT_EQ(frl_http_request_open(session.get(), L"GET", url, headers), nullptr);
    }
    const Handle request = session.open(url);
    {
        FAILING(WinHttpAddRequestHeaders);
        EXPECT_EQ(frl_http_request_add_cookie(request, L"a=b"), int{ERROR_WINHTTP_INTERNAL_ERROR});
    }
    {
        FAILING(WinHttpSetOption);
        EXPECT_EQ(frl_http_request_set_timeouts(request, 1, 1, 1, 1), int{ERROR_WINHTTP_INTERNAL_ERROR});
    }
    FAILING(WinHttpSendRequest);
    EXPECT_EQ(frl_http_request_perform(request, nullptr, 0, keepOutcome, nullptr), int{ERROR_WINHTTP_INTERNAL_ERROR});
    EXPECT_NE(frl_http_request_add_cookie(request, L"a=b"), 0);
}

TEST(FerrolinkHttp, EveryStepThatTheSystemRefusesFailsTheRequest)
{
    const FerrolinkServer server(echo);
    const Session session;
    const auto result = [&] {
        return perform(session.open(server.url(L"/"), L"POST"), patternBytes(1000000)).get().result;
    };
    EXPECT_EQ(result(), int{FRL_HTTP_COMPLETED});
    {
        FAILING(WinHttpReceiveResponse);
        EXPECT_EQ(result(), int{FRL_HTTP_FAILED});
    }
    {
        FAILING(WinHttpWriteData);
        FAILING(WinHttpReceiveResponse);
        EXPECT_EQ(result(), int{FRL_HTTP_FAILED});
    }
    {
        FAILING(WinHttpQueryHeaders);
        EXPECT_EQ(result(), int{FRL_HTTP_FAILED});
    }
    FAILING(WinHttpReadData);
    EXPECT_EQ(result(), int{FRL_HTTP_FAILED});
}

} // namespace
