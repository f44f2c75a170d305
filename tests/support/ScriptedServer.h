#pragma once

#include <winsock2.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace support
{

/// What the server does with one connection: read a request, send the pieces, end the connection.
struct Exchange
{
    enum class Ending
    {
        Close,
        Reset,
        Hold ///< the client ends it
    };

    static constexpr std::size_t WholeBody = std::numeric_limits<std::size_t>::max();

    std::size_t bodyBytesBeforeReply = WholeBody; ///< fewer than the body has: an early reply
    std::vector<std::string> pieces{};            ///< each is sent by a call of its own
    bool byteByByte = false;
    Ending ending = Ending::Close;
    std::function<void()> beforeReply{}; ///< called on the server's thread when the request is there
};

/// An HTTP server that plays a script, one connection an exchange, on a port of the system's choice.
///
/// No wait has a time limit of its own: each ends with the client's connection or with stop().
class ScriptedServer
{
public:
    /// Listens at once, so that the port is known before the script is made.
    ScriptedServer();
    ~ScriptedServer();

    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    unsigned short port() const { return m_port; }

    void play(std::vector<Exchange> script);

    /// Plays no script, but answers each request when its head is there; called on the server's thread.
    void answer(std::function<Exchange(const std::string& head)> choose);

    /// Ends every connection and the thread; what follows is final afterwards.
    void stop();

    /// The raw requests in their order, one for each connection that was served.
    const std::vector<std::string>& requests() const { return m_requests; }

    /// Connections that came after the script's end; each was reset at once.
    std::size_t unexpectedConnections() const { return m_unexpected; }

private:
    enum class Direction
    {
        Receive,
        Send
    };

    void run();
    void serve(SOCKET client, const Exchange& exchange);
    void readRequest(SOCKET client, std::string& request, std::size_t bodyBytes) const;
    void waitForEnd(SOCKET client) const;
    void sendAll(SOCKET client, std::string_view bytes) const;

    /// @return false when stop() came first
    bool waitFor(SOCKET socket, Direction direction) const;

    std::vector<Exchange> m_script;
    std::function<Exchange(const std::string&)> m_choose;
    std::vector<std::string> m_requests;
    std::size_t m_unexpected = 0;
    SOCKET m_listener;
    SOCKET m_stop; ///< a datagram socket that is connected to itself: readable once stop() has been called
    unsigned short m_port = 0;
    std::thread m_thread;
};

/// A port on which nobody listens: connecting to it is refused as long as this object lives.
class RefusingPort
{
public:
    RefusingPort();
    ~RefusingPort();

    RefusingPort(const RefusingPort&) = delete;
    RefusingPort& operator=(const RefusingPort&) = delete;

    unsigned short port() const { return m_port; }

private:
    SOCKET m_socket;
    unsigned short m_port;
};

} // namespace support
