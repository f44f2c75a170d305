#include "hostile/HostileServer.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace hostile
{
namespace
{

class Winsock
{
public:
    Winsock()
    {
        WSADATA data;
        if (WSAStartup(MAKEWORD(2, 2), &data) != 0)
            throw std::runtime_error("Winsock does not start");
    }
    ~Winsock() { WSACleanup(); }
    Winsock(const Winsock&) = delete;
    Winsock& operator=(const Winsock&) = delete;
};

SOCKET newSocket()
{
    static const Winsock winsock;
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, 0);
    if (socket == INVALID_SOCKET)
        throw std::runtime_error("no socket");
    return socket;
}

sockaddr_in loopback(unsigned short port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

/// How long a request is in all, once its head is there; before that, unknown.
std::size_t requestLength(std::string_view request, std::size_t unknown)
{
    static constexpr std::string_view name = "\r\nContent-Length: ";

    const auto headEnd = request.find("\r\n\r\n");
    if (headEnd == std::string_view::npos)
        return unknown;
    const std::string_view head = request.substr(0, headEnd + 4);
    std::size_t body = 0;
    if (const auto at = head.find(name); at != std::string_view::npos)
        std::from_chars(head.data() + at + name.size(), head.data() + head.size(), body);
    return head.size() + body;
}

bool isThere(std::string_view request, std::size_t upTo)
{
    if (upTo == Reply::RequestHead)
        return request.find("\r\n\r\n") != std::string_view::npos;
    return request.size() >= std::min(upTo, requestLength(request, Reply::WholeRequest));
}

/// @return whether as much is there
bool readRequest(SOCKET client, std::string& request, std::size_t upTo)
{
    char buffer[65536];
    while (!isThere(request, upTo))
    {
        const std::size_t room =
            upTo < Reply::RequestHead ? std::min(upTo - request.size(), sizeof buffer) : sizeof buffer;
        const int count = recv(client, buffer, static_cast<int>(room), 0);
        if (count <= 0)
            return false;
        request.append(buffer, static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

HostileServer::HostileServer() : m_listener(newSocket())
{
    sockaddr_in address = loopback(0);
    int size = sizeof address;
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
        listen(m_listener, SOMAXCONN) != 0)
        throw std::runtime_error("cannot listen");
    m_port = ntohs(address.sin_port);
    m_thread = std::thread(&HostileServer::run, this);
}

HostileServer::~HostileServer()
{
    m_isStopping = true;
    const sockaddr_in self = loopback(m_port);
    const SOCKET wake = newSocket();
    connect(wake, reinterpret_cast<const sockaddr*>(&self), sizeof self);
    m_thread.join();
    closesocket(wake);
    closesocket(m_listener);
    for (Connection& connection : m_connections)
        connection.thread.join();
}

void HostileServer::give(Reply reply)
{
    const std::lock_guard lock(m_mutex);
    m_reply = std::move(reply);
    m_toll = {};
}

HostileServer::Toll HostileServer::toll() const
{
    const std::lock_guard lock(m_mutex);
    return m_toll;
}

void HostileServer::run()
{
    for (;;)
    {
        const SOCKET client = accept(m_listener, nullptr, nullptr);
        if (m_isStopping)
        {
            closesocket(client);
            return;
        }
        if (client != INVALID_SOCKET)
            begin(client);
        joinFinished();
    }
}

void HostileServer::begin(SOCKET client)
{
    Reply reply;
    {
        const std::lock_guard lock(m_mutex);
        ++m_toll.connections;
        reply = m_reply;
    }
    Connection& connection = m_connections.emplace_back();
    connection.thread = std::thread([this, &connection, client, reply = std::move(reply)] {
        serve(client, reply);
        connection.isOver = true;
    });
}

void HostileServer::joinFinished()
{
    std::erase_if(m_connections, [](Connection& connection) {
        const bool isOver = connection.isOver;
        if (isOver)
            connection.thread.join();
        return isOver;
    });
}

void HostileServer::serve(SOCKET client, const Reply& reply)
{
    const int noDelay = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);

    std::string request;
    bool isOpen = readRequest(client, request, reply.requestBytes);
    for (const Reply::Piece& piece : reply.pieces)
    {
        for (std::size_t i = 0; isOpen && i < piece.times; ++i)
            isOpen = sendAll(client, piece.bytes);
    }
    switch (reply.ending)
    {
    case Reply::Ending::Reset:
    {
        const linger now{1, 0};
        setsockopt(client, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&now), sizeof now);
        break;
    }
    case Reply::Ending::Close:
        // Closing with unread bytes would reset the connection and could take the reply with it.
        shutdown(client, SD_SEND);
        readRequest(client, request, Reply::WholeRequest);
        break;
    case Reply::Ending::WholeRequestFirst:
        readRequest(client, request, Reply::WholeRequest);
        break;
    }
    closesocket(client);
}

bool HostileServer::sendAll(SOCKET client, std::string_view bytes)
{
    static constexpr std::size_t most = 65536;

    while (!bytes.empty())
    {
        const int sent = send(client, bytes.data(), static_cast<int>(std::min(bytes.size(), most)), 0);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
        const std::lock_guard lock(m_mutex);
        m_toll.bytesSent += static_cast<std::size_t>(sent);
    }
    return true;
}

} // namespace hostile
