#pragma once

#include "hostile/Reply.h"

#include <winsock2.h>

#include <atomic>
#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace hostile
{

/// A server that gives every connection the same reply, until it is told another one. The client decides how many
/// connections there are, so that a client that repeats its requests meets the same reply again.
///
/// No wait has a time limit of its own: each ends with the client's connection.
class HostileServer
{
public:
    HostileServer();

    /// Ends when the last client has closed its connection: clients go first.
    ~HostileServer();

    HostileServer(const HostileServer&) = delete;
    HostileServer& operator=(const HostileServer&) = delete;

    unsigned short port() const { return m_port; }

    /// From the next connection on.
    void give(Reply reply);

    /// What it cost to serve the reply.
    struct Toll
    {
        std::size_t connections = 0;
        std::size_t bytesSent = 0;
    };
    Toll toll() const;

private:
    /// Connections are served side by side: one that its client keeps for later must not hold up the next.
    struct Connection
    {
        std::thread thread{};
        std::atomic<bool> isOver = false;
    };

    void run();
    void begin(SOCKET client);
    void serve(SOCKET client, const Reply& reply);
    bool sendAll(SOCKET client, std::string_view bytes);
    void joinFinished();

    SOCKET m_listener;
    unsigned short m_port = 0;
    mutable std::mutex m_mutex;
    Reply m_reply;
    Toll m_toll;
    std::list<Connection> m_connections;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};

} // namespace hostile
