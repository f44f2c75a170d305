#pragma once

#include "common/AccountRoutes.h"
#include "netdisk/Shares.h"

namespace quorvex::services::netdisk
{

// The requests of the network disk's share codes.
class ShareService
{
public:
    ShareService(Sessions& sessions, Shares& shares);

    void AddRoutes(AccountRoutes& routes, HttpServer& server);
    void AddAdminRoutes(HttpServer& server);

private:
    Json::Value Create(std::int64_t account, const Json::Value& body);
    Json::Value Delete(std::int64_t account, const Json::Value& body);
    Json::Value List(std::int64_t account, const httplib::Request& request);
    Json::Value Show(const httplib::Request& request);
    Json::Value Defer(std::int64_t account, const Json::Value& body);
    Json::Value Save(std::int64_t account, const Json::Value& body);
    void Download(const httplib::Request& request, httplib::Response& response);

    Sessions& sessions_;
    Shares& shares_;
};

} // namespace quorvex::services::netdisk
