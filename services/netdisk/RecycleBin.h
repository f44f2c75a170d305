#pragma once

#include "common/Clock.h"
#include "common/Database.h"
#include "netdisk/Folders.h"
#include "netdisk/NetDiskStore.h"
#include "netdisk/Schema.h"

#include <string>
#include <vector>

namespace quorvex::services::netdisk
{

struct RecycledItem
{
    std::string id;
    std::int64_t time = 0;
    ItemType type = ItemType::File;
    std::string name;
    std::string folderBefore; // a path, as Folders::PathOf gives it
};

// What was deleted and can be had back, for each account: a file, or a folder with all that was in it, is one item. It
// goes on taking space. Operations end the request with HttpError when the bin has no such item.
class RecycleBin
{
public:
    RecycleBin(Database& database, Folders& folders, NetDiskStore& files, Clock clock);

    // Unfinished files cannot be restored and go for ever, alone as well as with their folder.
    void RecycleFile(std::int64_t account, const std::string& key);
    void RecycleFolder(std::int64_t account, const std::string& folder);

    // The folder with all that is in it, for ever, also out of the bin.
    void EraseFolder(std::int64_t account, const std::string& folder);

    std::vector<RecycledItem> List(std::int64_t account);

    // Back to the folder where it was; to the top of the disk when that folder is no longer in its place.
    void Recover(std::int64_t account, const std::string& item);

    void Erase(std::int64_t account, const std::string& item);

private:
    void Require(Transaction& transaction, std::int64_t account, const std::string& item);
    std::string AddItem(Transaction& transaction, std::int64_t account, ItemType type, const std::string& name,
                        const std::string& folderBefore);
    void PutTree(Transaction& transaction, const FolderRow& top, const std::string& item);
    void EraseItem(Transaction& transaction, const std::string& item);
    std::vector<FileRow> FilesOf(Transaction& transaction, const std::string& item);

    Database& database_;
    Folders& folders_;
    NetDiskStore& files_;
    Clock clock_;
};

} // namespace quorvex::services::netdisk
