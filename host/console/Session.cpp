#include "Session.h"

#include "Failure.h"
#include "Text.h"

namespace quorvex::console
{
namespace
{

Outcome SendLogin(netdisk::CNetDisk& disk, const Options& options)
{
    const std::string method = LoginMethod(options);
    if (method == "session")
    {
        const std::wstring session = JsonEscaped(options.session);
        CheckThatRequestHolds({session});
        return {disk.UserLogin(session.c_str()), "UserLogin"};
    }
    if (method == "password")
    {
        const std::wstring user = JsonEscaped(options.user);
        const std::wstring password = JsonEscaped(options.password);
        CheckThatRequestHolds({user, password});
        return {disk.UserLogin(user.c_str(), password.c_str()), "UserLogin"};
    }
    const std::size_t colon = options.ticket.find(':');
    const std::wstring first = JsonEscaped(options.ticket.substr(0, colon));
    const std::wstring second = JsonEscaped(options.ticket.substr(colon + 1));
    CheckThatRequestHolds({first, second});
    return {disk.PassportLoginTicket(first.c_str(), second.c_str()), "PassportLoginTicket"};
}

} // namespace

std::string LoginMethod(const Options& options)
{
    if (!options.session.empty())
        return "session";
    if (!options.user.empty())
        return "password";
    return options.ticket.empty() ? "" : "ticket";
}

std::unique_ptr<netdisk::CNetDisk> LogIn(const Options& options)
{
    auto disk = std::make_unique<netdisk::CNetDisk>(Wide(options.server).c_str());
    if (!disk->IsConnected())
        throw Failure("cannot use the server address " + options.server, Result::NotConnected);
    CheckLogin(SendLogin(*disk, options), options.server, disk->GetLastErrMsg());
    return disk;
}

void CheckLogin(Outcome outcome, const std::string& server, const wchar_t* lastError)
{
    if (outcome.result != 0)
        throw Failure("cannot log in to " + server, outcome, ToUtf8(lastError));
}

void CheckThatRequestHolds(std::initializer_list<std::wstring> escapedTexts, std::size_t room)
{
    std::size_t size = 0;
    for (const std::wstring& text : escapedTexts)
        size += ToUtf8(text).size();
    if (size > room)
        throw Failure("the names or credentials given have " + std::to_string(size) +
                      " bytes in UTF-8; a request holds at most " + std::to_string(room));
}

} // namespace quorvex::console
