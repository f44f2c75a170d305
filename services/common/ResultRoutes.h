#pragma once

#include "common/HttpServer.h"

#include <functional>
#include <string>

#include <json/value.h>

namespace quorvex::services
{

// Routes of protocols whose answers tell the outcome in the body, with a text beside it, and not in the HTTP status.
// Clients take an answer that lacks a key for no answer at all, so that a refusal has all keys of a success, with the
// values that stand there for nothing.
class ResultRoutes
{
public:
    // What the outcome and its text are called.
    struct Keys
    {
        const char* result = "result";
        const char* text = "errorinfo";
    };

    // Fills in the answer, whose result is 200 unless it says otherwise. HttpError ends it with its status as result.
    using GetHandler =
        std::function<void(const httplib::Request& request, httplib::Response& response, Json::Value& answer)>;
    using PostHandler = std::function<void(const httplib::Request& request, httplib::Response& response,
                                           Json::Value& answer, const httplib::ContentReader& read)>;

    // How an expired session shows: in the result alone, or as HTTP status 403 as well.
    enum class ExpiredSession
    {
        InResult,
        InStatusToo,
    };

    explicit ResultRoutes(HttpServer& server) : ResultRoutes(server, Keys()) {}
    ResultRoutes(HttpServer& server, const Keys& keys) : server_(server), keys_(keys) {}

    void Get(const std::string& path, Json::Value emptyAnswer, GetHandler handler);
    void Post(const std::string& path, Json::Value emptyAnswer, PostHandler handler,
              ExpiredSession expiredSession = ExpiredSession::InResult);

private:
    HttpServer& server_;
    Keys keys_;
};

} // namespace quorvex::services
