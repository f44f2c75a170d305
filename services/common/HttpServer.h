#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include <httplib.h>

namespace quorvex::services
{

// What arrives in the place of Content-Type when a request's body is a form: the body then reaches the handler raw.
inline constexpr const char* FormContentType = "X-Form-Content-Type";

// Serves routes over HTTP on threads of its own until it is stopped. A handler ends a request early with HttpError.
class HttpServer
{
public:
    struct Options
    {
        std::string host = "127.0.0.1";
        int port = 0; // 0: the system picks one
        std::size_t threads = 64;
        bool isQuiet = false;
    };

    using GetHandler = httplib::Server::Handler;
    using PostHandler = httplib::Server::HandlerWithContentReader;

    explicit HttpServer(Options options);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    // Routes are added before Start.
    void Get(const std::string& path, GetHandler handler);

    // Whatever lies below the path, which ends with a slash.
    void GetBelow(const std::string& path, GetHandler handler);

    void Post(const std::string& path, PostHandler handler);

    // Throws std::runtime_error when the address cannot be had.
    void Start();

    // Requests under way get a moment to end and are then cut off.
    void Stop();

    int Port() const { return port_; }

private:
    class Listener;

    Options options_;
    std::unique_ptr<Listener> listener_;
    std::thread thread_;
    int port_ = 0;
};

} // namespace quorvex::services
