#pragma once

#include "common/AccountRoutes.h"
#include "netdisk/Folders.h"
#include "netdisk/NetDiskStore.h"
#include "netdisk/RecycleBin.h"

namespace quorvex::services::netdisk
{

// The requests of the network disk's folders and its recycle bin.
class FolderService
{
public:
    FolderService(Folders& folders, NetDiskStore& store, RecycleBin& bin);

    void AddRoutes(AccountRoutes& routes);

private:
    Json::Value Add(std::int64_t account, const Json::Value& body);
    Json::Value Modify(std::int64_t account, const Json::Value& body);
    Json::Value Recycle(std::int64_t account, const Json::Value& body);
    Json::Value Erase(std::int64_t account, const Json::Value& body);
    Json::Value List(std::int64_t account, const httplib::Request& request);
    Json::Value ListBin(std::int64_t account);
    Json::Value Recover(std::int64_t account, const Json::Value& body);
    Json::Value EraseItem(std::int64_t account, const Json::Value& body);

    Folders& folders_;
    NetDiskStore& store_;
    RecycleBin& bin_;
};

} // namespace quorvex::services::netdisk
