#include "support/RawHttp.h"

#include <array>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quorvex::services::test
{

RawConnection::RawConnection(int port) : socket_(::socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
    {
        ::close(socket_);
        throw std::runtime_error("cannot connect");
    }
}

RawConnection::~RawConnection()
{
    ::close(socket_);
}

bool RawConnection::Send(std::string_view bytes) const
{
    while (!bytes.empty())
    {
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
        {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string RawConnection::ReceiveAll() const
{
    std::string text;
    std::array<char, 16384> buffer;
    for (;;)
    {
        const ssize_t count = ::recv(socket_, buffer.data(), buffer.size(), 0);
        if (count <= 0)
        {
            return text;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

std::string RawAnswer::Header(std::string_view name) const
{
    const std::string key = "\r\n" + std::string(name) + ": ";
    const std::size_t start = headers.find(key);
    if (start == std::string::npos)
    {
        return {};
    }
    const std::size_t value = start + key.size();
    return headers.substr(value, headers.find("\r\n", value) - value);
}

RawAnswer ParseAnswer(const std::string& text)
{
    const std::size_t end = text.find("\r\n\r\n");
    if (!text.starts_with("HTTP/1.1 ") || end == std::string::npos)
    {
        throw std::runtime_error("not an HTTP answer: " + text);
    }
    return {std::stoi(text.substr(9, 3)), text.substr(0, end + 2), text.substr(end + 4)};
}

RawAnswer Exchange(int port, std::string_view request)
{
    const RawConnection connection(port);
    connection.Send(request);
    return ParseAnswer(connection.ReceiveAll());
}

std::string JoinChunks(std::string_view body)
{
    std::string joined;
    for (;;)
    {
        const std::size_t lineEnd = body.find("\r\n");
        const std::size_t size = std::stoul(std::string(body.substr(0, lineEnd)), nullptr, 16);
        if (size == 0)
        {
            return joined;
        }
        joined.append(body.substr(lineEnd + 2, size));
        body.remove_prefix(lineEnd + 2 + size + 2);
    }
}

} // namespace quorvex::services::test
