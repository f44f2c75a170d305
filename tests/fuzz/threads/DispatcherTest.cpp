#include "HostServices.h"

#include "Expect.h"
#include "platform/Event.h"

#include "http_sync.h"

#include <quorvex/Results.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

/// The dispatcher of the blocking requests, driven by many threads at once under the thread sanitizer. The program's
/// argument names one of the tests.

using namespace quorvex;
using namespace quorvex::fuzz;

namespace
{

constexpr SyncTimeouts kNoLimits{0, 0, 0, 0};
constexpr std::size_t kThreads = 12;

/// Runs the same on several threads, each with its number.
template <class Action>
void Together(std::size_t count, Action action)
{
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        threads.emplace_back(action, i);
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

class Session
{
public:
    Session() : m_handle(CreateSession()) {}
    ~Session() { Close(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    __frl_stru_handle__* Handle() const { return m_handle.load(); }
    void Close() { CloseSession(m_handle); }

private:
    std::atomic<__frl_stru_handle__*> m_handle;
};

struct Kind
{
    const wchar_t* url;
    int result;
    int code;
    const wchar_t* cookie = L"";
};

// A cookie or time-outs that are refused do not keep a request from being made.
constexpr std::array<Kind, 8> kKinds = {{{kEcho, FRL_HTTP_COMPLETED, 200},
                                         {kMissing, FRL_HTTP_COMPLETED, 404},
                                         {kFails, FRL_HTTP_FAILED, 0},
                                         {kTimesOut, FRL_HTTP_TIMED_OUT, 0},
                                         {kOpenFails, FRL_HTTP_FAILED, 0},
                                         {kPerformFails, FRL_HTTP_FAILED, 0},
                                         {kTimeoutsFail, FRL_HTTP_COMPLETED, 200},
                                         {kEcho, FRL_HTTP_COMPLETED, 200, kBadCookie}}};

void ExpectRequest(RequestDispatcher& dispatcher, const Session& session, const Kind& kind, const std::string& body)
{
    SyncAnswer answer;
    const int result = dispatcher.Perform(
        session.Handle(), {.method = L"POST", .url = kind.url, .body = body, .cookie = kind.cookie}, &answer);
    Expect(result == Result::Ok, "a request is made");
    Expect(answer.result == kind.result && answer.code == kind.code, "a request ends as its server wants it");
    Expect(answer.body == (kind.code == 200 ? body : ""), "an answer is the request's own");
}

/// Many threads, one client, every kind of end.
void Requests()
{
    static constexpr std::size_t kRounds = 3000;

    const Session session;
    RequestDispatcher dispatcher(kNoLimits);
    Together(kThreads, [&](std::size_t thread) {
        for (std::size_t i = 0; i < kRounds; ++i)
        {
            const std::string body = std::to_string(thread) + " " + std::to_string(i);
            ExpectRequest(dispatcher, session, kKinds[(thread + i) % kKinds.size()], body);
        }
        Expect(dispatcher.Perform(session.Handle(), {.method = L"GET", .url = kEcho}, nullptr) == Result::Ok,
               "an answer that nobody wants");
    });
}

/// Clients that come and go.
void Clients()
{
    static constexpr std::size_t kRounds = 1500;

    Together(kThreads, [](std::size_t thread) {
        for (std::size_t i = 0; i < kRounds; ++i)
        {
            const Session session;
            RequestDispatcher dispatcher(kNoLimits);
            const std::string body = std::to_string(thread * kRounds + i);
            ExpectRequest(dispatcher, session, kKinds[i % kKinds.size()], body);
        }
    });
}

/// A session that is closed while threads wait for their answers: everybody's request ends.
void Closing()
{
    static constexpr std::size_t kRounds = 600;

    for (std::size_t round = 0; round < kRounds; ++round)
    {
        Session session;
        RequestDispatcher dispatcher(kNoLimits);
        std::thread closing([&] {
            AwaitHanging(round % kThreads / 2);
            session.Close();
        });
        Together(kThreads, [&](std::size_t thread) {
            const bool hangs = thread % 2 == 0;
            SyncAnswer answer;
            const int result = dispatcher.Perform(
                session.Handle(), {.method = L"GET", .url = hangs ? kHangs : kEcho, .body = "x"}, &answer);
            if (result != Result::Ok)
            {
                Expect(result == Result::RequestRefused, "without a session no request is made");
                return;
            }
            const bool isEnded = answer.result == FRL_HTTP_CLOSED || answer.result == FRL_HTTP_FAILED;
            Expect(isEnded || (!hangs && answer.body == "x"), "a closed session's requests end");
        });
        closing.join();
    }
}

/// A dispatcher that ends while threads wait in its queue.
void Ending()
{
    static constexpr std::size_t kRounds = 600;

    for (std::size_t round = 0; round < kRounds; ++round)
    {
        const Session session;
        auto dispatcher = std::make_unique<RequestDispatcher>(kNoLimits);
        auto pause = std::make_unique<PausedEventThread>();
        std::vector<std::thread> waiting;
        for (std::size_t thread = 0; thread < kThreads; ++thread)
        {
            waiting.emplace_back([&, queue = dispatcher.get()] {
                SyncAnswer answer;
                const int result =
                    queue->Perform(session.Handle(), {.method = L"GET", .url = kEcho, .body = "x"}, &answer);
                Expect(result == Result::Ok, "a request is queued");
                Expect(answer.result == FRL_HTTP_CLOSED || answer.body == "x", "a request ends with its dispatcher");
            });
        }
        pause->AwaitSignals(kThreads);
        // In every other round the event thread takes requests while the dispatcher ends.
        if (round % 2 == 0)
        {
            pause.reset();
        }
        dispatcher.reset();
        for (std::thread& thread : waiting)
        {
            thread.join();
        }
    }
}

/// A system that has no events, no registrations and no sessions for some.
void Failures()
{
    static constexpr std::size_t kRounds = 1500;

    const Session session;
    RequestDispatcher shared(kNoLimits);
    Together(kThreads, [&](std::size_t thread) {
        for (std::size_t i = 0; i < kRounds; ++i)
        {
            SyncAnswer answer;
            const SyncRequest request{.method = L"GET", .url = kEcho, .body = "x"};
            switch ((thread + i) % 4)
            {
            case 0:
            {
                FailEvent(1);
                RequestDispatcher dispatcher(kNoLimits);
                Expect(dispatcher.Perform(session.Handle(), request, &answer) == Result::RequestRefused, "no queue");
                break;
            }
            case 1:
            {
                FailRegistration();
                RequestDispatcher dispatcher(kNoLimits);
                Expect(dispatcher.Perform(session.Handle(), request, &answer) == Result::RequestRefused,
                       "no registration");
                break;
            }
            case 2:
                FailEvent(1);
                Expect(shared.Perform(session.Handle(), request, &answer) == Result::RequestRefused,
                       "nothing to wait for");
                break;
            default:
            {
                FailSession();
                const Session none;
                Expect(shared.Perform(none.Handle(), request, &answer) == Result::RequestRefused, "no session");
            }
            }
            ExpectRequest(shared, session, kKinds[0], "and then well");
        }
    });
}

constexpr std::array<std::pair<std::string_view, void (*)()>, 5> kTests = {
    {{"requests", Requests}, {"clients", Clients}, {"closing", Closing}, {"ending", Ending}, {"failures", Failures}}};

} // namespace

int main(int count, char** arguments)
{
    for (const auto& [name, test] : kTests)
    {
        if (count == 2 && name == arguments[1])
        {
            test();
            Expect(IsEverythingClosed(), "everything that was opened is closed");
            return 0;
        }
    }
    std::fputs("Name one of the tests.\n", stderr);
    return 2;
}
