#include "FerrolinkServer.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <utility>

namespace
{

sockaddr_in loopback(unsigned short port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

/// A socket with a port of 127.0.0.1 that the system chooses.
std::pair<SOCKET, unsigned short> boundSocket(int type)
{
    static const int started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    const SOCKET bound = socket(AF_INET, type, 0);
    sockaddr_in address = loopback(0);
    int size = sizeof address;
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    if (started != 0 || bind(bound, name, size) != 0 || getsockname(bound, name, &size) != 0)
        throw std::runtime_error("no port");
    return {bound, ntohs(address.sin_port)};
}

std::pair<SOCKET, unsigned short> listeningSocket()
{
    const auto bound = boundSocket(SOCK_STREAM);
    if (listen(bound.first, SOMAXCONN) != 0)
        throw std::runtime_error("cannot listen");
    return bound;
}

/// A datagram socket that is connected to itself: what is sent to it makes it readable.
SOCKET selfConnectedSocket()
{
    const auto [self, port] = boundSocket(SOCK_DGRAM);
    const sockaddr_in address = loopback(port);
    if (connect(self, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect");
    return self;
}

} // namespace

std::string FerrolinkServer::Request::header(const std::string& name) const
{
    const std::string start = "\r\n" + name + ": ";
    std::string values;
    for (std::size_t at = head.find(start); at != std::string::npos; at = head.find(start, at + 1))
    {
        const std::size_t from = at + start.size();
        values += (values.empty() ? "" : "|") + head.substr(from, head.find("\r\n", from) - from);
    }
    return values;
}

std::string FerrolinkServer::Request::path() const
{
    const std::size_t from = head.find(' ') + 1;
    return head.substr(from, head.find(' ', from) - from);
}

FerrolinkServer::FerrolinkServer(Handler handler) : m_handler(std::move(handler)), m_stop(selfConnectedSocket())
{
    std::tie(m_listener, m_port) = listeningSocket();
    m_acceptor = std::thread([this] { acceptConnections(); });
}

FerrolinkServer::~FerrolinkServer()
{
    send(m_stop, "", 1, 0);
    m_acceptor.join();
    for (std::thread& thread : m_threads)
        thread.join();
    closesocket(m_listener);
    closesocket(m_stop);
}

std::wstring FerrolinkServer::url(const std::wstring& path) const
{
    return L"http://127.0.0.1:" + std::to_wstring(m_port) + path;
}

std::string FerrolinkServer::answer(const std::string& body, const std::string& status, const std::string& headers)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers + "\r\n" +
           body;
}

void FerrolinkServer::waitForRequests(std::size_t count)
{
    std::unique_lock lock(m_mutex);
    m_arrived.wait(lock, [&] { return m_requests.size() >= count; });
}

std::vector<FerrolinkServer::Request> FerrolinkServer::requests()
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

bool FerrolinkServer::waitFor(SOCKET socket, Direction direction) const
{
    fd_set readable;
    fd_set writable;
    FD_ZERO(&readable);
    FD_ZERO(&writable);
    FD_SET(m_stop, &readable);
    FD_SET(socket, direction == Direction::Receive ? &readable : &writable);
    return select(0, &readable, &writable, nullptr, nullptr) > 0 && FD_ISSET(m_stop, &readable) == 0;
}

void FerrolinkServer::acceptConnections()
{
    while (waitFor(m_listener, Direction::Receive))
    {
        const SOCKET client = accept(m_listener, nullptr, nullptr);
        if (client != INVALID_SOCKET)
            m_threads.emplace_back([this, client] { serve(client); });
    }
}

void FerrolinkServer::serve(SOCKET client)
{
    const int noDelay = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
    u_long nonBlocking = 1;
    ioctlsocket(client, static_cast<long>(FIONBIO), &nonBlocking);
    std::string text;
    Request request;
    request.isFirst = true;
    while (readRequest(client, text, request))
    {
        {
            const std::lock_guard lock(m_mutex);
            m_requests.push_back(request);
            m_arrived.notify_all();
        }
        if (!sendAll(client, m_handler(request)))
            break;
        request.isFirst = false;
    }
    closesocket(client);
}

/// Reads until the text has at least so many bytes.
bool FerrolinkServer::readUpTo(SOCKET client, std::string& text, std::size_t size) const
{
    char buffer[65536];
    while (text.size() < size)
    {
        const int count = waitFor(client, Direction::Receive) ? recv(client, buffer, sizeof buffer, 0) : 0;
        if (count <= 0)
            return false;
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return true;
}

/// Moves one request from what is read to its parts.
bool FerrolinkServer::readRequest(SOCKET client, std::string& text, Request& request) const
{
    std::size_t end = std::string::npos;
    while ((end = text.find("\r\n\r\n")) == std::string::npos)
        if (!readUpTo(client, text, text.size() + 1))
            return false;
    request.head = text.substr(0, end);
    text.erase(0, end + 4);
    const std::string announced = request.header("Content-Length");
    std::size_t length = 0;
    std::from_chars(announced.data(), announced.data() + announced.size(), length);
    if (!readUpTo(client, text, length))
        return false;
    request.body = text.substr(0, length);
    text.erase(0, length);
    return true;
}

bool FerrolinkServer::sendAll(SOCKET client, std::string_view bytes) const
{
    constexpr std::size_t most = 65536;
    while (!bytes.empty())
    {
        const int size = static_cast<int>(std::min(bytes.size(), most));
        const int sent = waitFor(client, Direction::Send) ? send(client, bytes.data(), size, 0) : 0;
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

SilentServer::SilentServer()
{
    std::tie(m_listener, m_port) = listeningSocket();
}
