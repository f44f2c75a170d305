#pragma once

#include "common/Clock.h"
#include "common/Database.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <httplib.h>

namespace quorvex::services
{

// What stands in for a password for a limited time. Only digests are stored: who reads the database cannot use them.
class Sessions
{
public:
    enum class Kind
    {
        Service = 0, // travels in a cookie with every request
        Centre = 1,  // the user-centre session, with which a client opens service sessions
        Ticket = 2,  // issued for one login from another program
    };

    struct Lifetimes
    {
        std::int64_t service = 30 * 60;
        std::int64_t centre = 24 * 60 * 60;
    };

    // The id names the session without opening it.
    struct ServiceSession
    {
        std::int64_t account = 0;
        std::string id;
    };

    struct TicketText
    {
        std::string blowfish;
        std::string ticket;
    };

    Sessions(Database& database, Clock clock, Lifetimes lifetimes);

    std::string OpenCentreSession(std::int64_t account);
    std::optional<std::int64_t> FindCentreSession(const std::string& token);

    TicketText IssueTicket(std::int64_t account, std::int64_t lifetime, bool isSingleUse);
    std::optional<std::int64_t> RedeemTicket(const TicketText& text);

    // Opens a session that the answer's cookie carries.
    ServiceSession OpenServiceSession(httplib::Response& response, std::int64_t account);

    // Nothing when the request had no session.
    std::optional<ServiceSession> CloseServiceSession(const httplib::Request& request, httplib::Response& response);

    // The account of the request's session; a request without a live one ends here as forbidden.
    std::int64_t RequireAccount(const httplib::Request& request);

    // The same for clients that log in nowhere and only bring a cookie: a user-centre session in the cookie "session"
    // will do.
    std::int64_t RequireAccountOrCentre(const httplib::Request& request);

    // Ends sessions of one kind, of one account or of all; returns how many.
    int Expire(Kind kind, std::optional<std::int64_t> account);

private:
    void Store(Kind kind, const std::string& token, std::int64_t account, std::int64_t lifetime, bool isSingleUse);
    std::optional<std::int64_t> Find(Kind kind, const std::string& token);
    std::optional<std::int64_t> FindByCookie(const httplib::Request& request, std::string_view name, Kind kind);

    Database& database_;
    Clock clock_;
    Lifetimes lifetimes_;
};

} // namespace quorvex::services
