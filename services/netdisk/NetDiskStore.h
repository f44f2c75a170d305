#pragma once

#include "common/BlobStore.h"
#include "common/Clock.h"
#include "common/Database.h"
#include "common/PartialFiles.h"

#include <cstdint>
#include <optional>
#include <string>

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
    std::optional<std::int64_t> blob; // absent while blocks are still to come

    bool IsComplete() const { return blob.has_value(); }
};

struct Download
{
    FileHandle content;
    std::string name;
    std::uint64_t size = 0;
    std::string md5;
};

struct Capacity
{
    std::uint64_t total = 0;
    std::uint64_t used = 0;
    std::uint64_t maxFileSize = 0;
};

// The files of all disks. Operations take the account whose disk is meant and end the request with HttpError when the
// disk has no such file.
class NetDiskStore
{
public:
    // How requests name the top of a disk, which has no row.
    static constexpr std::string_view RootFolder = "0";

    NetDiskStore(Database& database, BlobStore& blobs, PartialFiles& partials, Clock clock, Limits limits);

    // A complete file at the top of the disk; returns its key.
    std::string Add(std::int64_t account, const std::string& name, BlobStore::Staged& staged);

    // One row more, which takes space from now on; `blob` is absent for a file whose blocks are still to come.
    std::string Insert(Transaction& transaction, std::int64_t account, const std::string& name,
                       const BlobContent& content, std::optional<std::int64_t> blob);

    // The file unless it is in the recycle bin.
    FileRow Require(Transaction& transaction, std::int64_t account, const std::string& key);

    Download Open(std::int64_t account, const std::string& key);
    void CountDownload(const std::string& key);

    // An empty folder or name stays as it is.
    void Modify(std::int64_t account, const std::string& key, const std::string& folder, const std::string& name);

    // Into the recycle bin; an unfinished file goes for ever.
    void Recycle(std::int64_t account, const std::string& key);

    // For ever, also out of the recycle bin.
    void Erase(std::int64_t account, const std::string& key);

    Capacity GetCapacity(std::int64_t account);

    // Ends the request when a file of this size does not fit.
    void RequireSpace(const Capacity& capacity, std::uint64_t size) const;

private:
    std::optional<FileRow> Find(Transaction& transaction, std::int64_t account, const std::string& key,
                                bool withRecycled);
    void RequireFolder(Transaction& transaction, std::int64_t account, const std::string& folder);
    void EraseRow(Transaction& transaction, const FileRow& file);
    Capacity GetCapacity(Transaction& transaction, std::int64_t account);

    Database& database_;
    BlobStore& blobs_;
    PartialFiles& partials_;
    Clock clock_;
    Limits limits_;
};

} // namespace quorvex::services::netdisk
