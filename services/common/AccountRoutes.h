#pragma once

#include "common/HttpServer.h"
#include "common/Sessions.h"

#include <cstdint>
#include <functional>
#include <string>

#include <json/value.h>

namespace quorvex::services
{

// Routes that want a live session and answer with JSON.
class AccountRoutes
{
public:
    using PostHandler = std::function<Json::Value(std::int64_t account, const Json::Value& body)>;
    using GetHandler = std::function<Json::Value(std::int64_t account, const httplib::Request& request)>;

    AccountRoutes(HttpServer& server, Sessions& sessions) : server_(server), sessions_(sessions) {}

    void Post(const std::string& path, PostHandler handler);
    void Get(const std::string& path, GetHandler handler);

private:
    HttpServer& server_;
    Sessions& sessions_;
};

} // namespace quorvex::services
