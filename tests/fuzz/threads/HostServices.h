#pragma once

#include <cstddef>

/// A host for the dispatcher where there is no Windows: an event thread, and a session service whose requests end on
/// it. What becomes of a request is said by its URL.
namespace quorvex::fuzz
{

/// Gives an answer: status 200, and what was sent as its body.
inline constexpr const wchar_t* kEcho = L"echo";
/// Answers with status 404 and no body.
inline constexpr const wchar_t* kMissing = L"missing";
/// Ends with the service's own results.
inline constexpr const wchar_t* kFails = L"fails";
inline constexpr const wchar_t* kTimesOut = L"times-out";
/// Ends with its session.
inline constexpr const wchar_t* kHangs = L"hangs";
/// Calls of the service that fail.
inline constexpr const wchar_t* kOpenFails = L"open-fails";
inline constexpr const wchar_t* kTimeoutsFail = L"timeouts-fail";
inline constexpr const wchar_t* kPerformFails = L"perform-fails";
/// A cookie that is refused.
inline constexpr const wchar_t* kBadCookie = L"bad";

/// Makes this thread's next session or registration one that the system does not give.
void FailSession();
void FailRegistration();

/// How many requests hang now; waits until there are as many.
void AwaitHanging(std::size_t count);

/// While one is there, the event thread does nothing.
class PausedEventThread
{
public:
    PausedEventThread();
    ~PausedEventThread();
    PausedEventThread(const PausedEventThread&) = delete;
    PausedEventThread& operator=(const PausedEventThread&) = delete;

    /// Waits until so many signals have come since the pause.
    void AwaitSignals(std::size_t count);
};

/// Whether every handle that was given out has been taken back.
bool IsEverythingClosed();

} // namespace quorvex::fuzz
