#pragma once

#include "Faults.h"
#include "RestartableServices.h"
#include "Socket.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace quorvex::soak
{

/// Stands between the clients and the services: passes requests on, one a connection, and lets the faults happen.
/// A request that reaches the services is over there before its client hears of it, so that nothing takes effect
/// later than its client believes.
class FaultProxy
{
public:
    FaultProxy(RestartableServices& services, Faults& faults);
    FaultProxy(const FaultProxy&) = delete;
    FaultProxy& operator=(const FaultProxy&) = delete;
    ~FaultProxy();

    int Port() const { return m_listener.Port(); }

    /// Whether the services did not come back once.
    bool HasFailed() const { return m_hasFailed; }

private:
    void AcceptAll();
    void Serve(Socket client);
    void Answer(Socket& client);
    void AnswerInstead(const Socket& client, int status) const;
    void Exchange(Socket& client, const std::string& request, Fault fault);
    std::string Forward(const std::string& request, Fault fault);
    void HoldForAnother(std::chrono::milliseconds longest);

    RestartableServices& m_services;
    Faults& m_faults;
    Socket m_listener = Socket::Listen();
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_accepted = 0;
    std::size_t m_active = 0;
    std::atomic<bool> m_hasFailed = false;
    std::thread m_acceptor;
};

} // namespace quorvex::soak
