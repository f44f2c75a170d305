#pragma once

#include "common/Clock.h"
#include "common/Database.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::services::netdisk
{

struct FolderRow
{
    std::string id;
    std::string name;
    std::optional<std::string> parent; // absent at the top of the disk
    std::optional<std::string> item;   // of the recycle bin
};

// The folders of all disks, a tree for each account. Operations end the request with HttpError when the disk has no
// such folder. Folders may bear the same name, as files may: the id tells them apart.
class Folders
{
public:
    // How requests name the top of a disk, which has no row.
    static constexpr std::string_view Root = "0";

    Folders(Database& database, Clock clock);

    // Returns the new folder's id.
    std::string Add(std::int64_t account, const std::string& name, const std::string& parent);

    // An empty name or parent stays as it is.
    void Modify(std::int64_t account, const std::string& id, const std::string& name, const std::string& parent);

    // What rows call the folder that a request names; an empty text means the top as well.
    std::optional<std::string> Locate(Transaction& transaction, std::int64_t account, const std::string& id);

    // One folder, which cannot be the top.
    FolderRow Require(Transaction& transaction, std::int64_t account, const std::string& id, bool withRecycled = false);

    std::vector<FolderRow> List(Transaction& transaction, std::int64_t account,
                                const std::optional<std::string>& parent);

    // The names from the top down, as "/a/b"; the top is "/".
    std::string PathOf(Transaction& transaction, const std::optional<std::string>& folder);

private:
    void Rename(Transaction& transaction, const std::string& id, const std::string& name);
    void Move(Transaction& transaction, std::int64_t account, const std::string& id, const std::string& parent);
    bool IsInside(Transaction& transaction, const std::string& inner, const std::string& outer);

    Database& database_;
    Clock clock_;
};

} // namespace quorvex::services::netdisk
