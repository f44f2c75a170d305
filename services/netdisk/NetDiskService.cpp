#include "netdisk/NetDiskService.h"

#include "common/DownloadAnswer.h"
#include "common/HttpAnswers.h"
#include "common/JsonBody.h"
#include "netdisk/Replies.h"
#include "netdisk/UploadForm.h"

#include <algorithm>
#include <limits>

namespace quorvex::services::netdisk
{

namespace
{

// Clients read "fsize" as a signed 32-bit number and refuse a reply with a larger one.
Json::Int FileSizeOf(std::uint64_t size)
{
    constexpr std::uint64_t largest = std::numeric_limits<Json::Int>::max();
    return static_cast<Json::Int>(std::min(size, largest));
}

Json::Value KeyReply(const std::string& key)
{
    return TextReply("fkey", key);
}

Json::Value SizedReply(const std::string& key, std::uint64_t size)
{
    Json::Value reply = KeyReply(key);
    reply["fsize"] = FileSizeOf(size);
    return reply;
}

} // namespace

NetDiskService::NetDiskService(Sessions& sessions, NetDiskStore& store, RecycleBin& bin, LargeFiles& largeFiles,
                               BlobStore& blobs)
    : sessions_(sessions), store_(store), bin_(bin), largeFiles_(largeFiles), blobs_(blobs)
{
}

void NetDiskService::AddRoutes(AccountRoutes& routes, HttpServer& server)
{
    using Body = const Json::Value&;
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    using Reader = const httplib::ContentReader&;
    server.Post("/object/file/upload", [this](Request in, Response out, Reader read) { Upload(in, out, read); });
    server.Get("/object/file/down", [this](Request in, Response out) { Download(in, out); });
    routes.Post("/object/file/uploade",
                [this](std::int64_t account, Body body) { return FinishUpload(account, body); });
    routes.Post("/object/file/modi", [this](std::int64_t account, Body body) { return Modify(account, body); });
    routes.Post("/object/file/del", [this](std::int64_t account, Body body) { return Recycle(account, body); });
    routes.Post("/object/file/del4ever", [this](std::int64_t account, Body body) { return Erase(account, body); });
    routes.Get("/object/capacity/info", [this](std::int64_t account, Request) { return ShowCapacity(account); });
}

void NetDiskService::Upload(const httplib::Request& request, httplib::Response& response,
                            const httplib::ContentReader& read)
{
    UploadForm form(store_, largeFiles_, blobs_, sessions_.RequireAccount(request));
    form.Receive(request, read);
    const UploadAnswer answer = form.Finish();
    Json::Value reply = SizedReply(answer.key, answer.size);
    if (answer.isComplete)
    {
        reply["cflag"] = *answer.isComplete ? 1 : 0;
    }
    AnswerJson(request, response, reply);
}

Json::Value NetDiskService::FinishUpload(std::int64_t account, const Json::Value& body)
{
    const std::string key = RequiredText(body, "fkey");
    return SizedReply(key, largeFiles_.Finish(account, key));
}

Json::Value NetDiskService::Modify(std::int64_t account, const Json::Value& body)
{
    const std::string key = RequiredText(body, "fkey");
    store_.Modify(account, key, OptionalText(body, "fo_id"), OptionalText(body, "name"));
    return KeyReply(key);
}

Json::Value NetDiskService::Recycle(std::int64_t account, const Json::Value& body)
{
    const std::string key = RequiredText(body, "fkey");
    bin_.RecycleFile(account, key);
    return KeyReply(key);
}

Json::Value NetDiskService::Erase(std::int64_t account, const Json::Value& body)
{
    const std::string key = RequiredText(body, "fkey");
    store_.Erase(account, key);
    return KeyReply(key);
}

void NetDiskService::Download(const httplib::Request& request, httplib::Response& response)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const std::string key = request.get_param_value("fkey");
    if (AnswerDownload(request, response, store_.Open(account, key)))
    {
        store_.CountDownload(key);
    }
}

Json::Value NetDiskService::ShowCapacity(std::int64_t account)
{
    const Capacity capacity = store_.GetCapacity(account);
    Json::Value reply(Json::objectValue);
    reply["total_space"] = Json::UInt64{capacity.total};
    reply["used_space"] = Json::UInt64{capacity.used};
    reply["max_file_size"] = Json::UInt64{capacity.maxFileSize};
    return reply;
}

} // namespace quorvex::services::netdisk
