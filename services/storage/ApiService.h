#pragma once

#include "common/HttpServer.h"
#include "common/Sessions.h"
#include "storage/Depot.h"
#include "storage/NamedFiles.h"
#include "storage/TicketUploads.h"

#include <cstdint>

#include <json/value.h>

namespace quorvex::services::storage
{

// The requests of the third generation: pictures and depot files again, by other paths and forms, for clients that
// bring their session in a cookie of their own.
class ApiService
{
public:
    ApiService(Sessions& sessions, Space& space, NamedFiles& files, Depot& depot, TicketUploads& uploads,
               BlobStore& blobs);

    void AddRoutes(HttpServer& server);

private:
    std::int64_t Enter(const httplib::Request& request);
    void UploadPicture(const httplib::Request& request, const httplib::ContentReader& read, Json::Value& answer);
    void UploadBlock(const httplib::Request& request, const httplib::ContentReader& read, Json::Value& answer);
    void DownloadPicture(const httplib::Request& request, httplib::Response& response);
    void DownloadFile(const httplib::Request& request, httplib::Response& response);

    Sessions& sessions_;
    Space& space_;
    NamedFiles& files_;
    Depot& depot_;
    TicketUploads& uploads_;
    BlobStore& blobs_;
};

} // namespace quorvex::services::storage
