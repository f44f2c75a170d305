#include "http_sync.h"

#include "support/ImportTable.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/TempFolder.h"

#include <quorvex/FileStorage2.h>
#include <quorvex/FileStorage3.h>

#include <ferrolink/event.h>
#include <ferrolink/http_session.h>
#include <ferrolink/log.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

using quorvex::CFileStorage2;
using quorvex::CFileStorage3;
using quorvex::RequestDispatcher;
using quorvex::SyncAnswer;
using quorvex::SyncRequest;
using quorvex::SyncTimeouts;
using support::Exchange;
using support::ScriptedServer;
using Texts = std::vector<std::string>;

namespace
{

constexpr SyncTimeouts noLimits{0, 0, 0, 0};

/// Counts what has happened, for one who waits.
class Signal
{
public:
    Signal() : m_semaphore(CreateSemaphoreW(nullptr, 0, LONG_MAX, nullptr)) {}
    ~Signal() { CloseHandle(m_semaphore); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    void Give() { ReleaseSemaphore(m_semaphore, 1, nullptr); }
    void Take() { WaitForSingleObject(m_semaphore, INFINITE); }

private:
    HANDLE m_semaphore;
};

std::string Narrow(const wchar_t* text)
{
    std::string narrow;
    for (; text != nullptr && *text != L'\0'; ++text)
    {
        narrow += static_cast<char>(*text);
    }
    return narrow;
}

/// Stands between this program and the host's library: notes what the event thread asks of the service.
class ServiceCalls
{
public:
    ServiceCalls()
    {
        s_current = this;
        s_setEvent = reinterpret_cast<decltype(s_setEvent)>(m_setEvent.Original());
    }
    ~ServiceCalls() { s_current = nullptr; }
    ServiceCalls(const ServiceCalls&) = delete;
    ServiceCalls& operator=(const ServiceCalls&) = delete;

    /// The calls in their order. Final for a request that is over.
    const Texts& Made() const { return m_made; }

    /// Waits until the first dispatcher has queued one more request.
    void WaitForQueued() { m_queued.Take(); }

    /// What the next request that is performed comes to; 0 leaves that to the service.
    void FailPerform(int result) { m_performResult = result; }

    /// Called by the first dispatcher's destructor, when it has stopped taking requests.
    std::function<void()> onUnregister;

    std::atomic<int> sessionsClosed = 0;

private:
    template <typename Function>
    class Patch
    {
    public:
        Patch(const char* name, Function replacement)
            : m_patch(support::ImportTable(GetModuleHandleW(nullptr)).entry(name), reinterpret_cast<void*>(replacement))
        {
        }
        template <typename... Arguments>
        auto operator()(Arguments... arguments) const
        {
            return reinterpret_cast<Function>(m_patch.original())(arguments...);
        }
        void* Original() const { return m_patch.original(); }

    private:
        support::ImportPatch m_patch;
    };

    static ServiceCalls& Current() { return *s_current; }

    static int AddEvent(void* event, frl_event_callback callback, void* context)
    {
        void* none = nullptr;
        Current().m_event.compare_exchange_strong(none, event);
        return Current().m_addEvent(event, callback, context);
    }

    static int RemoveEvent(void* event)
    {
        if (event == Current().m_event && Current().onUnregister)
        {
            Current().onUnregister();
        }
        return Current().m_removeEvent(event);
    }

    /// Other threads come here, too, even while the test is ending: whoever waits for the event may destroy this.
    static BOOL WINAPI SignalEvent(HANDLE event)
    {
        ServiceCalls* const self = s_current;
        const bool isQueue = self != nullptr && event == self->m_event;
        const BOOL done = s_setEvent(event);
        if (isQueue)
        {
            self->m_queued.Give();
        }
        return done;
    }

    static __frl_stru_handle__* Open(__frl_stru_handle__* session, const wchar_t* method, const wchar_t* url,
                                     const wchar_t* headers)
    {
        Current().m_made.push_back("open " + Narrow(method) + " " + Narrow(url) + " " + Narrow(headers));
        return Current().m_open(session, method, url, headers);
    }

    static int AddCookie(__frl_stru_handle__* request, const wchar_t* cookie)
    {
        Current().m_made.push_back("cookie " + Narrow(cookie));
        return Current().m_addCookie(request, cookie);
    }

    static int SetTimeouts(__frl_stru_handle__* request, int resolve, int connect, int send, int receive)
    {
        Current().m_made.push_back("timeouts " + std::to_string(resolve) + " " + std::to_string(connect) + " " +
                                   std::to_string(send) + " " + std::to_string(receive));
        return Current().m_setTimeouts(request, resolve, connect, send, receive);
    }

    static int Perform(__frl_stru_handle__* request, const void* body, std::size_t length, frl_http_completion callback,
                       void* context)
    {
        Current().m_made.push_back("perform " + std::string(static_cast<const char*>(body), length));
        if (const int result = std::exchange(Current().m_performResult, 0); result != 0)
        {
            return result;
        }
        return Current().m_perform(request, body, length, callback, context);
    }

    static void CloseSession(__frl_stru_handle__* session)
    {
        ++Current().sessionsClosed;
        Current().m_closeSession(session);
    }

    static inline std::atomic<ServiceCalls*> s_current = nullptr;
    static inline decltype(&SetEvent) s_setEvent = nullptr;

    Texts m_made;
    int m_performResult = 0;
    std::atomic<void*> m_event = nullptr;
    Signal m_queued;
    Patch<decltype(&AddEvent)> m_addEvent{"frl_event_add_win32_event", AddEvent};
    Patch<decltype(&RemoveEvent)> m_removeEvent{"frl_event_remove_win32_event", RemoveEvent};
    Patch<decltype(&SignalEvent)> m_setEvent{"SetEvent", SignalEvent};
    Patch<decltype(&Open)> m_open{"frl_http_request_open", Open};
    Patch<decltype(&AddCookie)> m_addCookie{"frl_http_request_add_cookie", AddCookie};
    Patch<decltype(&SetTimeouts)> m_setTimeouts{"frl_http_request_set_timeouts", SetTimeouts};
    Patch<decltype(&Perform)> m_perform{"frl_http_request_perform", Perform};
    Patch<decltype(&CloseSession)> m_closeSession{"frl_http_session_close", CloseSession};
};

/// Keeps the host's event thread busy until it is told to let go.
class BusyEventThread
{
public:
    BusyEventThread() : m_event(CreateEventW(nullptr, FALSE, FALSE, nullptr))
    {
        frl_event_add_win32_event(
            m_event,
            [](void*, void* context) {
                auto* const self = static_cast<BusyEventThread*>(context);
                self->m_entered.Give();
                self->m_letGo.Take();
            },
            this);
        SetEvent(m_event);
        m_entered.Take();
    }
    ~BusyEventThread()
    {
        LetGo();
        frl_event_remove_win32_event(m_event);
        CloseHandle(m_event);
    }
    BusyEventThread(const BusyEventThread&) = delete;
    BusyEventThread& operator=(const BusyEventThread&) = delete;

    void LetGo()
    {
        if (!std::exchange(m_hasLetGo, true))
        {
            m_letGo.Give();
        }
    }

private:
    HANDLE m_event;
    Signal m_entered;
    Signal m_letGo;
    bool m_hasLetGo = false;
};

Exchange Answer(int status, const std::string& body)
{
    Exchange exchange;
    exchange.pieces = {"HTTP/1.1 " + std::to_string(status) + " Answer\r\nContent-Length: " +
                       std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body};
    return exchange;
}

/// A server that shows when a request has come, and holds its answer until it is told to go on.
class HeldAnswer
{
public:
    explicit HeldAnswer(const std::string& body)
    {
        Exchange exchange = Answer(200, body);
        exchange.beforeReply = [this] {
            m_came.Give();
            m_goOn.Take();
        };
        server.play({exchange});
    }
    ~HeldAnswer() { GoOn(); }
    HeldAnswer(const HeldAnswer&) = delete;
    HeldAnswer& operator=(const HeldAnswer&) = delete;

    void WaitForRequest() { m_came.Take(); }

    void GoOn()
    {
        if (!std::exchange(m_hasGoneOn, true))
        {
            m_goOn.Give();
        }
    }

private:
    Signal m_came;
    Signal m_goOn;
    bool m_hasGoneOn = false;

public:
    ScriptedServer server; // its thread waits for the others, and ends first
};

std::wstring Url(unsigned short port, std::wstring_view path)
{
    return L"http://127.0.0.1:" + std::to_wstring(port) + std::wstring(path);
}

/// A request and how it ended, made on a thread of its own.
class Call
{
public:
    Call(RequestDispatcher& dispatcher, __frl_stru_handle__* session, std::wstring url) : m_url(std::move(url))
    {
        answer.result = 77;
        m_thread = std::thread([this, &dispatcher, session] {
            result = dispatcher.Perform(session, {.method = L"GET", .url = m_url.c_str()}, &answer);
        });
    }
    ~Call() { Join(); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    void Join()
    {
        if (m_thread.joinable())
        {
            m_thread.join();
        }
    }

    int result = 77;
    SyncAnswer answer;

private:
    std::wstring m_url;
    std::thread m_thread;
};

class HttpSync : public testing::Test
{
protected:
    ~HttpSync() override { quorvex::CloseSession(session); }

    std::wstring Url(std::wstring_view path) const { return ::Url(server.port(), path); }

    int Get(const std::wstring& url)
    {
        return dispatcher->Perform(session, {.method = L"GET", .url = url.c_str()}, &answer);
    }

    int Get() { return Get(Url(L"/a")); }

    /// The lines about requests that are over, without what surrounds them.
    Texts Lines(std::string_view level) const
    {
        Texts lines = log.messages(level);
        std::erase_if(lines, [](const std::string& line) { return line.find("_sync_cb") == std::string::npos; });
        return lines;
    }

    support::LogCapture log;
    ServiceCalls calls;
    ScriptedServer server;
    std::atomic<__frl_stru_handle__*> session = quorvex::CreateSession();
    std::unique_ptr<RequestDispatcher> dispatcher = std::make_unique<RequestDispatcher>(noLimits);
    SyncAnswer answer;
};

} // namespace

TEST_F(HttpSync, SendsWhatItIsGiven)
{
    server.play({Answer(200, std::string("h\0llo\xFF", 6))});
    const std::wstring url = Url(L"/a/b?c=d");
    const SyncRequest request{.method = L"POST",
                              .url = url.c_str(),
                              .headers = L"X-One: 1\r\nX-Two: 2\r\n",
                              .body = std::string_view("b\0dy", 4),
                              .cookie = L"sid=5"};
    EXPECT_EQ(dispatcher->Perform(session, request, &answer), 0);
    server.stop();
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.code, 200);
    EXPECT_EQ(answer.body, std::string("h\0llo\xFF", 6));

    ASSERT_EQ(server.requests().size(), 1u);
    const std::string& sent = server.requests()[0];
    EXPECT_TRUE(sent.starts_with("POST /a/b?c=d HTTP/1.1\r\n")) << sent;
    EXPECT_NE(sent.find("\r\nX-One: 1\r\n"), std::string::npos) << sent;
    EXPECT_NE(sent.find("\r\nX-Two: 2\r\n"), std::string::npos) << sent;
    EXPECT_NE(sent.find("\r\nCookie: sid=5\r\n"), std::string::npos) << sent;
    EXPECT_NE(sent.find("\r\nContent-Length: 4\r\n"), std::string::npos) << sent;
    EXPECT_TRUE(sent.ends_with(std::string_view("\r\n\r\nb\0dy", 8))) << sent;
}

TEST_F(HttpSync, AsksTheServiceInOrder)
{
    dispatcher = std::make_unique<RequestDispatcher>(SyncTimeouts{1001, 2002, 3003, 4004});
    server.play({Answer(200, ""), Answer(200, "")});
    const std::string url = Narrow(Url(L"/a").c_str());
    EXPECT_EQ(Get(), 0);
    const Texts plain{"open GET " + url + " ", "timeouts 1001 2002 3003 4004", "perform "};
    EXPECT_EQ(calls.Made(), plain);

    const std::wstring second = Url(L"/a");
    EXPECT_EQ(dispatcher->Perform(
                  session,
                  {.method = L"POST", .url = second.c_str(), .headers = L"A: b\r\n", .body = "body", .cookie = L"c=d"},
                  &answer),
              0);
    const Texts all{plain[0],      plain[1],
                    plain[2],      "open POST " + url + " A: b\r\n",
                    "cookie c=d",  "timeouts 1001 2002 3003 4004",
                    "perform body"};
    EXPECT_EQ(calls.Made(), all);
}

TEST_F(HttpSync, ARefusalIsAnAnswer)
{
    server.play({Answer(404, "gone")});
    EXPECT_EQ(Get(), 0);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.code, 404);
    EXPECT_EQ(answer.body, "gone");
    EXPECT_EQ(log.messages("ERROR"), Texts{"_sync_cb result=0 code=404 body=\"gone\""});
}

TEST_F(HttpSync, AnEmptyBodyIsEmpty)
{
    answer.body = "from before";
    server.play({Answer(200, "")});
    EXPECT_EQ(Get(), 0);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.code, 200);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(Lines("DEBUG"), Texts{"_sync_cb result=0 code=200 body=\"\""});
}

TEST_F(HttpSync, StatusDecidesTheLevel)
{
    const std::vector<int> good{200, 206, 226, 299};
    const std::vector<int> bad{300, 400, 403, 404, 500, 599};
    std::vector<Exchange> script;
    for (const auto& statuses : {good, bad})
    {
        for (const int status : statuses)
        {
            script.push_back(Answer(status, "b"));
        }
    }
    server.play(script);
    for (const auto& [statuses, level] : {std::pair{good, "DEBUG"}, std::pair{bad, "ERROR"}})
    {
        for (const int status : statuses)
        {
            log.clear();
            EXPECT_EQ(Get(), 0);
            EXPECT_EQ(answer.result, 0);
            EXPECT_EQ(answer.code, status);
            EXPECT_EQ(Lines(level), Texts{"_sync_cb result=0 code=" + std::to_string(status) + " body=\"b\""});
        }
    }
}

TEST_F(HttpSync, WithoutASessionNothingIsSent)
{
    answer.code = 77;
    const std::wstring url = Url(L"/a");
    EXPECT_EQ(dispatcher->Perform(nullptr, {.method = L"GET", .url = url.c_str()}, &answer), -1);
    EXPECT_EQ(answer.code, 77);
    EXPECT_EQ(calls.Made(), Texts{});
}

TEST_F(HttpSync, ARequestWithoutARecordIsMadeAndNoted)
{
    server.play({Answer(200, "hello")});
    const std::wstring url = Url(L"/a");
    EXPECT_EQ(dispatcher->Perform(session, {.method = L"GET", .url = url.c_str()}, nullptr), 0);
    server.stop();
    EXPECT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(log.messages("ERROR"), Texts{"! frl_http_request_sync _sync_cb rd is empty!"});
    EXPECT_EQ(Lines("DEBUG"), Texts{});
}

TEST_F(HttpSync, ARequestWithoutARecordNeedsNoLog)
{
    server.play({Answer(200, "hello")});
    frl_log_set_level(0);
    const std::wstring url = Url(L"/a");
    EXPECT_EQ(dispatcher->Perform(session, {.method = L"GET", .url = url.c_str()}, nullptr), 0);
    server.stop();
    EXPECT_EQ(server.requests().size(), 1u);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(HttpSync, WhatCannotBeOpenedFails)
{
    EXPECT_EQ(Get(L"nonsense"), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_FAILED);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(log.messages("ERROR"), Texts{"_sync_cb result=-1 code=0 body=\"\""});
}

TEST_F(HttpSync, WhatCannotBePerformedFails)
{
    calls.FailPerform(FRL_HTTP_FAILED);
    EXPECT_EQ(Get(), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_FAILED);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(log.messages("ERROR"),
              (Texts{"frl_http_request_perform error, return -1", "_sync_cb result=-1 code=0 body=\"\""}));
}

TEST_F(HttpSync, NobodyListens)
{
    const support::RefusingPort port;
    EXPECT_EQ(Get(::Url(port.port(), L"/a")), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_FAILED);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(log.messages("ERROR"), Texts{"_sync_cb result=-1 code=0 body=\"\""});
}

TEST_F(HttpSync, AConnectionEndsWithoutAnAnswer)
{
    server.play({Exchange{}});
    EXPECT_EQ(Get(), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_FAILED);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(Lines("ERROR"), Texts{"_sync_cb result=-1 code=0 body=\"\""});
}

TEST_F(HttpSync, HalfABodyIsNoAnswer)
{
    Exchange half;
    half.pieces = {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\nConnection: close\r\n\r\nhello"};
    server.play({half});
    EXPECT_EQ(Get(), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_FAILED);
    EXPECT_EQ(Lines("ERROR").size(), 1u);
}

TEST_F(HttpSync, ABodyMayHaveItsLimit)
{
    server.play({Answer(200, "hello")});
    const std::wstring url = Url(L"/a");
    EXPECT_EQ(dispatcher->Perform(session, {.method = L"GET", .url = url.c_str(), .longest = 5}, &answer), 0);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.body, "hello");
}

TEST_F(HttpSync, ALongerBodyIsNoAnswer)
{
    server.play({Answer(200, "hello")});
    const std::wstring url = Url(L"/a");
    EXPECT_EQ(dispatcher->Perform(session, {.method = L"GET", .url = url.c_str(), .longest = 4}, &answer), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_FAILED);
    EXPECT_EQ(answer.code, 200);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(Lines("ERROR"),
              (Texts{"_sync_cb gives too long a response, limit=4", "_sync_cb result=-1 code=200 body=\"\""}));
}

TEST_F(HttpSync, AHostThatNeverAnswersTimesOut)
{
    dispatcher = std::make_unique<RequestDispatcher>(SyncTimeouts{0, 0, 0, 200});
    Exchange silent;
    silent.ending = Exchange::Ending::Hold;
    server.play({silent});
    EXPECT_EQ(Get(), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_TIMED_OUT);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(Lines("ERROR"), Texts{"_sync_cb result=-2 code=0 body=\"\""});
}

TEST_F(HttpSync, AHostThatStopsHalfwayTimesOut)
{
    dispatcher = std::make_unique<RequestDispatcher>(SyncTimeouts{0, 0, 0, 200});
    Exchange silent;
    silent.pieces = {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\nConnection: close\r\n\r\nhello"};
    silent.ending = Exchange::Ending::Hold;
    server.play({silent});
    EXPECT_EQ(Get(), 0);
    EXPECT_EQ(answer.result, FRL_HTTP_TIMED_OUT);
    EXPECT_EQ(Lines("ERROR").size(), 1u);
}

TEST_F(HttpSync, QueuedRequestsStartInTheirOrder)
{
    constexpr int count = 16;
    server.play(std::vector<Exchange>(count, Answer(200, "hello")));
    BusyEventThread busy;
    std::vector<std::unique_ptr<Call>> waiting;
    for (int i = 0; i < count; ++i)
    {
        waiting.push_back(std::make_unique<Call>(*dispatcher, session, Url(L"/" + std::to_wstring(i))));
        calls.WaitForQueued();
    }
    EXPECT_EQ(calls.Made(), Texts{});
    busy.LetGo();
    for (const auto& call : waiting)
    {
        call->Join();
        EXPECT_EQ(call->result, 0);
        EXPECT_EQ(call->answer.result, 0);
        EXPECT_EQ(call->answer.body, "hello");
    }
    Texts opened;
    std::ranges::copy_if(calls.Made(), std::back_inserter(opened),
                         [](const std::string& call) { return call.starts_with("open"); });
    Texts expected;
    for (int i = 0; i < count; ++i)
    {
        expected.push_back("open GET " + Narrow(Url(L"/" + std::to_wstring(i)).c_str()) + " ");
    }
    EXPECT_EQ(opened, expected);
}

TEST_F(HttpSync, RefusesRequestsWhileItIsDestroyed)
{
    int result = 77;
    answer.code = 77;
    // The pointer is empty by the time its object is being destroyed.
    RequestDispatcher& dying = *dispatcher;
    const std::wstring url = Url(L"/a");
    calls.onUnregister = [&] { result = dying.Perform(session, {.method = L"GET", .url = url.c_str()}, &answer); };
    dispatcher.reset();
    EXPECT_EQ(result, -1);
    EXPECT_EQ(answer.code, 77);
    EXPECT_EQ(calls.Made(), Texts{});
}

TEST_F(HttpSync, DestroyedWithRequestsWaiting)
{
    BusyEventThread busy;
    std::vector<std::unique_ptr<Call>> waiting;
    for (int i = 0; i < 3; ++i)
    {
        waiting.push_back(std::make_unique<Call>(*dispatcher, session, Url(L"/a")));
        calls.WaitForQueued();
    }
    Signal stopping;
    calls.onUnregister = [&] { stopping.Give(); };
    std::thread destroyer([&] { dispatcher.reset(); });
    stopping.Take();
    busy.LetGo();
    destroyer.join();
    for (const auto& call : waiting)
    {
        call->Join();
        EXPECT_TRUE(call->result == -1 || call->answer.result < 0) << call->result << " " << call->answer.result;
    }
    EXPECT_EQ(calls.Made(), Texts{});
}

TEST_F(HttpSync, DestroyedWithARequestUnderWay)
{
    HeldAnswer held("hello");
    Call call(*dispatcher, session, ::Url(held.server.port(), L"/a"));
    held.WaitForRequest();
    dispatcher.reset();
    held.GoOn();
    call.Join();
    EXPECT_EQ(call.result, 0);
    EXPECT_EQ(call.answer.result, 0);
    EXPECT_EQ(call.answer.code, 200);
    EXPECT_EQ(call.answer.body, "hello");
}

TEST_F(HttpSync, ClosedWithARequestUnderWay)
{
    HeldAnswer held("hello");
    Call call(*dispatcher, session, ::Url(held.server.port(), L"/a"));
    held.WaitForRequest();
    quorvex::CloseSession(session);
    call.Join();
    EXPECT_EQ(call.result, 0);
    EXPECT_EQ(call.answer.result, FRL_HTTP_CLOSED);
    EXPECT_EQ(call.answer.body, "");
    EXPECT_EQ(Get(), -1);
}

TEST_F(HttpSync, ClosedAndDestroyedWithARequestUnderWay)
{
    HeldAnswer held("hello");
    Call call(*dispatcher, session, ::Url(held.server.port(), L"/a"));
    held.WaitForRequest();
    quorvex::CloseSession(session);
    dispatcher.reset();
    call.Join();
    EXPECT_EQ(call.answer.result, FRL_HTTP_CLOSED);
}

TEST_F(HttpSync, ClosedWithARequestWaiting)
{
    BusyEventThread busy;
    Call call(*dispatcher, session, Url(L"/a"));
    calls.WaitForQueued();
    quorvex::CloseSession(session);
    busy.LetGo();
    call.Join();
    EXPECT_TRUE(call.result == -1 || call.answer.result < 0) << call.result << " " << call.answer.result;
}

TEST_F(HttpSync, ASessionIsClosedOnce)
{
    std::vector<std::thread> closers;
    for (int i = 0; i < 8; ++i)
    {
        closers.emplace_back([this] { quorvex::CloseSession(session); });
    }
    for (std::thread& closer : closers)
    {
        closer.join();
    }
    EXPECT_EQ(calls.sessionsClosed, 1);
    EXPECT_EQ(session.load(), nullptr);
}

TEST_F(HttpSync, OneDispatcherServesSeveralThreads)
{
    constexpr int threads = 8;
    constexpr int each = 10;
    server.play(std::vector<Exchange>(threads * each, Answer(200, "hello")));
    std::atomic<int> good = 0;
    std::vector<std::thread> callers;
    for (int i = 0; i < threads; ++i)
    {
        callers.emplace_back([&] {
            for (int n = 0; n < each; ++n)
            {
                const std::wstring url = Url(L"/a");
                SyncAnswer own;
                good += dispatcher->Perform(session, {.method = L"GET", .url = url.c_str()}, &own) == 0 &&
                                own.result == 0 && own.code == 200 && own.body == "hello"
                            ? 1
                            : 0;
            }
        });
    }
    for (std::thread& caller : callers)
    {
        caller.join();
    }
    EXPECT_EQ(good, threads * each);
}

namespace
{

constexpr int kRounds = 25;
constexpr std::size_t kRequests = 5 * kRounds;

/// What one object works on; nothing of it looks like another object's.
std::string Content(int object, int round)
{
    return "object " + std::to_string(object) + ", round " + std::to_string(round) + "." +
           std::string(static_cast<std::size_t>(100 * object + round), 'x');
}

/// The second generation's five requests of each round, and their answers.
std::vector<Exchange> SecondGenerationScript(int object)
{
    std::vector<Exchange> script;
    for (int round = 0; round < kRounds; ++round)
    {
        script.push_back(Answer(200, R"({"result":200,"fkey":"up.txt","fsize":1,"errorinfo":""})"));
        script.push_back(Answer(200, Content(object, round)));
        script.push_back(Answer(200, R"({"result":200,"errorinfo":""})"));
        script.push_back(Answer(206, Content(object, round)));
        script.push_back(Answer(200, R"({"result":200,"errorinfo":""})"));
    }
    return script;
}

void WorkInTheSecondGeneration(int object, const std::wstring& url, const std::wstring& folder)
{
    CFileStorage2 storage(url.c_str(), L"S", 0, 0, 0, 0);
    for (int round = 0; round < kRounds; ++round)
    {
        std::string content = Content(object, round);
        support::writeFile(folder + L"\\up.txt", content);
        EXPECT_EQ(storage.PictureUpload(folder.c_str(), L"up.txt"), 0);
        EXPECT_EQ(storage.PictureDownload(folder.c_str(), L"down.txt"), 0);
        EXPECT_EQ(support::readFile(folder + L"\\down.txt"), content);
        const auto size = static_cast<unsigned long>(content.size());
        EXPECT_EQ(storage.LargeFileUpload(L"K", content.data(), size, 0), 0);
        std::string received(content.size(), '?');
        unsigned long length = size;
        EXPECT_EQ(storage.LargeFileDownload(L"7", L"K", 0, received.data(), length), 0);
        EXPECT_EQ(received, content);
        EXPECT_EQ(storage.LargeFileRemove(L"K"), 0);
    }
}

/// The third generation's.
std::vector<Exchange> ThirdGenerationScript(int object)
{
    const std::string done = R"({"code":200,"fkey":"K","ticket":"T","fsize":1,"msg":""})";
    std::vector<Exchange> script;
    for (int round = 0; round < kRounds; ++round)
    {
        script.push_back(Answer(200, done));
        script.push_back(Answer(200, Content(object, round)));
        script.push_back(Answer(200, done));
        script.push_back(Answer(206, Content(object, round)));
        script.push_back(Answer(404, ""));
    }
    return script;
}

void WorkInTheThirdGeneration(int object, const std::wstring& url)
{
    CFileStorage3 storage((url + L"/").c_str(), L"sid=5", 0, 0, 0, 0);
    for (int round = 0; round < kRounds; ++round)
    {
        std::string content = Content(object, round);
        const auto size = static_cast<unsigned long>(content.size());
        EXPECT_EQ(storage.PictureUpload(L"p", content.data(), size), 0);

        void* picture = nullptr;
        unsigned long length = 0;
        EXPECT_EQ(storage.PictureDownload(L"f", L"p", &picture, &length), 0);
        EXPECT_EQ(std::string_view(static_cast<const char*>(picture), length), content);
        storage.releaseBuffer(&picture);

        EXPECT_EQ(storage.BufferUpload(nullptr, content.data(), size, 0, L"n", nullptr, 0), 0);
        std::string received(content.size(), '?');
        length = size;
        EXPECT_EQ(storage.Bufferdownload(L"7", L"K", 0, received.data(), length), 206);
        EXPECT_EQ(received, content);

        void* missing = nullptr;
        EXPECT_EQ(storage.PictureDownload(L"f", L"q", &missing, &length), 0);
        EXPECT_EQ(missing, nullptr);
    }
}

/// What one object's server saw must be that object's.
void CheckUploads(int object, const ScriptedServer& server)
{
    ASSERT_EQ(server.requests().size(), kRequests);
    EXPECT_EQ(server.unexpectedConnections(), 0u);
    for (int round = 0; round < kRounds; ++round)
    {
        for (const std::size_t upload : {0, 2})
        {
            const std::string& request = server.requests()[static_cast<std::size_t>(round) * 5 + upload];
            EXPECT_NE(request.find("\r\n" + Content(object, round) + "\r\n--"), std::string::npos) << request;
        }
    }
}

} // namespace

namespace
{

/// The header lines of each request that was opened, and "B" for its boundary.
Texts OpenedHeaders(const ServiceCalls& calls)
{
    static constexpr std::string_view boundary = "boundary=";
    Texts headers;
    for (const std::string& call : calls.Made())
    {
        if (!call.starts_with("open "))
        {
            continue;
        }
        std::string text = call.substr(call.find(' ', call.find("http://")) + 1);
        if (const auto at = text.find(boundary); at != std::string::npos)
        {
            text.replace(at + boundary.size(), 40, "B");
        }
        if (text.starts_with("Range") && text.ends_with("\r\n"))
        {
            text.resize(text.size() - 2); // the service takes a last line with or without its end
        }
        headers.push_back(text);
    }
    return headers;
}

} // namespace

TEST(FileStorageHeaders, OfTheSecondGeneration)
{
    const support::TempFolder folder;
    support::writeFile(folder.path() / "a.txt", "hello");
    const std::wstring path = folder.path().wstring();
    ServiceCalls calls;
    ScriptedServer server;
    server.play(std::vector<Exchange>(7, Answer(404, "")));
    CFileStorage2 storage(Url(server.port(), L"/api").c_str(), L"S", 10001, 20002, 30003, 40004);
    char block[] = "hello";
    wchar_t key[65];
    unsigned long length = 5;
    EXPECT_EQ(storage.UserLogin(L"S"), 404);
    EXPECT_EQ(storage.PictureUpload(path.c_str(), L"a.txt"), 404);
    EXPECT_EQ(storage.PictureDownload(path.c_str(), L"b.txt"), 404);
    EXPECT_EQ(storage.LargeFileCreate(path.c_str(), L"a.txt", key, 65), 404);
    EXPECT_EQ(storage.LargeFileUpload(L"K", block, 5, 0), 404);
    EXPECT_EQ(storage.LargeFileUploadFinish(L"K"), 404);
    EXPECT_EQ(storage.LargeFileDownload(L"7", L"K", 10, block, length), 404);
    const std::string form = "Content-Type:multipart/form-data; boundary=B\r\n";
    const std::string fields = "Content-Type: application/x-www-form-urlencoded\r\n";
    const Texts expected{"", form, "", fields, form, fields, "Range: bytes=10-14"};
    EXPECT_EQ(OpenedHeaders(calls), expected);
    EXPECT_EQ(std::ranges::count(calls.Made(), "timeouts 10001 20002 30003 40004"), 7);
}

TEST(FileStorageHeaders, OfTheThirdGeneration)
{
    ServiceCalls calls;
    ScriptedServer server;
    server.play(std::vector<Exchange>(4, Answer(404, "")));
    const CFileStorage3 storage(Url(server.port(), L"/").c_str(), L"sid=5", 10001, 20002, 30003, 40004);
    char block[] = "hello";
    void* picture = nullptr;
    unsigned long length = 5;
    EXPECT_EQ(storage.PictureUpload(L"p", block, 5), 404);
    EXPECT_EQ(storage.PictureDownload(L"f", L"p", &picture, &length), 0);
    EXPECT_EQ(storage.BufferUpload(nullptr, block, 5, 0, L"n", nullptr, 0), 404);
    EXPECT_EQ(storage.Bufferdownload(L"7", L"K", 10, block, length), 404);
    const std::string form = "Content-Type:multipart/form-data; boundary=B\r\n";
    const Texts expected{form, "", form, "Range: bytes=10-14"};
    EXPECT_EQ(OpenedHeaders(calls), expected);
    EXPECT_EQ(std::ranges::count(calls.Made(), "cookie sid=5"), 4);
    EXPECT_EQ(std::ranges::count(calls.Made(), "timeouts 10001 20002 30003 40004"), 4);
}

TEST(FileStoragesOnThreads, EightObjectsAThousandRequests)
{
    constexpr int objects = 8;
    std::vector<std::unique_ptr<ScriptedServer>> servers;
    std::vector<std::unique_ptr<support::TempFolder>> folders;
    for (int object = 0; object < objects; ++object)
    {
        servers.push_back(std::make_unique<ScriptedServer>());
        folders.push_back(std::make_unique<support::TempFolder>());
        servers.back()->play(object % 2 == 0 ? SecondGenerationScript(object) : ThirdGenerationScript(object));
    }
    std::vector<std::thread> threads;
    for (int object = 0; object < objects; ++object)
    {
        const auto index = static_cast<std::size_t>(object);
        threads.emplace_back(
            [object, url = Url(servers[index]->port(), L"/api"), folder = folders[index]->path().wstring()] {
                if (object % 2 == 0)
                {
                    WorkInTheSecondGeneration(object, url, folder);
                }
                else
                {
                    WorkInTheThirdGeneration(object, url);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (int object = 0; object < objects; ++object)
    {
        SCOPED_TRACE(object);
        ScriptedServer& server = *servers[static_cast<std::size_t>(object)];
        server.stop();
        CheckUploads(object, server);
    }
}

TEST(FileStoragesOnThreads, ExitOfTheSecondGenerationDuringUse)
{
    const support::TempFolder folder;
    HeldAnswer held("hello");
    CFileStorage2 storage(Url(held.server.port(), L"/api").c_str(), L"S", 0, 0, 0, 0);
    int result = 77;
    std::thread user([&] { result = storage.PictureDownload(folder.path().c_str(), L"p.png"); });
    held.WaitForRequest();
    storage.exit();
    user.join();
    EXPECT_EQ(result, FRL_HTTP_CLOSED);
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "p.png"));
    EXPECT_EQ(storage.LargeFileRemove(L"K"), -1);
}

TEST(FileStoragesOnThreads, ExitOfTheThirdGenerationDuringUse)
{
    HeldAnswer held("hello");
    CFileStorage3 storage(Url(held.server.port(), L"/").c_str(), L"sid=5", 0, 0, 0, 0);
    int result = 77;
    void* buffer = nullptr;
    unsigned long size = 42;
    std::thread user([&] { result = storage.PictureDownload(L"f", L"p", &buffer, &size); });
    held.WaitForRequest();
    storage.exit();
    user.join();
    EXPECT_EQ(result, FRL_HTTP_CLOSED);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(size, 42u);
    EXPECT_EQ(storage.PictureDownload(L"f", L"p", &buffer, &size), -1);
}

TEST(FileStoragesOnThreads, ExitBetweenTwoRequests)
{
    constexpr int before = 20;
    std::vector<Exchange> script(2 * before, Answer(200, R"({"result":200,"errorinfo":""})"));
    Signal halfway;
    script[before - 1].beforeReply = [&] { halfway.Give(); };
    ScriptedServer server;
    server.play(script);
    CFileStorage2 storage(Url(server.port(), L"/api").c_str(), L"S", 0, 0, 0, 0);
    std::vector<int> results;
    std::thread user([&] {
        for (int i = 0; i < 2 * before; ++i)
        {
            results.push_back(storage.LargeFileRemove(L"K"));
        }
    });
    halfway.Take();
    storage.exit();
    user.join();
    // Each request came through, or was broken off, or was not made, and in this order.
    EXPECT_TRUE(std::ranges::all_of(results.begin(), results.begin() + before - 1, [](int r) { return r == 0; }));
    const auto rest = std::ranges::find_if(results, [](int r) { return r != 0; });
    EXPECT_TRUE(std::all_of(rest, results.end(), [&](int r) { return r == -1 || r == FRL_HTTP_CLOSED; }));
    EXPECT_LE(std::ranges::count(results, static_cast<int>(FRL_HTTP_CLOSED)), 1);
}
