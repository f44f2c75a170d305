#pragma once

#include <winsock2.h>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// An HTTP server for tests of many requests at once: a thread a connection, which is kept alive from request to
/// request, on a port of the system's choice.
class FerrolinkServer
{
public:
    struct Request
    {
        std::string head; ///< up to the empty line, which is left out
        std::string body;
        bool isFirst; ///< whether it is its connection's first

        /// The value of a header, or an empty text. Several headers of that name are joined by "|".
        std::string header(const std::string& name) const;
        std::string path() const;
    };

    /// @return the raw answer; an empty one is none: the connection stays open and silent
    using Handler = std::function<std::string(const Request& request)>;

    explicit FerrolinkServer(Handler handler);
    ~FerrolinkServer();

    FerrolinkServer(const FerrolinkServer&) = delete;
    FerrolinkServer& operator=(const FerrolinkServer&) = delete;

    std::wstring url(const std::wstring& path) const;

    /// Waits until so many requests have arrived whole, in all.
    void waitForRequests(std::size_t count);
    std::vector<Request> requests();

    /// A whole answer.
    static std::string answer(const std::string& body, const std::string& status = "200 OK",
                              const std::string& headers = {});

private:
    enum class Direction
    {
        Receive,
        Send
    };

    void acceptConnections();
    void serve(SOCKET client);
    /// No call blocks but this one, which also ends when the server is to stop; then it returns false.
    bool waitFor(SOCKET socket, Direction direction) const;
    bool readUpTo(SOCKET client, std::string& text, std::size_t size) const;
    bool readRequest(SOCKET client, std::string& text, Request& request) const;
    bool sendAll(SOCKET client, std::string_view bytes) const;

    Handler m_handler;
    SOCKET m_stop; ///< readable once the server is to stop
    SOCKET m_listener;
    unsigned short m_port = 0;
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<Request> m_requests;
    std::vector<std::thread> m_threads;
    std::thread m_acceptor;
};

/// Listens and never says a word: connections are made, nothing is read or answered.
class SilentServer
{
public:
    SilentServer();
    ~SilentServer() { closesocket(m_listener); }

    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    std::wstring url() const { return L"http://127.0.0.1:" + std::to_wstring(m_port) + L"/"; }

private:
    SOCKET m_listener;
    unsigned short m_port = 0;
};
