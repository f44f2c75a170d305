#pragma once

#include <winsock2.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>

namespace quorvex::bench
{

/// An owned socket.
class Socket
{
public:
    explicit Socket(SOCKET handle) : m_handle(handle) {}
    ~Socket()
    {
        if (m_handle != INVALID_SOCKET)
        {
            ::closesocket(m_handle);
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    SOCKET Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != INVALID_SOCKET; }

private:
    SOCKET m_handle;
};

/// A network disk and file storage that keeps nothing: uploads are read and thrown away, downloads are made up. It
/// takes status reports of the online search, too. One connection and one request at a time, on a port of 127.0.0.1
/// that the system gives.
class LoopbackServer
{
public:
    LoopbackServer();
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::uint16_t Port() const { return m_port; }

    /// @param size bytes that a download without a range has, and that an upload is said to have had
    void SetFileSize(std::uint64_t size) { m_fileSize = size; }

private:
    void Run();
    void Serve(SOCKET client) const;
    void Answer(SOCKET client, const std::string& head) const;
    void AnswerDownload(SOCKET client, const std::string& head) const;
    std::string UploadReply() const;

    std::atomic<std::uint64_t> m_fileSize = 0;
    std::atomic<bool> m_isStopping = false;
    Socket m_listener;
    // Ends the wait for a connection when the server stops.
    Socket m_lastClient;
    std::uint16_t m_port = 0;
    std::thread m_thread;
};

} // namespace quorvex::bench
