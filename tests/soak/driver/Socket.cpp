#include "Socket.h"

#include <array>
#include <stdexcept>
#include <utility>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace quorvex::soak
{

namespace
{

constexpr std::size_t kPiece = 65536;
constexpr int kBacklog = 256;

sockaddr_in Loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void Enable(int descriptor, int option)
{
    const int on = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, option, &on, sizeof on);
}

Socket Open()
{
    return Socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

} // namespace

Socket::Socket(Socket&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

Socket& Socket::operator=(Socket&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

Socket::~Socket()
{
    Close();
}

Socket Socket::Listen()
{
    Socket socket = Open();
    const sockaddr_in address = Loopback(0);
    if (::bind(socket.m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.m_descriptor, kBacklog) != 0)
    {
        throw std::runtime_error("cannot listen on loopback");
    }
    return socket;
}

Socket Socket::ConnectTo(int port)
{
    Socket socket = Open();
    const sockaddr_in address = Loopback(port);
    if (::connect(socket.m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    {
        return Socket();
    }
    Enable(socket.m_descriptor, TCP_NODELAY);
    return socket;
}

int Socket::Port() const
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

Socket Socket::Accept() const
{
    Socket socket(::accept4(m_descriptor, nullptr, nullptr, SOCK_CLOEXEC));
    if (socket)
    {
        Enable(socket.m_descriptor, TCP_NODELAY);
        Enable(socket.m_descriptor, TCP_QUICKACK);
    }
    return socket;
}

bool Socket::Receive(std::string& text) const
{
    std::array<char, kPiece> piece;
    const ssize_t count = ::recv(m_descriptor, piece.data(), piece.size(), 0);
    if (count <= 0)
    {
        return false;
    }
    // Clients send head and body apart, and would wait for a delayed acknowledgement in between.
    Enable(m_descriptor, TCP_QUICKACK);
    text.append(piece.data(), static_cast<std::size_t>(count));
    return true;
}

bool Socket::Send(std::string_view bytes) const
{
    while (!bytes.empty())
    {
        const ssize_t count = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
        {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void Socket::Finish() const
{
    const timeval patience{2, 0};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::shutdown(m_descriptor, SHUT_WR);
    std::string rest;
    while (Receive(rest))
    {
        rest.clear();
    }
}

void Socket::Reset()
{
    const linger atOnce{1, 0};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    Close();
}

void Socket::Interrupt() const
{
    ::shutdown(m_descriptor, SHUT_RDWR);
}

void Socket::Close()
{
    if (m_descriptor >= 0)
    {
        ::close(std::exchange(m_descriptor, -1));
    }
}

} // namespace quorvex::soak
