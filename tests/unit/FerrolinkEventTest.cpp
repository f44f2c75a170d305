#include <ferrolink/event.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <windows.h>

namespace
{

/// An auto-reset event of the system.
class AutoResetEvent
{
public:
    AutoResetEvent() : m_handle(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    ~AutoResetEvent() { CloseHandle(m_handle); }
    AutoResetEvent(const AutoResetEvent&) = delete;
    AutoResetEvent& operator=(const AutoResetEvent&) = delete;

    HANDLE get() const { return m_handle; }
    void set() const { SetEvent(m_handle); }
    void wait() const { WaitForSingleObject(m_handle, INFINITE); }
    bool isSet() const { return WaitForSingleObject(m_handle, 0) == WAIT_OBJECT_0; }

private:
    HANDLE m_handle;
};

/// An event that is registered, from start() to remove(), with a callback of the test's.
class Registered
{
public:
    explicit Registered(std::function<void()> callback) : m_callback(std::move(callback)) {}
    ~Registered() { remove(); }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

    Registered& start()
    {
        EXPECT_EQ(frl_event_add_win32_event(m_event.get(), call, this), 0);
        return *this;
    }
    int remove() { return frl_event_remove_win32_event(m_event.get()); }
    void signal() const { m_event.set(); }
    const AutoResetEvent& event() const { return m_event; }

private:
    static void call(void* event, void* context)
    {
        auto& self = *static_cast<Registered*>(context);
        EXPECT_EQ(event, self.m_event.get());
        self.m_callback();
    }

    AutoResetEvent m_event;
    std::function<void()> m_callback;
};

/// Registers so many events that those that come after them are beyond what one wait of the system takes.
class Crowd
{
public:
    Crowd()
    {
        for (int i = 0; i < 64; ++i)
        {
            m_events.push_back(std::make_unique<Registered>([] {}));
            m_events.back()->start();
        }
    }

private:
    std::vector<std::unique_ptr<Registered>> m_events;
};

/// Everything holds for the first events and for those beyond the system's limit alike.
class FerrolinkEvent : public testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        if (GetParam())
            m_crowd = std::make_unique<Crowd>();
    }

    /// Waits until the event thread has done all that it could know of so far.
    static void settle()
    {
        const AutoResetEvent done;
        Registered last([&] { done.set(); });
        last.start().signal();
        done.wait();
    }

private:
    std::unique_ptr<Crowd> m_crowd;
};

INSTANTIATE_TEST_SUITE_P(Few, FerrolinkEvent, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Many, FerrolinkEvent, testing::Values(true));

/// Keeps the event thread busy until release().
class Blockade
{
public:
    Blockade()
    {
        m_blocker.start().signal();
        m_blocked.wait();
    }
    ~Blockade()
    {
        release();
        m_blocker.remove();
    }
    Blockade(const Blockade&) = delete;
    Blockade& operator=(const Blockade&) = delete;

    void release() { m_gate.set(); }

private:
    AutoResetEvent m_gate;
    AutoResetEvent m_blocked;
    Registered m_blocker{[this] {
        m_blocked.set();
        m_gate.wait();
    }};
};

TEST_P(FerrolinkEvent, CallbackRunsOnceForEachSignal)
{
    const AutoResetEvent done;
    int calls = 0;
    Registered registered([&] {
        ++calls;
        done.set();
    });
    registered.start();
    for (int signal = 1; signal <= 100; ++signal)
    {
        registered.signal();
        done.wait();
        ASSERT_EQ(calls, signal);
    }
    settle();
    EXPECT_EQ(calls, 100);
    EXPECT_FALSE(registered.event().isSet());
}

TEST_P(FerrolinkEvent, SignalBeforeTheRegistrationCounts)
{
    const AutoResetEvent done;
    Registered registered([&] { done.set(); });
    registered.signal();
    registered.start();
    done.wait();
}

TEST_P(FerrolinkEvent, SeveralSignalsBeforeTheCallbackMayBeOne)
{
    const AutoResetEvent done;
    int calls = 0;
    Registered registered([&] {
        ++calls;
        done.set();
    });
    registered.start();
    Blockade blockade;
    for (int i = 0; i < 3; ++i)
        registered.signal();
    blockade.release();
    done.wait();
    registered.remove();
    // Where another thread watches the event, it may see the last signal only when the callback has begun.
    EXPECT_GE(calls, 1);
    EXPECT_LE(calls, GetParam() ? 3 : 1);
}

TEST_P(FerrolinkEvent, CallbacksRunInTheOrderOfTheirSignals)
{
    constexpr int count = 10;
    std::vector<int> order;
    const AutoResetEvent called;
    std::vector<std::unique_ptr<Registered>> events;
    for (int i = 0; i < count; ++i)
    {
        events.push_back(std::make_unique<Registered>([&, i] {
            order.push_back(i);
            called.set();
        }));
        events.back()->start();
    }
    std::vector<int> expected;
    for (int i = 0; i < 5 * count; ++i)
    {
        const int next = i * 7 % count;
        events[static_cast<std::size_t>(next)]->signal();
        called.wait();
        expected.push_back(next);
    }
    events.clear();
    EXPECT_EQ(order, expected);
}

TEST_P(FerrolinkEvent, BusyEventLeavesRoomForOthers)
{
    std::unique_ptr<Registered> busy;
    busy = std::make_unique<Registered>([&] { busy->signal(); });
    busy->start().signal();
    const AutoResetEvent done;
    Registered other([&] { done.set(); });
    other.start();
    for (int i = 0; i < 20; ++i)
    {
        other.signal();
        done.wait();
    }
    busy->remove();
}

TEST_P(FerrolinkEvent, CallbackMayRemoveItself)
{
    const AutoResetEvent done;
    int calls = 0;
    std::unique_ptr<Registered> registered;
    registered = std::make_unique<Registered>([&] {
        ++calls;
        EXPECT_EQ(registered->remove(), 0);
        EXPECT_EQ(registered->remove(), int{ERROR_NOT_FOUND});
        done.set();
    });
    registered->start().signal();
    done.wait();
    registered->signal();
    settle();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(registered->event().isSet());
}

TEST_P(FerrolinkEvent, CallbackMayRemoveAndAddAgain)
{
    const AutoResetEvent done;
    std::unique_ptr<Registered> registered;
    registered = std::make_unique<Registered>([&] {
        EXPECT_EQ(registered->remove(), 0);
        registered->start();
        done.set();
    });
    registered->start();
    for (int i = 0; i < 20; ++i)
    {
        registered->signal();
        done.wait();
    }
    registered->remove();
}

TEST_P(FerrolinkEvent, CallbackMayRemoveAnotherWhoseSignalIsWaiting)
{
    const AutoResetEvent done;
    bool wasCalled = false;
    Registered victim([&] { wasCalled = true; });
    victim.start();
    Registered remover([&] {
        victim.signal();
        EXPECT_EQ(victim.remove(), 0);
        done.set();
    });
    remover.start().signal();
    done.wait();
    settle();
    EXPECT_FALSE(wasCalled);
}

TEST_P(FerrolinkEvent, RemovalWaitsForTheCallbackThatIsRunning)
{
    for (int i = 0; i < 50; ++i)
    {
        const AutoResetEvent running;
        const AutoResetEvent removing;
        std::atomic<bool> isOver{false};
        Registered registered([&] {
            running.set();
            removing.wait();
            for (int turn = 0; turn < 10; ++turn)
                SwitchToThread();
            isOver = true;
        });
        registered.start().signal();
        running.wait();
        removing.set();
        EXPECT_EQ(registered.remove(), 0);
        ASSERT_TRUE(isOver);
    }
}

TEST_P(FerrolinkEvent, RemovalDoesNotWaitForOtherCallbacks)
{
    bool wasCalled = false;
    Registered registered([&] { wasCalled = true; });
    registered.start();
    {
        const Blockade blockade;
        registered.signal();
        EXPECT_EQ(registered.remove(), 0);
    }
    settle();
    EXPECT_FALSE(wasCalled);
}

TEST_P(FerrolinkEvent, SignalAfterTheRemovalIsTheOwners)
{
    for (int i = 0; i < 200; ++i)
    {
        Registered registered([] { ADD_FAILURE() << "called after its removal"; });
        registered.start();
        EXPECT_EQ(registered.remove(), 0);
        registered.signal();
        ASSERT_TRUE(registered.event().isSet());
    }
}

TEST_P(FerrolinkEvent, RefusedCallsRegisterNothing)
{
    Registered registered([] {});
    const auto noCallback = [](void*, void*) { ADD_FAILURE() << "not registered"; };
    EXPECT_EQ(registered.remove(), int{ERROR_NOT_FOUND});
    EXPECT_EQ(frl_event_remove_win32_event(nullptr), int{ERROR_NOT_FOUND});
    EXPECT_EQ(frl_event_add_win32_event(nullptr, noCallback, nullptr), int{ERROR_INVALID_HANDLE});
    EXPECT_EQ(frl_event_add_win32_event(registered.event().get(), nullptr, nullptr), int{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(registered.remove(), int{ERROR_NOT_FOUND});

    registered.start();
    EXPECT_EQ(frl_event_add_win32_event(registered.event().get(), noCallback, nullptr), int{ERROR_ALREADY_EXISTS});
    registered.signal();
    settle();
    EXPECT_EQ(registered.remove(), 0);
}

TEST_P(FerrolinkEvent, EventThatIsClosedTooEarlyHarmsNobodyElse)
{
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ASSERT_EQ(frl_event_add_win32_event(
                  event, [](void*, void*) {}, nullptr),
              0);
    CloseHandle(event);
    settle();
    EXPECT_EQ(frl_event_remove_win32_event(event), 0);
    settle();
}

TEST_P(FerrolinkEvent, EveryThreadMayAddSignalAndRemove)
{
    std::vector<std::thread> threads;
    std::atomic<int> calls{0};
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 100; ++round)
            {
                const AutoResetEvent done;
                Registered registered([&] {
                    ++calls;
                    done.set();
                });
                registered.start().signal();
                if (round % 2 == 0)
                    done.wait();
                ASSERT_EQ(registered.remove(), 0);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GE(calls, 8 * 50);
    EXPECT_LE(calls, 8 * 100);
}

TEST_P(FerrolinkEvent, NoHandleIsLeftBehind)
{
    const auto useMany = [] {
        std::vector<std::unique_ptr<Registered>> events;
        const AutoResetEvent done;
        for (int i = 0; i < 300; ++i)
        {
            events.push_back(std::make_unique<Registered>([&] { done.set(); }));
            events.back()->start().signal();
            done.wait();
        }
    };
    const auto openHandles = [] {
        settle();
        DWORD count = 0;
        EXPECT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &count));
        return count;
    };
    useMany();
    const DWORD before = openHandles();
    for (int i = 0; i < 3; ++i)
        useMany();
    // Threads of the system's pool come and go; three hundred events would show.
    EXPECT_LT(openHandles(), before + 100);
}

TEST(FerrolinkEvents, ThreeHundredAreCalledOnOneThread)
{
    std::vector<std::unique_ptr<Registered>> events;
    std::vector<int> calls(300);
    std::vector<DWORD> threads;
    const AutoResetEvent allCalled;
    std::size_t left = 0;
    for (int& count : calls)
    {
        events.push_back(std::make_unique<Registered>([&] {
            ++count;
            threads.push_back(GetCurrentThreadId());
            if (--left == 0)
                allCalled.set();
        }));
        events.back()->start();
    }
    for (int round = 1; round <= 3; ++round)
    {
        left = events.size();
        for (const auto& event : events)
            event->signal();
        allCalled.wait();
        EXPECT_EQ(calls, std::vector<int>(events.size(), round));
    }
    EXPECT_EQ(threads, std::vector<DWORD>(threads.size(), threads.front()));
    EXPECT_NE(threads.front(), GetCurrentThreadId());
    events.clear();
}

} // namespace
