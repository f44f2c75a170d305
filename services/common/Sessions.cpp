#include "common/Sessions.h"

#include "common/Crypto.h"
#include "common/HttpAnswers.h"
#include "common/Text.h"

#include <utility>

namespace quorvex::services
{

namespace
{

constexpr std::string_view CookieName = "quorvex_session";
constexpr std::string_view CentreCookieName = "session";

std::optional<std::string> FindCookie(std::string_view header, std::string_view name)
{
    while (!header.empty())
    {
        const std::size_t end = std::min(header.find(';'), header.size());
        const std::string_view pair = Trim(header.substr(0, end));
        if (pair.starts_with(name) && pair.substr(name.size()).starts_with('='))
        {
            return std::string(pair.substr(name.size() + 1));
        }
        header.remove_prefix(std::min(end + 1, header.size()));
    }
    return std::nullopt;
}

std::optional<std::string> Cookie(const httplib::Request& request, std::string_view name)
{
    for (std::size_t i = 0; i < request.get_header_value_count("Cookie"); ++i)
    {
        if (auto token = FindCookie(request.get_header_value("Cookie", i), name))
        {
            return token;
        }
    }
    return std::nullopt;
}

void SetCookie(httplib::Response& response, const std::string& token, std::int64_t lifetime)
{
    response.set_header("Set-Cookie", std::string(CookieName) + "=" + token +
                                          "; Path=/; HttpOnly; Max-Age=" + std::to_string(lifetime));
}

std::string SessionId(const std::string& token)
{
    constexpr std::size_t digits = 32;
    return Sha256(token).substr(0, digits);
}

std::int64_t RequireLive(const std::optional<std::int64_t>& account)
{
    if (!account)
    {
        throw HttpError(Status::Forbidden, "the session has expired");
    }
    return *account;
}

std::string TicketToken(const Sessions::TicketText& text)
{
    return text.blowfish + "." + text.ticket;
}

} // namespace

Sessions::Sessions(Database& database, Clock clock, Lifetimes lifetimes)
    : database_(database), clock_(std::move(clock)), lifetimes_(lifetimes)
{
    database_.Migrate("sessions", {R"(
        CREATE TABLE session (
            digest TEXT PRIMARY KEY,
            kind INTEGER NOT NULL,
            account_id INTEGER NOT NULL REFERENCES account (id) ON DELETE CASCADE,
            expires_at INTEGER NOT NULL,
            single_use INTEGER NOT NULL
        ) STRICT;
        CREATE INDEX session_by_account ON session (account_id);
        CREATE INDEX session_by_expiry ON session (expires_at);
    )"});
}

std::string Sessions::OpenCentreSession(std::int64_t account)
{
    std::string token = RandomKey();
    Store(Kind::Centre, token, account, lifetimes_.centre, false);
    return token;
}

std::optional<std::int64_t> Sessions::FindCentreSession(const std::string& token)
{
    return Find(Kind::Centre, token);
}

Sessions::TicketText Sessions::IssueTicket(std::int64_t account, std::int64_t lifetime, bool isSingleUse)
{
    TicketText text{RandomKey(), RandomKey()};
    Store(Kind::Ticket, TicketToken(text), account, lifetime, isSingleUse);
    return text;
}

std::optional<std::int64_t> Sessions::RedeemTicket(const TicketText& text)
{
    return Find(Kind::Ticket, TicketToken(text));
}

Sessions::ServiceSession Sessions::OpenServiceSession(httplib::Response& response, std::int64_t account)
{
    const std::string token = RandomKey();
    Store(Kind::Service, token, account, lifetimes_.service, false);
    SetCookie(response, token, lifetimes_.service);
    return {account, SessionId(token)};
}

std::optional<Sessions::ServiceSession> Sessions::CloseServiceSession(const httplib::Request& request,
                                                                      httplib::Response& response)
{
    SetCookie(response, "", 0);
    const auto token = Cookie(request, CookieName);
    if (!token)
    {
        return std::nullopt;
    }
    return database_.Transact([&](Transaction& transaction) -> std::optional<ServiceSession> {
        auto remove = transaction.Prepare("DELETE FROM session WHERE digest = ? AND kind = ? RETURNING account_id");
        remove.bind(1, Sha256(*token));
        remove.bind(2, static_cast<int>(Kind::Service));
        if (!remove.executeStep())
        {
            return std::nullopt;
        }
        return ServiceSession{remove.getColumn(0).getInt64(), SessionId(*token)};
    });
}

std::int64_t Sessions::RequireAccount(const httplib::Request& request)
{
    return RequireLive(FindByCookie(request, CookieName, Kind::Service));
}

std::int64_t Sessions::RequireAccountOrCentre(const httplib::Request& request)
{
    const auto account = FindByCookie(request, CookieName, Kind::Service);
    return RequireLive(account ? account : FindByCookie(request, CentreCookieName, Kind::Centre));
}

int Sessions::Expire(Kind kind, std::optional<std::int64_t> account)
{
    return database_.Transact([&](Transaction& transaction) {
        auto remove = transaction.Prepare("DELETE FROM session WHERE kind = ?1 AND (?2 IS NULL OR account_id = ?2)");
        remove.bind(1, static_cast<int>(kind));
        if (account)
        {
            remove.bind(2, *account);
        }
        return remove.exec();
    });
}

void Sessions::Store(Kind kind, const std::string& token, std::int64_t account, std::int64_t lifetime, bool isSingleUse)
{
    const std::int64_t now = clock_();
    database_.Transact([&](Transaction& transaction) {
        auto purge = transaction.Prepare("DELETE FROM session WHERE expires_at <= ?");
        purge.bind(1, now);
        purge.exec();
        auto insert = transaction.Prepare(
            "INSERT INTO session (digest, kind, account_id, expires_at, single_use) VALUES (?, ?, ?, ?, ?)");
        insert.bind(1, Sha256(token));
        insert.bind(2, static_cast<int>(kind));
        insert.bind(3, account);
        insert.bind(4, now + lifetime);
        insert.bind(5, isSingleUse ? 1 : 0);
        insert.exec();
    });
}

std::optional<std::int64_t> Sessions::Find(Kind kind, const std::string& token)
{
    return database_.Transact([&](Transaction& transaction) -> std::optional<std::int64_t> {
        const std::string digest = Sha256(token);
        auto query = transaction.Prepare(
            "SELECT account_id, single_use FROM session WHERE digest = ? AND kind = ? AND expires_at > ?");
        query.bind(1, digest);
        query.bind(2, static_cast<int>(kind));
        query.bind(3, clock_());
        if (!query.executeStep())
        {
            return std::nullopt;
        }
        const std::int64_t account = query.getColumn(0).getInt64();
        if (query.getColumn(1).getInt() != 0)
        {
            auto remove = transaction.Prepare("DELETE FROM session WHERE digest = ?");
            remove.bind(1, digest);
            remove.exec();
        }
        return account;
    });
}

std::optional<std::int64_t> Sessions::FindByCookie(const httplib::Request& request, std::string_view name, Kind kind)
{
    const auto token = Cookie(request, name);
    return token ? Find(kind, *token) : std::nullopt;
}

} // namespace quorvex::services
