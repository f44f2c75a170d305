#include "storage/StorageService.h"

#include "common/DownloadAnswer.h"
#include "common/HttpAnswers.h"
#include "storage/ClientText.h"
#include "storage/Requests.h"
#include "storage/UploadForms.h"

namespace quorvex::services::storage
{

StorageService::StorageService(Sessions& sessions, Space& space, NamedFiles& files, Depot& depot, BlobStore& blobs)
    : sessions_(sessions), space_(space), files_(files), depot_(depot), blobs_(blobs)
{
}

void StorageService::AddRoutes(ResultRoutes& routes, HttpServer& server)
{
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    AddUpload(routes, "/storage/ops/upload_rest.php", [](std::int64_t) { return NamedFiles::Shelf::Pictures(); });
    AddUpload(routes, "/storage/ods/upload_rest.php", NamedFiles::Shelf::EmoticonsOf);
    server.Get("/storage/ops/down.php", [this](Request in, Response out) { DownloadPicture(in, out); });
    server.Get("/storage/ods/down.php", [this](Request in, Response out) { DownloadEmoticon(in, out); });
    routes.Get("/storage/ods/remove_rest.php", Json::Value(Json::objectValue),
               [this](Request in, Response, Json::Value&) { RemoveEmoticon(in); });
    routes.Get("/storage/ods/files_rest.php", EmptyListAnswer(),
               [this](Request in, Response, Json::Value& answer) { ListEmoticons(in, answer); });
}

void StorageService::AddUpload(ResultRoutes& routes, const std::string& path, ShelfOf shelfOf)
{
    routes.Post(path, EmptyUploadAnswer(),
                [this, shelfOf](const httplib::Request& request, httplib::Response&, Json::Value& answer,
                                const httplib::ContentReader& read) {
                    const std::int64_t account = sessions_.RequireAccount(request);
                    depot_.Sweep();
                    NamedFileForm form(blobs_, space_.Of(account));
                    form.Receive(request, read);
                    BlobStore::Staged staged = form.Stage(blobs_);
                    const auto result = files_.Put(shelfOf(account), account, form.Key(), staged);
                    answer["result"] = result == NamedFiles::PutResult::Stored ? Status::Ok : Status::Conflict;
                    answer["fkey"] = form.Key();
                    answer["fsize"] = Json::UInt64{staged.Content().size};
                });
}

void StorageService::DownloadPicture(const httplib::Request& request, httplib::Response& response)
{
    sessions_.RequireAccount(request);
    AnswerDownload(request, response, files_.Open(NamedFiles::Shelf::Pictures(), KeyOf(request)));
}

void StorageService::DownloadEmoticon(const httplib::Request& request, httplib::Response& response)
{
    const std::int64_t owner = OwnerOf(request, sessions_.RequireAccount(request));
    AnswerDownload(request, response, files_.Open(NamedFiles::Shelf::EmoticonsOf(owner), KeyOf(request)));
}

void StorageService::RemoveEmoticon(const httplib::Request& request)
{
    files_.Remove(NamedFiles::Shelf::EmoticonsOf(sessions_.RequireAccount(request)), KeyOf(request));
}

void StorageService::ListEmoticons(const httplib::Request& request, Json::Value& answer)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    for (const NamedFiles::Entry& file : files_.List(NamedFiles::Shelf::EmoticonsOf(account)))
    {
        Json::Value entry(Json::objectValue);
        entry["fkey"] = file.key;
        entry["fname"] = ListedName(file.key);
        entry["fsize"] = Json::UInt64{file.size};
        answer["files"].append(entry);
    }
}

} // namespace quorvex::services::storage
