#include "AccountSession.h"

#include "AccountRequest.h"
#include "Failure.h"
#include "Session.h"

namespace quorvex::console
{
namespace
{

std::string PathFor(const std::string& method)
{
    return method == "password" ? "/passport/login" : "/passport/loginticket";
}

Json::Value LoginBody(const Options& options, const std::string& method)
{
    Json::Value body;
    if (method == "password")
    {
        body["account"] = options.user;
        body["password"] = options.password;
        return body;
    }
    const std::size_t colon = options.ticket.find(':');
    body["blowfish"] = options.ticket.substr(0, colon);
    body["ticket"] = options.ticket.substr(colon + 1);
    return body;
}

AccountSession SessionIn(const Json::Value& reply, const std::string& address)
{
    const Json::Value& session = reply["uap_sid"];
    if (!session.isString())
        throw Failure("the account system at " + address + " has not answered with a session");
    const Json::Value& uid = reply["uap_uid"];
    return {session.asString(), uid.isUInt() ? std::optional(uid.asUInt()) : std::nullopt};
}

} // namespace

AccountSession OpenAccountSession(const Options& options)
{
    const std::string method = LoginMethod(options);
    if (method == "session")
        return {options.session, std::nullopt};
    const std::string address =
        options.accounts.empty() ? Beside(options.server, kNetDisk) : WithoutSlashAtTheEnd(options.accounts);
    return SessionIn(PostLogin(address + PathFor(method), LoginBody(options, method)), address);
}

std::string WithoutSlashAtTheEnd(std::string address)
{
    address.erase(address.find_last_not_of('/') + 1);
    return address;
}

std::string Beside(const std::string& server, const Service& service)
{
    const std::size_t scheme = server.find("://");
    const std::size_t host = scheme == std::string::npos ? 0 : scheme + 3;
    return server.substr(0, server.find('/', host)) + service.path;
}

} // namespace quorvex::console
