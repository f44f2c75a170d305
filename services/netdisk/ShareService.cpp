#include "netdisk/ShareService.h"

#include "common/AdminService.h"
#include "common/DownloadAnswer.h"
#include "common/HttpAnswers.h"
#include "common/JsonBody.h"
#include "common/Text.h"
#include "netdisk/Replies.h"

namespace quorvex::services::netdisk
{

namespace
{

Shares::Filter FilterNamed(const std::string& type)
{
    const auto number = type.empty() ? 0 : ParseUnsigned(type);
    if (!number || *number > static_cast<std::uint64_t>(Shares::Filter::Expired))
    {
        throw HttpError(Status::BadRequest, "type is none of 0, 1 and 2");
    }
    return static_cast<Shares::Filter>(*number);
}

Json::Value ListedShare(const ShareRow& share)
{
    Json::Value entry = TextReply("pcode", share.code);
    entry["createtime"] = Json::Int64{share.createtime};
    entry["deadline"] = Json::Int64{share.deadline};
    entry["downcount"] = Json::UInt64{share.downcount};
    return entry;
}

} // namespace

ShareService::ShareService(Sessions& sessions, Shares& shares) : sessions_(sessions), shares_(shares)
{
}

void ShareService::AddRoutes(AccountRoutes& routes, HttpServer& server)
{
    using Body = const Json::Value&;
    using Request = const httplib::Request&;
    routes.Post("/object/pcode/create", [this](std::int64_t account, Body body) { return Create(account, body); });
    routes.Post("/object/pcode/del", [this](std::int64_t account, Body body) { return Delete(account, body); });
    routes.Get("/object/pcode/list", [this](std::int64_t account, Request in) { return List(account, in); });
    routes.Get("/object/pcode/info", [this](std::int64_t, Request in) { return Show(in); });
    routes.Post("/object/pcode/defer", [this](std::int64_t account, Body body) { return Defer(account, body); });
    routes.Post("/object/pcode/save", [this](std::int64_t account, Body body) { return Save(account, body); });
    server.Get("/object/pcode/down", [this](Request in, httplib::Response& out) { Download(in, out); });
}

// Spares tests and set-ups the wait.
void ShareService::AddAdminRoutes(HttpServer& server)
{
    AdminService::AddRoute(server, "/admin/pcodes/expire", [this](const Json::Value& body) {
        const std::string code = RequiredText(body, "pcode");
        shares_.Expire(code);
        return TextReply("pcode", code);
    });
}

Json::Value ShareService::Create(std::int64_t account, const Json::Value& body)
{
    return TextReply("pcode",
                     shares_.Create(account, RequiredTexts(body, "fkeys"), RequiredSeconds(body, "alivesecond")));
}

Json::Value ShareService::Delete(std::int64_t account, const Json::Value& body)
{
    shares_.Delete(account, RequiredTexts(body, "pcodes"));
    return Json::objectValue;
}

Json::Value ShareService::List(std::int64_t account, const httplib::Request& request)
{
    Json::Value reply(Json::objectValue);
    Json::Value& codes = reply["pcodes"] = Json::arrayValue;
    for (const ShareRow& share : shares_.List(account, FilterNamed(request.get_param_value("type"))))
    {
        codes.append(ListedShare(share));
    }
    return reply;
}

Json::Value ShareService::Show(const httplib::Request& request)
{
    Json::Value reply(Json::objectValue);
    Json::Value& files = reply["files"] = Json::arrayValue;
    for (const FileRow& file : shares_.Files(request.get_param_value("pcode")))
    {
        files.append(ListedFile("fid", file));
    }
    return reply;
}

Json::Value ShareService::Defer(std::int64_t account, const Json::Value& body)
{
    const std::string code = RequiredText(body, "pcode");
    shares_.Defer(account, code, RequiredSeconds(body, "defersecond"));
    return TextReply("pcode", code);
}

Json::Value ShareService::Save(std::int64_t account, const Json::Value& body)
{
    Json::Value reply(Json::objectValue);
    Json::Value& keys = reply["fkeys"] = Json::arrayValue;
    for (const std::string& key : shares_.Save(account, RequiredText(body, "pcode"), OptionalText(body, "fo_id")))
    {
        keys.append(key);
    }
    return reply;
}

void ShareService::Download(const httplib::Request& request, httplib::Response& response)
{
    sessions_.RequireAccount(request);
    const std::string code = request.get_param_value("pcode");
    const std::string key = request.get_param_value("fid");
    if (AnswerDownload(request, response, shares_.Open(code, key)))
    {
        shares_.CountDownload(code, key);
    }
}

} // namespace quorvex::services::netdisk
