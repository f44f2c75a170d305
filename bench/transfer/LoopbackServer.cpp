#include "LoopbackServer.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <vector>

namespace quorvex::bench
{

namespace
{

constexpr std::size_t kChunk = 65536;

class Winsock
{
public:
    Winsock()
    {
        WSADATA data;
        if (::WSAStartup(MAKEWORD(2, 2), &data) != 0)
        {
            throw std::runtime_error("Winsock does not start");
        }
    }
    ~Winsock() { ::WSACleanup(); }
    Winsock(const Winsock&) = delete;
    Winsock& operator=(const Winsock&) = delete;
};

sockaddr_in Loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    address.sin_port = ::htons(port);
    return address;
}

SOCKET NewSocket()
{
    static const Winsock winsock;
    const SOCKET made = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (made == INVALID_SOCKET)
    {
        throw std::runtime_error("there is no socket to be had");
    }
    return made;
}

/// @return false when the client has gone
bool Send(SOCKET client, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const int sent = ::send(client, bytes.data(), static_cast<int>(bytes.size()), 0);
        if (sent <= 0)
        {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string JsonAnswer(std::string_view body)
{
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

/// The number behind a text of the head, or the given one where the text is missing.
std::uint64_t NumberBehind(std::string_view head, std::string_view text, std::uint64_t otherwise)
{
    const std::size_t at = head.find(text);
    if (at != std::string_view::npos)
    {
        std::from_chars(head.data() + at + text.size(), head.data() + head.size(), otherwise);
    }
    return otherwise;
}

/// @return how many bytes of the body came along, or -1 when the client has gone
std::int64_t ReadHead(SOCKET client, std::string& head)
{
    static constexpr std::string_view kEnd = "\r\n\r\n";

    std::vector<char> chunk(kChunk);
    for (;;)
    {
        const int count = ::recv(client, chunk.data(), static_cast<int>(chunk.size()), 0);
        if (count <= 0)
        {
            return -1;
        }
        head.append(chunk.data(), static_cast<std::size_t>(count));
        const std::size_t end = head.find(kEnd);
        if (end != std::string::npos)
        {
            const std::size_t length = end + kEnd.size();
            const auto bodyBytes = static_cast<std::int64_t>(head.size() - length);
            head.resize(length);
            return bodyBytes;
        }
    }
}

/// @return false when the client has gone
bool SkipBody(SOCKET client, std::uint64_t size)
{
    std::vector<char> chunk(kChunk);
    while (size != 0)
    {
        const auto room = static_cast<int>(std::min<std::uint64_t>(size, chunk.size()));
        const int count = ::recv(client, chunk.data(), room, 0);
        if (count <= 0)
        {
            return false;
        }
        size -= static_cast<std::uint64_t>(count);
    }
    return true;
}

} // namespace

LoopbackServer::LoopbackServer() : m_listener(NewSocket()), m_lastClient(NewSocket())
{
    sockaddr_in address = Loopback(0);
    int size = sizeof address;
    if (::bind(m_listener.Get(), reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
        ::getsockname(m_listener.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
        ::listen(m_listener.Get(), SOMAXCONN) != 0)
    {
        throw std::runtime_error("the server finds no port");
    }
    m_port = ::ntohs(address.sin_port);
    m_thread = std::thread(&LoopbackServer::Run, this);
}

LoopbackServer::~LoopbackServer()
{
    m_isStopping = true;
    const sockaddr_in address = Loopback(m_port);
    static_cast<void>(::connect(m_lastClient.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
    m_thread.join();
}

void LoopbackServer::Run()
{
    for (;;)
    {
        const Socket client(::accept(m_listener.Get(), nullptr, nullptr));
        if (!client || m_isStopping)
        {
            return;
        }
        Serve(client.Get());
    }
}

void LoopbackServer::Serve(SOCKET client) const
{
    std::string head;
    const std::int64_t received = ReadHead(client, head);
    if (received < 0)
    {
        return;
    }
    const std::uint64_t length = NumberBehind(head, "\r\nContent-Length: ", 0);
    if (SkipBody(client, length - std::min(length, static_cast<std::uint64_t>(received))))
    {
        Answer(client, head);
        ::shutdown(client, SD_SEND);
    }
}

void LoopbackServer::Answer(SOCKET client, const std::string& head) const
{
    const std::string_view request(head);
    if (request.starts_with("GET /file/down?") || request.starts_with("GET /ops/down.php?") ||
        request.starts_with("GET /ofs/down.php?"))
    {
        AnswerDownload(client, head);
    }
    else if (request.starts_with("POST /file/upload "))
    {
        Send(client, JsonAnswer(UploadReply()));
    }
    else if (request.starts_with("POST /ops/upload_rest.php "))
    {
        Send(client,
             JsonAnswer(R"({"result":200,"fkey":"k","fsize":)" + std::to_string(m_fileSize) + R"(,"errorinfo":""})"));
    }
    else if (request.starts_with("POST /ofs/upload_u_rest.php ") || request.starts_with("GET /status.php?"))
    {
        Send(client, JsonAnswer(R"({"result":200,"errorinfo":""})"));
    }
    else if (request.starts_with("GET /check.php?"))
    {
        Send(client, JsonAnswer(R"({"result":200,"uid":"1","sid":"s","errorinfo":""})"));
    }
    else if (request.starts_with("GET /capacity/info "))
    {
        Send(client, JsonAnswer(R"({"total_space":10737418240,"used_space":1073741824,"max_file_size":4294967295})"));
    }
    else if (request.starts_with("POST /passport/"))
    {
        Send(client, JsonAnswer(R"({"uap_uid":1,"uap_sid":"s"})"));
    }
    else
    {
        Send(client, JsonAnswer("{}"));
    }
}

std::string LoopbackServer::UploadReply() const
{
    return R"({"fkey":"k","fsize":)" + std::to_string(m_fileSize) + R"(,"cflag":1})";
}

void LoopbackServer::AnswerDownload(SOCKET client, const std::string& head) const
{
    static const std::string pattern = [] {
        std::string bytes(kChunk, '\0');
        for (std::size_t i = 0; i < bytes.size(); ++i)
        {
            bytes[i] = static_cast<char>(i * 251 >> 8);
        }
        return bytes;
    }();

    std::uint64_t size = m_fileSize;
    std::string status = "200 OK";
    const std::uint64_t first = NumberBehind(head, "\r\nRange: bytes=", size);
    if (first < size)
    {
        const std::size_t dash = head.find('-', head.find("\r\nRange: bytes="));
        const std::uint64_t last = NumberBehind(std::string_view(head).substr(dash), "-", size - 1);
        status = "206 Partial Content\r\nContent-Range: bytes " + std::to_string(first) + "-" + std::to_string(last) +
                 "/" + std::to_string(size);
        size = last - first + 1;
    }
    bool isSent = Send(client, "HTTP/1.1 " + status +
                                   "\r\nContent-Type: application/octet-stream\r\nConnection: close\r\n"
                                   "Content-Length: " +
                                   std::to_string(size) + "\r\n\r\n");
    while (isSent && size != 0)
    {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, pattern.size()));
        isSent = Send(client, std::string_view(pattern).substr(0, count));
        size -= count;
    }
}

} // namespace quorvex::bench
