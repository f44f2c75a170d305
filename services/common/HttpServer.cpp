#include "common/HttpServer.h"

#include "common/HttpAnswers.h"
#include "common/HttpConnection.h"
#include "common/Text.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>
#include <sys/socket.h>

namespace quorvex::services
{

namespace
{

constexpr int Backlog = 256;
constexpr std::chrono::seconds StopGrace{1};

// One write, so that lines of several threads do not mix.
void LogLine(const std::string& text)
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm parts{};
    gmtime_r(&now, &parts);
    char stamp[32];
    std::strftime(stamp, sizeof(stamp), "%Y-%m-%dT%H:%M:%SZ ", &parts);
    const std::string line = stamp + text + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

// Without the query, in which some protocols send passwords and sessions.
std::string PathOf(const httplib::Request& request)
{
    std::string path = request.target.substr(0, request.target.find('?'));
    std::replace_if(
        path.begin(), path.end(), [](char letter) { return letter <= ' ' || letter > '~'; }, '?');
    return path;
}

void LogRequest(const httplib::Request& request, const httplib::Response& response)
{
    LogLine(request.remote_addr + " " + request.method + " " + PathOf(request) + " " + std::to_string(response.status));
}

// The library would parse forms itself, hold their values in memory and drop the connection at the first fault, and it
// would cut ranges out of every answer, error texts included.
void TakeOver(httplib::Request& request)
{
    request.ranges.clear();
    request.headers.erase(FormContentType);
    const std::string contentType = request.get_header_value("Content-Type");
    if (StartsWithIgnoringCase(contentType, "multipart/"))
    {
        request.headers.erase("Content-Type");
        request.set_header(FormContentType, contentType);
    }
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
    {
        // Without either there is no body; the library would read on until the client hangs up.
        request.set_header("Content-Length", "0");
    }
}

void AnswerFailure(const httplib::Request& request, httplib::Response& response, const std::exception& failure,
                   bool isDiskFull)
{
    LogLine(PathOf(request) + ": " + failure.what());
    AnswerError(request, response, isDiskFull ? Status::InsufficientStorage : Status::InternalError,
                isDiskFull ? "the service's disk is full" : "internal error");
}

void AnswerException(const httplib::Request& request, httplib::Response& response, const std::exception_ptr& exception)
{
    try
    {
        std::rethrow_exception(exception);
    }
    catch (const HttpError& error)
    {
        AnswerError(request, response, error.GetStatus(), error.what());
    }
    catch (const std::system_error& error)
    {
        AnswerFailure(request, response, error, error.code() == std::errc::no_space_on_device);
    }
    catch (const SQLite::Exception& error)
    {
        AnswerFailure(request, response, error, error.getErrorCode() == SQLITE_FULL);
    }
    catch (const std::exception& error)
    {
        AnswerFailure(request, response, error, false);
    }
}

// What the library answers by itself, such as an unknown path, gets a body like all other errors.
void FillError(const httplib::Request& request, httplib::Response& response)
{
    if (!response.has_header("Content-Type"))
    {
        AnswerError(request, response, response.status,
                    response.status == Status::NotFound ? "no such operation" : "the request is not understood");
    }
}

// By default the library would share a port that another process listens on, and each would get some of the requests.
void ReuseAddress(socket_t socket)
{
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
}

std::string PatternOf(const std::string& path)
{
    std::string pattern;
    for (const char letter : path)
    {
        pattern += letter == '.' ? std::string("\\.") : std::string(1, letter);
    }
    return pattern;
}

} // namespace

// Adds to the library's server that connections can be cut off, that an early answer is not lost, and that requests
// reach the handlers as they were sent.
class HttpServer::Listener : public httplib::Server
{
public:
    void WidenBacklog() { ::listen(svr_sock_, Backlog); }

    void CutConnections()
    {
        std::unique_lock lock(mutex_);
        ended_.wait_for(lock, StopGrace, [this] { return sockets_.empty(); });
        isCut_ = true;
        for (const socket_t socket : sockets_)
        {
            ::shutdown(socket, SHUT_RDWR);
        }
    }

private:
    class Registration
    {
    public:
        Registration(Listener& listener, socket_t socket) : listener_(listener), socket_(socket)
        {
            const std::lock_guard lock(listener_.mutex_);
            listener_.sockets_.insert(socket_);
            if (listener_.isCut_)
            {
                ::shutdown(socket_, SHUT_RDWR);
            }
        }

        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;

        ~Registration()
        {
            const std::lock_guard lock(listener_.mutex_);
            listener_.sockets_.erase(socket_);
            listener_.ended_.notify_all();
        }

    private:
        Listener& listener_;
        socket_t socket_;
    };

    // One request a connection: clients say "Connection: close", and idle connections would hold threads.
    bool process_and_close_socket(socket_t socket) override
    {
        HttpConnection connection(socket);
        const Registration registration(*this, socket);
        bool isClosed = false;
        const bool isServed = process_request(connection, true, isClosed, TakeOver);
        connection.Linger();
        return isServed;
    }

    std::mutex mutex_;
    std::condition_variable ended_;
    std::set<socket_t> sockets_;
    bool isCut_ = false;
};

HttpServer::HttpServer(Options options) : options_(std::move(options)), listener_(std::make_unique<Listener>())
{
    listener_->new_task_queue = [threads = options_.threads] { return new httplib::ThreadPool(threads); };
    listener_->set_socket_options(ReuseAddress);
    listener_->set_exception_handler(AnswerException);
    listener_->set_error_handler(httplib::Server::Handler(FillError));
    if (!options_.isQuiet)
    {
        listener_->set_logger(LogRequest);
    }
}

HttpServer::~HttpServer()
{
    Stop();
}

void HttpServer::Get(const std::string& path, GetHandler handler)
{
    listener_->Get(PatternOf(path), std::move(handler));
}

void HttpServer::GetBelow(const std::string& path, GetHandler handler)
{
    listener_->Get(PatternOf(path) + "[\\s\\S]*", std::move(handler));
}

void HttpServer::Post(const std::string& path, PostHandler handler)
{
    listener_->Post(PatternOf(path), std::move(handler));
}

void HttpServer::Start()
{
    if (options_.port == 0)
    {
        port_ = listener_->bind_to_any_port(options_.host);
    }
    else
    {
        port_ = listener_->bind_to_port(options_.host, options_.port) ? options_.port : -1;
    }
    if (port_ < 0)
    {
        throw std::runtime_error("cannot listen on " + options_.host + ":" + std::to_string(options_.port));
    }
    listener_->WidenBacklog();
    thread_ = std::thread([this] { listener_->listen_after_bind(); });
    // Before that a stop would go unnoticed.
    while (!listener_->is_running())
    {
        std::this_thread::yield();
    }
}

void HttpServer::Stop()
{
    if (thread_.joinable())
    {
        listener_->stop();
        listener_->CutConnections();
        thread_.join();
    }
}

} // namespace quorvex::services
