#pragma once

#include "common/BlobStore.h"
#include "common/BlockFiles.h"
#include "common/Capacity.h"
#include "common/Clock.h"
#include "common/Database.h"
#include "common/DownloadAnswer.h"
#include "common/PartialFiles.h"
#include "netdisk/Folders.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::services::netdisk
{

struct Limits
{
    std::uint64_t quota = 16ULL << 30U;
    // The protocol's sizes and positions are 32-bit.
    std::uint64_t maxFileSize = 0xFFFFFFFFU;
};

struct FileRow
{
    std::string key;
    std::string name;
    std::uint64_t size = 0;
    std::string md5;
    std::optional<std::int64_t> blob;  // absent while blocks are still to come
    std::optional<std::string> folder; // absent at the top of the disk
    std::uint64_t downcount = 0;
    std::int64_t ctime = 0;

    bool IsComplete() const { return blob.has_value(); }
};

struct FolderContent
{
    std::vector<FileRow> files;
    std::vector<FolderRow> folders;
};

// The files of all disks. Operations take the account whose disk is meant and end the request with HttpError when the
// disk has no such file.
class NetDiskStore : public BlockFileRows
{
public:
    NetDiskStore(Database& database, BlobStore& blobs, PartialFiles& partials, Folders& folders, Clock clock,
                 Limits limits);

    // A complete file at the top of the disk; returns its key.
    std::string Add(std::int64_t account, const std::string& name, BlobStore::Staged& staged);

    // One row more, which takes space from now on; `blob` is absent for a file whose blocks are still to come.
    std::string Insert(Transaction& transaction, std::int64_t account, const std::string& name,
                       const BlobContent& content, std::optional<std::int64_t> blob,
                       const std::optional<std::string>& folder = std::nullopt);

    // A file of the account's own with the content of a complete one, whoever's that is; returns its key.
    std::string Copy(Transaction& transaction, std::int64_t account, const FileRow& file,
                     const std::optional<std::string>& folder);

    // The file unless it is in the recycle bin.
    FileRow Require(Transaction& transaction, std::int64_t account, const std::string& key);

    File RequireFile(Transaction& transaction, std::int64_t account, const std::string& key) override;
    void Complete(Transaction& transaction, const std::string& key, std::int64_t blob) override;

    // The rows of a query that selects whole rows of files.
    static std::vector<FileRow> ReadAll(SQLite::Statement& query);

    FolderContent List(std::int64_t account, const std::string& folder);

    Download Open(std::int64_t account, const std::string& key);
    Download Open(Transaction& transaction, FileRow file);
    void CountDownload(const std::string& key);
    void CountDownload(Transaction& transaction, const std::string& key);

    // An empty folder or name stays as it is.
    void Modify(std::int64_t account, const std::string& key, const std::string& folder, const std::string& name);

    // For ever, also out of the recycle bin.
    void Erase(std::int64_t account, const std::string& key);
    void Erase(Transaction& transaction, const FileRow& file);

    Capacity GetCapacity(std::int64_t account);

private:
    std::optional<FileRow> Find(Transaction& transaction, std::int64_t account, const std::string& key,
                                bool withRecycled);
    Capacity GetCapacity(Transaction& transaction, std::int64_t account);

    Database& database_;
    BlobStore& blobs_;
    PartialFiles& partials_;
    Folders& folders_;
    Clock clock_;
    Limits limits_;
};

} // namespace quorvex::services::netdisk
