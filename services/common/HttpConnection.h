#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include <httplib.h>

namespace quorvex::services
{

// One client's connection; owns the socket.
class HttpConnection : public httplib::Stream
{
public:
    explicit HttpConnection(socket_t socket);
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;
    ~HttpConnection() override;

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* data, std::size_t size) override;
    ssize_t write(const char* data, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

    // Lets the client finish sending before the socket is closed. Closing with unread bytes would reset the connection,
    // and a client that is still sending would lose an answer that came early.
    void Linger();

private:
    ssize_t Receive(std::span<char> buffer) const;
    void EscapeTarget();

    socket_t socket_;
    std::vector<char> buffer_;
    std::size_t position_ = 0;
    std::size_t filled_ = 0;
    bool isInQuery_ = false;
    bool isRequestLineRead_ = false;
};

} // namespace quorvex::services
