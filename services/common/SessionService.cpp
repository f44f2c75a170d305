#include "common/SessionService.h"

#include "common/HttpAnswers.h"
#include "common/QueryText.h"

namespace quorvex::services
{

namespace
{

Json::Value NobodyLoggedIn()
{
    Json::Value answer(Json::objectValue);
    answer["uid"] = "";
    answer["sid"] = "";
    return answer;
}

void Show(Json::Value& answer, const Sessions::ServiceSession& session)
{
    answer["uid"] = std::to_string(session.account);
    answer["sid"] = session.id;
}

} // namespace

void SessionService::AddRoutes(ResultRoutes& routes, const std::string& basePath, const LogoutHandler& onLogout)
{
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    routes.Get(basePath + "/check.php", NobodyLoggedIn(),
               [this](Request in, Response out, Json::Value& answer) { Check(in, out, answer); });
    routes.Get(basePath + "/logout_rest.php", NobodyLoggedIn(),
               [this, onLogout](Request in, Response out, Json::Value& answer) { Logout(in, out, answer, onLogout); });
}

void SessionService::AddPasswordRoute(ResultRoutes& routes, const std::string& basePath)
{
    routes.Get(
        basePath + "/login_rest.php", NobodyLoggedIn(),
        [this](const httplib::Request& in, httplib::Response& out, Json::Value& answer) { Login(in, out, answer); });
}

void SessionService::Check(const httplib::Request& request, httplib::Response& response, Json::Value& answer)
{
    const auto account = sessions_.FindCentreSession(LastQueryValue(request, "s"));
    if (!account)
    {
        throw HttpError(Status::Unauthorized, "the user-centre session is not known or has expired");
    }
    Open(response, answer, *account);
}

void SessionService::Login(const httplib::Request& request, httplib::Response& response, Json::Value& answer)
{
    const std::string name = QueryValue(request, "u");
    Open(response, answer, passwords_.RequireAccount(name, LastQueryValue(request, "p")));
}

// A logout without a session has reached its end already.
void SessionService::Logout(const httplib::Request& request, httplib::Response& response, Json::Value& answer,
                            const LogoutHandler& onLogout)
{
    if (const auto session = sessions_.CloseServiceSession(request, response))
    {
        onLogout(session->account);
        Show(answer, *session);
    }
}

void SessionService::Open(httplib::Response& response, Json::Value& answer, std::int64_t account)
{
    Show(answer, sessions_.OpenServiceSession(response, account));
}

} // namespace quorvex::services
