#pragma once

#include "common/HttpServer.h"
#include "common/PasswordLogin.h"
#include "common/Sessions.h"

namespace quorvex::services::netdisk
{

// Logins: with a password, a user-centre session or a ticket. Each opens a session that travels in a cookie.
class PassportService
{
public:
    PassportService(Sessions& sessions, PasswordLogin& passwords) : sessions_(sessions), passwords_(passwords) {}

    void AddRoutes(HttpServer& server);

private:
    void Login(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void Check(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void LoginTicket(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void Logout(const httplib::Request& request, httplib::Response& response);
    void AnswerLogin(const httplib::Request& request, httplib::Response& response, std::int64_t account);

    Sessions& sessions_;
    PasswordLogin& passwords_;
};

} // namespace quorvex::services::netdisk
