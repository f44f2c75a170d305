#pragma once

#include "common/BlobStore.h"
#include "common/HttpServer.h"
#include "common/Sessions.h"
#include "netdisk/LargeFiles.h"
#include "netdisk/NetDiskStore.h"

namespace quorvex::services::netdisk
{

// The requests of the network disk: files, large files and capacity.
class NetDiskService
{
public:
    NetDiskService(Sessions& sessions, NetDiskStore& store, LargeFiles& largeFiles, BlobStore& blobs);

    void AddRoutes(HttpServer& server);

private:
    void Upload(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void FinishUpload(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void Modify(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void Recycle(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void Erase(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void Download(const httplib::Request& request, httplib::Response& response);
    void ShowCapacity(const httplib::Request& request, httplib::Response& response);

    Sessions& sessions_;
    NetDiskStore& store_;
    LargeFiles& largeFiles_;
    BlobStore& blobs_;
};

} // namespace quorvex::services::netdisk
