#include "storage/ApiService.h"

#include "common/DownloadAnswer.h"
#include "common/ResultRoutes.h"
#include "storage/Requests.h"
#include "storage/UploadForms.h"

namespace quorvex::services::storage
{

namespace
{

constexpr const char* PicturePath = "/storage/api/ops/images/";
constexpr const char* FilePath = "/storage/api/ofs/down/";

Json::Value EmptyTicketAnswer()
{
    Json::Value answer = EmptyUploadAnswer();
    answer["ticket"] = "";
    return answer;
}

} // namespace

ApiService::ApiService(Sessions& sessions, Space& space, NamedFiles& files, Depot& depot, TicketUploads& uploads,
                       BlobStore& blobs)
    : sessions_(sessions), space_(space), files_(files), depot_(depot), uploads_(uploads), blobs_(blobs)
{
}

void ApiService::AddRoutes(HttpServer& server)
{
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    using Reader = const httplib::ContentReader&;
    ResultRoutes routes(server, {"code", "msg"});
    routes.Post("/storage/api/ops/upload", EmptyTicketAnswer(),
                [this](Request in, Response, Json::Value& answer, Reader read) { UploadPicture(in, read, answer); });
    routes.Post("/storage/api/ofs/upload", EmptyTicketAnswer(),
                [this](Request in, Response, Json::Value& answer, Reader read) { UploadBlock(in, read, answer); });
    server.GetBelow(PicturePath, [this](Request in, Response out) { DownloadPicture(in, out); });
    server.GetBelow(FilePath, [this](Request in, Response out) { DownloadFile(in, out); });
}

std::int64_t ApiService::Enter(const httplib::Request& request)
{
    const std::int64_t account = sessions_.RequireAccountOrCentre(request);
    depot_.Sweep();
    return account;
}

// These clients take no other code than 200 for success, so that a picture that is held already is one as well.
void ApiService::UploadPicture(const httplib::Request& request, const httplib::ContentReader& read, Json::Value& answer)
{
    const std::int64_t account = Enter(request);
    DigestedFileForm form(blobs_, space_.Of(account));
    form.Receive(request, read);
    BlobStore::Staged staged = form.Stage(blobs_);
    files_.Put(NamedFiles::Shelf::Pictures(), account, form.Key(), staged);
    answer["fkey"] = form.Key();
    answer["fsize"] = Json::UInt64{staged.Content().size};
}

void ApiService::UploadBlock(const httplib::Request& request, const httplib::ContentReader& read, Json::Value& answer)
{
    TicketForm form(blobs_, uploads_, Enter(request));
    form.Receive(request, read);
    const TicketUploads::State state = form.Add();
    answer["fkey"] = state.upload.key;
    answer["ticket"] = state.upload.ticket;
    answer["fsize"] = Json::UInt64{state.heldFromStart};
}

void ApiService::DownloadPicture(const httplib::Request& request, httplib::Response& response)
{
    sessions_.RequireAccountOrCentre(request);
    const PathName name = PathNameBelow(request, PicturePath);
    AnswerDownload(request, response, files_.Open(NamedFiles::Shelf::Pictures(), name.key, name.account));
}

void ApiService::DownloadFile(const httplib::Request& request, httplib::Response& response)
{
    Enter(request);
    const PathName name = PathNameBelow(request, FilePath);
    AnswerDownload(request, response, depot_.Open(name.account, name.key));
}

} // namespace quorvex::services::storage
