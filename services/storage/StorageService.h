#pragma once

#include "common/ResultRoutes.h"
#include "common/Sessions.h"
#include "storage/Depot.h"
#include "storage/NamedFiles.h"

#include <cstdint>

namespace quorvex::services::storage
{

// The requests for pictures, photos, which are pictures too, and emoticons.
class StorageService
{
public:
    StorageService(Sessions& sessions, Space& space, NamedFiles& files, Depot& depot, BlobStore& blobs);

    void AddRoutes(ResultRoutes& routes, HttpServer& server);

private:
    using ShelfOf = NamedFiles::Shelf (*)(std::int64_t account);

    void AddUpload(ResultRoutes& routes, const std::string& path, ShelfOf shelfOf);
    void DownloadPicture(const httplib::Request& request, httplib::Response& response);
    void DownloadEmoticon(const httplib::Request& request, httplib::Response& response);
    void RemoveEmoticon(const httplib::Request& request);
    void ListEmoticons(const httplib::Request& request, Json::Value& answer);

    Sessions& sessions_;
    Space& space_;
    NamedFiles& files_;
    Depot& depot_;
    BlobStore& blobs_;
};

} // namespace quorvex::services::storage
