#include "netdisk/PassportService.h"

#include "common/HttpAnswers.h"
#include "common/JsonBody.h"

namespace quorvex::services::netdisk
{

void PassportService::AddRoutes(HttpServer& server)
{
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    using Reader = const httplib::ContentReader&;
    server.Post("/object/passport/login", [this](Request in, Response out, Reader read) { Login(in, out, read); });
    server.Post("/object/passport/check", [this](Request in, Response out, Reader read) { Check(in, out, read); });
    server.Post("/object/passport/loginticket",
                [this](Request in, Response out, Reader read) { LoginTicket(in, out, read); });
    server.Get("/object/passport/logout", [this](Request in, Response out) { Logout(in, out); });
}

void PassportService::Login(const httplib::Request& request, httplib::Response& response,
                            const httplib::ContentReader& read)
{
    const Json::Value body = ReadJsonBody(read);
    const std::string name = RequiredText(body, "account");
    AnswerLogin(request, response, passwords_.RequireAccount(name, RequiredText(body, "password")));
}

void PassportService::Check(const httplib::Request& request, httplib::Response& response,
                            const httplib::ContentReader& read)
{
    const auto account = sessions_.FindCentreSession(RequiredText(ReadJsonBody(read), "uap_sid"));
    if (!account)
    {
        throw HttpError(Status::Unauthorized, "the user-centre session is not known or has expired");
    }
    sessions_.OpenServiceSession(response, *account);
    Json::Value reply(Json::objectValue);
    reply["uap_uid"] = Json::Int64{*account};
    AnswerJson(request, response, reply);
}

void PassportService::LoginTicket(const httplib::Request& request, httplib::Response& response,
                                  const httplib::ContentReader& read)
{
    const Json::Value body = ReadJsonBody(read);
    const auto account = sessions_.RedeemTicket({RequiredText(body, "blowfish"), RequiredText(body, "ticket")});
    if (!account)
    {
        throw HttpError(Status::Unauthorized, "the ticket is not known, used up or has expired");
    }
    AnswerLogin(request, response, *account);
}

void PassportService::Logout(const httplib::Request& request, httplib::Response& response)
{
    sessions_.CloseServiceSession(request, response);
    AnswerJson(request, response, Json::Value(Json::objectValue));
}

// This program is the user centre as well, so that its login text is the session itself.
void PassportService::AnswerLogin(const httplib::Request& request, httplib::Response& response, std::int64_t account)
{
    const std::string session = sessions_.OpenCentreSession(account);
    sessions_.OpenServiceSession(response, account);
    Json::Value reply(Json::objectValue);
    reply["uap_uid"] = Json::Int64{account};
    reply["uap_sid"] = session;
    reply["QVUserCenterLogin"] = session;
    AnswerJson(request, response, reply);
}

} // namespace quorvex::services::netdisk
