#include "netdisk/NetDiskService.h"

#include "common/ByteRange.h"
#include "common/HttpAnswers.h"
#include "common/JsonBody.h"
#include "netdisk/FileName.h"
#include "netdisk/UploadForm.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace quorvex::services::netdisk
{

namespace
{

constexpr std::size_t ReadSize = 256UL * 1024;

// Clients read "fsize" as a signed 32-bit number and refuse a reply with a larger one.
Json::Int FileSizeOf(std::uint64_t size)
{
    constexpr std::uint64_t largest = std::numeric_limits<Json::Int>::max();
    return static_cast<Json::Int>(std::min(size, largest));
}

Json::Value KeyReply(const std::string& key)
{
    Json::Value reply(Json::objectValue);
    reply["fkey"] = key;
    return reply;
}

Json::Value SizedReply(const std::string& key, std::uint64_t size)
{
    Json::Value reply = KeyReply(key);
    reply["fsize"] = FileSizeOf(size);
    return reply;
}

UploadAnswer ReceiveForm(const httplib::Request& request, const httplib::ContentReader& read, UploadForm& form)
{
    const auto boundary = MultipartBoundary(request.get_header_value(FormContentType));
    if (!boundary)
    {
        throw HttpError(Status::BadRequest, "the request is not a multipart form");
    }
    MultipartReader reader(*boundary, form);
    const bool isWhole = read([&](const char* data, std::size_t size) { return reader.Feed({data, size}); });
    if (!isWhole || !reader.IsComplete())
    {
        throw HttpError(Status::BadRequest, "the form is broken or not complete");
    }
    return form.Finish();
}

// Reads on as the connection takes the bytes, so that memory does not grow with the file.
httplib::ContentProvider ProvideFrom(std::shared_ptr<FileHandle> file, std::uint64_t first)
{
    return [file = std::move(file), first, buffer = std::vector<char>()](std::size_t offset, std::size_t length,
                                                                         httplib::DataSink& sink) mutable {
        buffer.resize(ReadSize);
        const std::size_t wanted = std::min(length, buffer.size());
        const std::size_t count = file->ReadAt(first + offset, std::span(buffer).first(wanted));
        return count == wanted && sink.write(buffer.data(), count);
    };
}

void AnswerContent(httplib::Response& response, FileHandle content, const ByteRange& range)
{
    constexpr const char* contentType = "application/octet-stream";
    if (range.length == 0)
    {
        response.set_content("", contentType);
        return;
    }
    response.set_content_provider(range.length, contentType,
                                  ProvideFrom(std::make_shared<FileHandle>(std::move(content)), range.first));
}

// A one-byte range at the start is a client's probe for name and size.
bool IsCounted(const ByteRange& range)
{
    return range.kind == ByteRange::Kind::Whole || (range.first == 0 && range.length > 1);
}

} // namespace

NetDiskService::NetDiskService(Sessions& sessions, NetDiskStore& store, LargeFiles& largeFiles, BlobStore& blobs)
    : sessions_(sessions), store_(store), largeFiles_(largeFiles), blobs_(blobs)
{
}

void NetDiskService::AddRoutes(HttpServer& server)
{
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    using Reader = const httplib::ContentReader&;
    server.Post("/object/file/upload", [this](Request in, Response out, Reader read) { Upload(in, out, read); });
    server.Post("/object/file/uploade", [this](Request in, Response out, Reader read) { FinishUpload(in, out, read); });
    server.Post("/object/file/modi", [this](Request in, Response out, Reader read) { Modify(in, out, read); });
    server.Post("/object/file/del", [this](Request in, Response out, Reader read) { Recycle(in, out, read); });
    server.Post("/object/file/del4ever", [this](Request in, Response out, Reader read) { Erase(in, out, read); });
    server.Get("/object/file/down", [this](Request in, Response out) { Download(in, out); });
    server.Get("/object/capacity/info", [this](Request in, Response out) { ShowCapacity(in, out); });
}

void NetDiskService::Upload(const httplib::Request& request, httplib::Response& response,
                            const httplib::ContentReader& read)
{
    UploadForm form(store_, largeFiles_, blobs_, sessions_.RequireAccount(request));
    const UploadAnswer answer = ReceiveForm(request, read, form);
    Json::Value reply = SizedReply(answer.key, answer.size);
    if (answer.isComplete)
    {
        reply["cflag"] = *answer.isComplete ? 1 : 0;
    }
    AnswerJson(request, response, reply);
}

void NetDiskService::FinishUpload(const httplib::Request& request, httplib::Response& response,
                                  const httplib::ContentReader& read)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const std::string key = RequiredText(ReadJsonBody(read), "fkey");
    AnswerJson(request, response, SizedReply(key, largeFiles_.Finish(account, key)));
}

void NetDiskService::Modify(const httplib::Request& request, httplib::Response& response,
                            const httplib::ContentReader& read)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const Json::Value body = ReadJsonBody(read);
    const std::string key = RequiredText(body, "fkey");
    store_.Modify(account, key, OptionalText(body, "fo_id"), OptionalText(body, "name"));
    AnswerJson(request, response, KeyReply(key));
}

void NetDiskService::Recycle(const httplib::Request& request, httplib::Response& response,
                             const httplib::ContentReader& read)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const std::string key = RequiredText(ReadJsonBody(read), "fkey");
    store_.Recycle(account, key);
    AnswerJson(request, response, KeyReply(key));
}

void NetDiskService::Erase(const httplib::Request& request, httplib::Response& response,
                           const httplib::ContentReader& read)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const std::string key = RequiredText(ReadJsonBody(read), "fkey");
    store_.Erase(account, key);
    AnswerJson(request, response, KeyReply(key));
}

void NetDiskService::Download(const httplib::Request& request, httplib::Response& response)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const std::string key = request.get_param_value("fkey");
    netdisk::Download file = store_.Open(account, key);
    const ByteRange range = ParseByteRange(request.get_header_value("Range"), file.size);
    response.set_header("Accept-Ranges", "bytes");
    if (range.kind != ByteRange::Kind::Whole)
    {
        response.set_header("Content-Range", ContentRange(range, file.size));
    }
    if (range.kind == ByteRange::Kind::NotSatisfiable)
    {
        AnswerError(request, response, Status::RangeNotSatisfiable, "the range is outside the file");
        return;
    }
    response.status = range.kind == ByteRange::Kind::Part ? Status::PartialContent : Status::Ok;
    response.set_header("Content-Disposition", ContentDisposition(file.name, file.md5));
    AnswerContent(response, std::move(file.content), range);
    if (IsCounted(range) && request.method == "GET")
    {
        store_.CountDownload(key);
    }
}

void NetDiskService::ShowCapacity(const httplib::Request& request, httplib::Response& response)
{
    const Capacity capacity = store_.GetCapacity(sessions_.RequireAccount(request));
    Json::Value reply(Json::objectValue);
    reply["total_space"] = Json::UInt64{capacity.total};
    reply["used_space"] = Json::UInt64{capacity.used};
    reply["max_file_size"] = Json::UInt64{capacity.maxFileSize};
    AnswerJson(request, response, reply);
}

} // namespace quorvex::services::netdisk
