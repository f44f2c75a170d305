#include "common/AdminService.h"

#include "common/HttpAnswers.h"
#include "common/JsonBody.h"
#include "common/Text.h"

#include <utility>

namespace quorvex::services
{

namespace
{

constexpr std::int64_t DefaultTicketLifetime = 600;

bool IsLocal(const std::string& address)
{
    return address == "::1" || address.starts_with("127.") || address.starts_with("::ffff:127.");
}

// A page in this machine's browser can post forms here, but not JSON without being asked.
void RequireLocalJson(const httplib::Request& request)
{
    if (!IsLocal(request.remote_addr))
    {
        throw HttpError(Status::NotFound, "no such operation");
    }
    if (!StartsWithIgnoringCase(request.get_header_value("Content-Type"), "application/json"))
    {
        throw HttpError(Status::UnsupportedMediaType, "send Content-Type: application/json");
    }
}

std::int64_t RequireAccount(Accounts& accounts, const std::string& name)
{
    const auto account = accounts.Find(name);
    if (!account)
    {
        throw HttpError(Status::NotFound, "no such account");
    }
    return *account;
}

Sessions::Kind KindNamed(const std::string& name)
{
    if (name.empty() || name == "service")
    {
        return Sessions::Kind::Service;
    }
    if (name == "centre")
    {
        return Sessions::Kind::Centre;
    }
    if (name == "ticket")
    {
        return Sessions::Kind::Ticket;
    }
    throw HttpError(Status::BadRequest, "kind is none of service, centre and ticket");
}

} // namespace

AdminService::AdminService(Accounts& accounts, Sessions& sessions) : accounts_(accounts), sessions_(sessions)
{
}

void AdminService::AddRoutes(HttpServer& server)
{
    AddRoute(server, "/admin/users", [this](const Json::Value& body) { return AddUser(body); });
    AddRoute(server, "/admin/tickets", [this](const Json::Value& body) { return IssueTicket(body); });
    AddRoute(server, "/admin/sessions/expire", [this](const Json::Value& body) { return ExpireSessions(body); });
}

void AdminService::AddRoute(HttpServer& server, const std::string& path, Handler handler)
{
    server.Post(path, [handler = std::move(handler)](const httplib::Request& request, httplib::Response& response,
                                                     const httplib::ContentReader& read) {
        RequireLocalJson(request);
        AnswerJson(request, response, handler(ReadJsonBody(read)));
    });
}

std::optional<std::int64_t> AdminService::NamedAccount(Accounts& accounts, const Json::Value& body)
{
    const std::string name = OptionalText(body, "account");
    return name.empty() ? std::nullopt : std::optional(RequireAccount(accounts, name));
}

Json::Value AdminService::AddUser(const Json::Value& body)
{
    Json::Value reply(Json::objectValue);
    reply["uap_uid"] = Json::Int64{accounts_.Ensure(RequiredText(body, "account"), RequiredText(body, "password"))};
    return reply;
}

Json::Value AdminService::IssueTicket(const Json::Value& body)
{
    const std::int64_t account = RequireAccount(accounts_, RequiredText(body, "account"));
    const Json::Value lifetime = body.get("lifetime", Json::Int64{DefaultTicketLifetime});
    const Json::Value isSingleUse = body.get("single_use", false);
    if (!lifetime.isInt() || !isSingleUse.isBool())
    {
        throw HttpError(Status::BadRequest, "lifetime is not a number of seconds or single_use not true or false");
    }
    const Sessions::TicketText text = sessions_.IssueTicket(account, lifetime.asInt64(), isSingleUse.asBool());
    Json::Value reply(Json::objectValue);
    reply["blowfish"] = text.blowfish;
    reply["ticket"] = text.ticket;
    return reply;
}

Json::Value AdminService::ExpireSessions(const Json::Value& body)
{
    Json::Value reply(Json::objectValue);
    reply["expired"] = sessions_.Expire(KindNamed(OptionalText(body, "kind")), NamedAccount(accounts_, body));
    return reply;
}

} // namespace quorvex::services
