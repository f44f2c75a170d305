#include "support/ScriptedServer.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace support
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

sockaddr_in loopback(unsigned short port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

SOCKET newSocket(int type)
{
    static const Winsock winsock;
    const SOCKET socket = ::socket(AF_INET, type, 0);
    if (socket == INVALID_SOCKET)
        throw std::runtime_error("no socket");
    return socket;
}

unsigned short bindToFreePort(SOCKET socket)
{
    sockaddr_in address = loopback(0);
    int size = sizeof address;
    if (bind(socket, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no port");
    return ntohs(address.sin_port);
}

void resetConnection(SOCKET socket)
{
    const linger now{1, 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&now), sizeof now);
    closesocket(socket);
}

void makeReady(SOCKET client)
{
    const int noDelay = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
    u_long nonBlocking = 1;
    ioctlsocket(client, static_cast<long>(FIONBIO), &nonBlocking);
}

std::optional<std::size_t> headLength(const std::string& request)
{
    const auto end = request.find("\r\n\r\n");
    return end == std::string::npos ? std::nullopt : std::optional(end + 4);
}

std::size_t announcedBodyLength(std::string_view head)
{
    static constexpr std::string_view name = "\r\nContent-Length: ";
    const auto at = head.find(name);
    std::size_t length = 0;
    if (at != std::string_view::npos)
        std::from_chars(head.data() + at + name.size(), head.data() + head.size(), length);
    return length;
}

} // namespace

ScriptedServer::ScriptedServer() : m_listener(newSocket(SOCK_STREAM)), m_stop(newSocket(SOCK_DGRAM))
{
    m_port = bindToFreePort(m_listener);
    const sockaddr_in self = loopback(bindToFreePort(m_stop));
    if (listen(m_listener, SOMAXCONN) != 0 ||
        connect(m_stop, reinterpret_cast<const sockaddr*>(&self), sizeof self) != 0)
        throw std::runtime_error("cannot listen");
}

ScriptedServer::~ScriptedServer()
{
    stop();
    closesocket(m_listener);
    closesocket(m_stop);
}

void ScriptedServer::play(std::vector<Exchange> script)
{
    m_script = std::move(script);
    m_thread = std::thread(&ScriptedServer::run, this);
}

void ScriptedServer::answer(std::function<Exchange(const std::string&)> choose)
{
    m_choose = std::move(choose);
    m_thread = std::thread(&ScriptedServer::run, this);
}

void ScriptedServer::stop()
{
    if (!m_thread.joinable())
        return;
    send(m_stop, "", 1, 0);
    m_thread.join();
}

bool ScriptedServer::waitFor(SOCKET socket, Direction direction) const
{
    fd_set readable;
    fd_set writable;
    FD_ZERO(&readable);
    FD_ZERO(&writable);
    FD_SET(m_stop, &readable);
    FD_SET(socket, direction == Direction::Receive ? &readable : &writable);
    return select(0, &readable, &writable, nullptr, nullptr) > 0 &&
           (FD_ISSET(socket, &readable) != 0 || FD_ISSET(socket, &writable) != 0);
}

void ScriptedServer::run()
{
    // Connections that were made before stop() are all waiting by then, so none is missed.
    while (waitFor(m_listener, Direction::Receive))
    {
        const SOCKET client = accept(m_listener, nullptr, nullptr);
        if (client == INVALID_SOCKET)
            continue;
        if (m_choose)
        {
            makeReady(client);
            readRequest(client, m_requests.emplace_back(), 0);
            serve(client, m_choose(m_requests.back()));
        }
        else if (m_requests.size() < m_script.size())
        {
            makeReady(client);
            m_requests.emplace_back();
            serve(client, m_script[m_requests.size() - 1]);
        }
        else
        {
            ++m_unexpected;
            resetConnection(client);
        }
    }
}

void ScriptedServer::serve(SOCKET client, const Exchange& exchange)
{
    std::string& request = m_requests.back();
    readRequest(client, request, exchange.bodyBytesBeforeReply);
    if (exchange.beforeReply)
        exchange.beforeReply();
    for (const std::string& piece : exchange.pieces)
    {
        const std::size_t step = exchange.byteByByte ? 1 : std::max<std::size_t>(piece.size(), 1);
        for (std::size_t at = 0; at < piece.size(); at += step)
            sendAll(client, std::string_view(piece).substr(at, step));
    }

    if (exchange.ending == Exchange::Ending::Reset)
    {
        resetConnection(client);
        return;
    }
    if (exchange.ending == Exchange::Ending::Hold)
    {
        waitForEnd(client);
        closesocket(client);
        return;
    }
    // Closing with unread bytes would reset the connection and could take the reply with it.
    shutdown(client, SD_SEND);
    readRequest(client, request, Exchange::WholeBody);
    closesocket(client);
}

/// Reads on until the request's head and the given number of its body's bytes are there, or the client ends.
void ScriptedServer::readRequest(SOCKET client, std::string& request, std::size_t bodyBytes) const
{
    char buffer[65536];
    for (;;)
    {
        if (const auto head = headLength(request))
        {
            const auto body = announcedBodyLength(std::string_view(request).substr(0, *head));
            if (request.size() >= *head + std::min(body, bodyBytes))
                return;
        }
        if (!waitFor(client, Direction::Receive))
            return;
        const int count = recv(client, buffer, sizeof buffer, 0);
        if (count <= 0)
            return;
        request.append(buffer, static_cast<std::size_t>(count));
    }
}

void ScriptedServer::waitForEnd(SOCKET client) const
{
    char buffer[4096];
    while (waitFor(client, Direction::Receive) && recv(client, buffer, sizeof buffer, 0) > 0)
        continue;
}

void ScriptedServer::sendAll(SOCKET client, std::string_view bytes) const
{
    static constexpr std::size_t most = 65536;
    while (!bytes.empty() && waitFor(client, Direction::Send))
    {
        const int sent = send(client, bytes.data(), static_cast<int>(std::min(bytes.size(), most)), 0);
        if (sent <= 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

RefusingPort::RefusingPort() : m_socket(newSocket(SOCK_STREAM)), m_port(bindToFreePort(m_socket))
{
}

RefusingPort::~RefusingPort()
{
    closesocket(m_socket);
}

} // namespace support
