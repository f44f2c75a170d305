#include "storage/DepotService.h"

#include "common/AdminService.h"
#include "common/DownloadAnswer.h"
#include "common/HttpAnswers.h"
#include "common/JsonBody.h"
#include "storage/ClientText.h"
#include "storage/CreateForm.h"
#include "storage/Requests.h"
#include "storage/UploadForms.h"

#include <ctime>
#include <string_view>

namespace quorvex::services::storage
{

namespace
{

Json::Value EmptySpaceAnswer()
{
    Json::Value answer(Json::objectValue);
    answer["uid"] = "";
    answer["totalspace"] = 0;
    answer["totalsize"] = 0;
    answer["freespace"] = 0;
    return answer;
}

std::string TimeText(std::int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts)};
}

// A minute that has begun counts, so that a file with none left is not there.
Json::Int64 MinutesIn(std::int64_t seconds)
{
    return (seconds + 59) / 60;
}

Json::Value ListedFile(const Depot::Entry& file)
{
    Json::Value entry(Json::objectValue);
    entry["fkey"] = file.key;
    entry["fname"] = ListedName(file.file.name);
    entry["fsize"] = Json::UInt64{file.file.content.size};
    entry["fmd5"] = file.file.content.md5;
    entry["fsha1"] = file.file.sha1;
    entry["createtime"] = TimeText(file.createtime);
    entry["finish"] = file.isComplete ? 1 : 0;
    entry["leftminute"] = MinutesIn(file.secondsLeft);
    return entry;
}

std::string KeyInForm(std::string_view form)
{
    constexpr std::string_view keyField = "k=";
    if (!form.starts_with(keyField))
    {
        throw HttpError(Status::BadRequest, "k is missing");
    }
    return std::string(form.substr(keyField.size()));
}

} // namespace

DepotService::DepotService(Sessions& sessions, Space& space, Depot& depot, BlockFiles& blocks)
    : sessions_(sessions), space_(space), depot_(depot), blocks_(blocks)
{
}

void DepotService::AddRoutes(ResultRoutes& routes, HttpServer& server)
{
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    using Reader = const httplib::ContentReader&;
    const Json::Value nothing(Json::objectValue);
    // The one request whose expired session a client of the second generation sees by the status alone.
    routes.Post(
        "/storage/ofs/upload_c_rest.php", EmptyUploadAnswer(),
        [this](Request in, Response, Json::Value& answer, Reader read) { Create(Enter(in), read, answer); },
        ResultRoutes::ExpiredSession::InStatusToo);
    routes.Post("/storage/ofs/upload_u_rest.php", nothing, [this](Request in, Response, Json::Value&, Reader read) {
        BlockForm form(blocks_, Enter(in));
        form.Receive(in, read);
        form.Confirm();
    });
    routes.Post("/storage/ofs/upload_e_rest.php", nothing,
                [this](Request in, Response, Json::Value&, Reader read) { Finish(Enter(in), read); });
    AddKeyRoute(routes, "/storage/ofs/time_rest.php", &Depot::Renew);
    AddKeyRoute(routes, "/storage/ofs/remove_rest.php", &Depot::Remove);
    routes.Get("/storage/ofs/files_rest.php", EmptyListAnswer(),
               [this](Request in, Response, Json::Value& answer) { List(Enter(in), answer); });
    routes.Get("/storage/ofs/info.php", EmptySpaceAnswer(),
               [this](Request in, Response, Json::Value& answer) { ShowSpace(Enter(in), answer); });
    server.Get("/storage/ofs/down.php", [this](Request in, Response out) { Download(in, out); });
}

void DepotService::AddAdminRoutes(HttpServer& server)
{
    AdminService::AddRoute(server, "/admin/depot/expire", [this](const Json::Value& body) {
        Json::Value answer(Json::objectValue);
        answer["fkey"] = RequiredText(body, "fkey");
        depot_.Expire(answer["fkey"].asString());
        return answer;
    });
}

// Whoever comes finds no file whose time is over, and the space that it took is free.
std::int64_t DepotService::Enter(const httplib::Request& request)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    depot_.Sweep();
    return account;
}

void DepotService::AddKeyRoute(ResultRoutes& routes, const std::string& path,
                               void (Depot::*operation)(std::int64_t, const std::string&))
{
    routes.Get(path, Json::Value(Json::objectValue),
               [this, operation](const httplib::Request& request, httplib::Response&, Json::Value&) {
                   (depot_.*operation)(Enter(request), KeyOf(request));
               });
}

void DepotService::Create(std::int64_t account, const httplib::ContentReader& read, Json::Value& answer)
{
    const Depot::State state = depot_.Create(account, ParseCreateForm(ReadTextBody(read)));
    answer["fkey"] = state.key;
    answer["fsize"] = Json::UInt64{state.heldFromStart};
}

void DepotService::Finish(std::int64_t account, const httplib::ContentReader& read)
{
    blocks_.Finish(account, KeyInForm(ReadTextBody(read)));
}

void DepotService::Download(const httplib::Request& request, httplib::Response& response)
{
    const std::int64_t owner = OwnerOf(request, Enter(request));
    AnswerDownload(request, response, depot_.Open(owner, KeyOf(request)));
}

void DepotService::List(std::int64_t account, Json::Value& answer)
{
    for (const Depot::Entry& file : depot_.List(account))
    {
        answer["files"].append(ListedFile(file));
    }
}

void DepotService::ShowSpace(std::int64_t account, Json::Value& answer)
{
    const Capacity capacity = space_.Of(account);
    answer["uid"] = std::to_string(account);
    answer["totalspace"] = Json::UInt64{capacity.total};
    answer["totalsize"] = Json::UInt64{capacity.used};
    answer["freespace"] = Json::UInt64{capacity.Free()};
}

} // namespace quorvex::services::storage
