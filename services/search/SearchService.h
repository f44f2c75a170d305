#pragma once

#include "common/Accounts.h"
#include "common/HttpServer.h"
#include "common/ResultRoutes.h"
#include "common/Sessions.h"
#include "search/OnlineUsers.h"
#include "search/UserValues.h"

#include <httplib.h>
#include <json/value.h>

namespace quorvex::services::search
{

// The online-user search as its clients see it, apart from login and logout.
class SearchService
{
public:
    SearchService(Accounts& accounts, Sessions& sessions, UserValues& values, OnlineUsers& users);

    void AddRoutes(ResultRoutes& routes);
    void AddAdminRoutes(HttpServer& server);

private:
    void ReportStatus(const httplib::Request& request);
    void Update(const httplib::Request& request, const httplib::ContentReader& read);
    void Find(const httplib::Request& request, Json::Value& answer, const httplib::ContentReader& read);
    void Count(const httplib::Request& request, Json::Value& answer, const httplib::ContentReader& read);

    Accounts& accounts_;
    Sessions& sessions_;
    UserValues& values_;
    OnlineUsers& users_;
};

} // namespace quorvex::services::search
