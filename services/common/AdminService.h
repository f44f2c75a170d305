#pragma once

#include "common/Accounts.h"
#include "common/HttpServer.h"
#include "common/Sessions.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <json/value.h>

namespace quorvex::services
{

// What a development set-up needs besides the protocol: accounts, tickets, and sessions that end on demand. Answers
// only programs on the same machine.
class AdminService
{
public:
    using Handler = std::function<Json::Value(const Json::Value& body)>;

    AdminService(Accounts& accounts, Sessions& sessions);

    void AddRoutes(HttpServer& server);

    // A route that, like all of them, answers only programs on the same machine.
    static void AddRoute(HttpServer& server, const std::string& path, Handler handler);

    // The existing account that a body names, nothing when it names none.
    static std::optional<std::int64_t> NamedAccount(Accounts& accounts, const Json::Value& body);

private:
    Json::Value AddUser(const Json::Value& body);
    Json::Value IssueTicket(const Json::Value& body);
    Json::Value ExpireSessions(const Json::Value& body);

    Accounts& accounts_;
    Sessions& sessions_;
};

} // namespace quorvex::services
