#pragma once

#include "common/AccountRoutes.h"
#include "common/BlobStore.h"
#include "netdisk/LargeFiles.h"
#include "netdisk/NetDiskStore.h"
#include "netdisk/RecycleBin.h"

namespace quorvex::services::netdisk
{

// The requests of the network disk: files, large files and capacity.
class NetDiskService
{
public:
    NetDiskService(Sessions& sessions, NetDiskStore& store, RecycleBin& bin, LargeFiles& largeFiles, BlobStore& blobs);

    void AddRoutes(AccountRoutes& routes, HttpServer& server);

private:
    void Upload(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void Download(const httplib::Request& request, httplib::Response& response);
    Json::Value FinishUpload(std::int64_t account, const Json::Value& body);
    Json::Value Modify(std::int64_t account, const Json::Value& body);
    Json::Value Recycle(std::int64_t account, const Json::Value& body);
    Json::Value Erase(std::int64_t account, const Json::Value& body);
    Json::Value ShowCapacity(std::int64_t account);

    Sessions& sessions_;
    NetDiskStore& store_;
    RecycleBin& bin_;
    LargeFiles& largeFiles_;
    BlobStore& blobs_;
};

} // namespace quorvex::services::netdisk
