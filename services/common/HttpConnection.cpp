#include "common/HttpConnection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace quorvex::services
{

namespace
{

constexpr std::size_t BufferSize = 64UL * 1024;
constexpr std::chrono::seconds TransferTimeout{60};
constexpr std::chrono::seconds LingerTimeout{2};

void SetTimeout(socket_t socket, int option, std::chrono::seconds timeout)
{
    const timeval value{timeout.count(), 0};
    ::setsockopt(socket, SOL_SOCKET, option, &value, sizeof(value));
}

bool IsReady(socket_t socket, short events)
{
    pollfd entry{socket, events, 0};
    constexpr auto timeout = std::chrono::duration_cast<std::chrono::milliseconds>(TransferTimeout);
    int result = 0;
    do
    {
        result = ::poll(&entry, 1, static_cast<int>(timeout.count()));
    } while (result < 0 && errno == EINTR);
    return result > 0;
}

void FormatAddress(const sockaddr_storage& address, std::string& ip, int& port)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address.ss_family == AF_INET)
    {
        const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
        ::inet_ntop(AF_INET, &v4.sin_addr, text.data(), static_cast<socklen_t>(text.size()));
        port = ntohs(v4.sin_port);
    }
    else if (address.ss_family == AF_INET6)
    {
        const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address);
        ::inet_ntop(AF_INET6, &v6.sin6_addr, text.data(), static_cast<socklen_t>(text.size()));
        port = ntohs(v6.sin6_port);
    }
    ip = text.data();
}

} // namespace

HttpConnection::HttpConnection(socket_t socket) : socket_(socket), buffer_(BufferSize)
{
    SetTimeout(socket_, SO_RCVTIMEO, TransferTimeout);
    SetTimeout(socket_, SO_SNDTIMEO, TransferTimeout);
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
}

HttpConnection::~HttpConnection()
{
    ::close(socket_);
}

bool HttpConnection::is_readable() const
{
    return position_ < filled_ || IsReady(socket_, POLLIN);
}

bool HttpConnection::is_writable() const
{
    return IsReady(socket_, POLLOUT);
}

ssize_t HttpConnection::read(char* data, std::size_t size)
{
    if (position_ == filled_)
    {
        const ssize_t received = Receive(buffer_);
        if (received <= 0)
        {
            return received;
        }
        position_ = 0;
        filled_ = static_cast<std::size_t>(received);
        EscapeTarget();
    }
    const std::size_t count = std::min(size, filled_ - position_);
    std::copy_n(buffer_.data() + position_, count, data);
    position_ += count;
    return static_cast<ssize_t>(count);
}

ssize_t HttpConnection::write(const char* data, std::size_t size)
{
    ssize_t sent = 0;
    do
    {
        sent = ::send(socket_, data, size, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent;
}

void HttpConnection::get_remote_ip_and_port(std::string& ip, int& port) const
{
    sockaddr_storage address{};
    socklen_t size = sizeof(address);
    if (::getpeername(socket_, reinterpret_cast<sockaddr*>(&address), &size) == 0)
    {
        FormatAddress(address, ip, port);
    }
}

void HttpConnection::get_local_ip_and_port(std::string& ip, int& port) const
{
    sockaddr_storage address{};
    socklen_t size = sizeof(address);
    if (::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) == 0)
    {
        FormatAddress(address, ip, port);
    }
}

void HttpConnection::Linger()
{
    SetTimeout(socket_, SO_RCVTIMEO, LingerTimeout);
    ::shutdown(socket_, SHUT_WR);
    while (Receive(buffer_) > 0)
    {
    }
}

// Clients send question marks and hash signs in a file's name as they are, in the path and in the query. The library
// refuses a second question mark and drops what follows a hash sign.
void HttpConnection::EscapeTarget()
{
    std::string line;
    std::size_t read = 0;
    for (; read < filled_ && !isRequestLineRead_; ++read)
    {
        const char letter = buffer_[read];
        if (letter == '#' || (isInQuery_ && letter == '?'))
        {
            line += letter == '?' ? "%3F" : "%23";
        }
        else
        {
            line += letter;
        }
        isInQuery_ = isInQuery_ || letter == '?';
        isRequestLineRead_ = letter == '\n';
    }
    if (line.size() != read)
    {
        buffer_.insert(buffer_.begin(), line.size() - read, '\0');
        std::copy(line.begin(), line.end(), buffer_.begin());
        filled_ += line.size() - read;
    }
}

ssize_t HttpConnection::Receive(std::span<char> buffer) const
{
    ssize_t received = 0;
    do
    {
        received = ::recv(socket_, buffer.data(), buffer.size(), 0);
    } while (received < 0 && errno == EINTR);
    return received;
}

} // namespace quorvex::services
