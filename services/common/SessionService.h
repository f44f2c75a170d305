#pragma once

#include "common/PasswordLogin.h"
#include "common/ResultRoutes.h"
#include "common/Sessions.h"

#include <cstdint>
#include <functional>
#include <string>

namespace quorvex::services
{

// Login and logout of the older protocols. What "uid" and "sid" a login tells, its logout tells again.
class SessionService
{
public:
    SessionService(Sessions& sessions, PasswordLogin& passwords) : sessions_(sessions), passwords_(passwords) {}

    using LogoutHandler = std::function<void(std::int64_t account)>;

    // "check.php", which takes a user-centre session, and "logout_rest.php"; the service may have more to do at a
    // logout than to end the session.
    void AddRoutes(
        ResultRoutes& routes, const std::string& basePath, const LogoutHandler& onLogout = [](std::int64_t) {});

    // "login_rest.php", which takes name and password.
    void AddPasswordRoute(ResultRoutes& routes, const std::string& basePath);

private:
    void Check(const httplib::Request& request, httplib::Response& response, Json::Value& answer);
    void Login(const httplib::Request& request, httplib::Response& response, Json::Value& answer);
    void Logout(const httplib::Request& request, httplib::Response& response, Json::Value& answer,
                const LogoutHandler& onLogout);
    void Open(httplib::Response& response, Json::Value& answer, std::int64_t account);

    Sessions& sessions_;
    PasswordLogin& passwords_;
};

} // namespace quorvex::services
