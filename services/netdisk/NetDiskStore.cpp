#include "netdisk/NetDiskStore.h"

#include "common/Crypto.h"
#include "common/HttpAnswers.h"
#include "netdisk/FileName.h"

#include <utility>

namespace quorvex::services::netdisk
{

namespace
{

enum class ItemType
{
    File = 1,
    Folder = 2,
};

// A folder's parent is null at the top of the disk. An item in the recycle bin keeps its folder, to be put back there;
// what lies in a recycled folder is recycled with it and has no item of its own.
constexpr const char* FirstSchema = R"(
    CREATE TABLE netdisk_recycled (
        rs_id TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        type INTEGER NOT NULL,
        rtime INTEGER NOT NULL
    ) STRICT;
    CREATE INDEX netdisk_recycled_by_account ON netdisk_recycled (account_id);
    CREATE TABLE netdisk_folder (
        fo_id TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        parent_fo_id TEXT REFERENCES netdisk_folder (fo_id),
        name TEXT NOT NULL,
        ctime INTEGER NOT NULL,
        rs_id TEXT REFERENCES netdisk_recycled (rs_id)
    ) STRICT;
    CREATE INDEX netdisk_folder_by_parent ON netdisk_folder (account_id, parent_fo_id);
    CREATE TABLE netdisk_file (
        fkey TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        fo_id TEXT REFERENCES netdisk_folder (fo_id),
        name TEXT NOT NULL,
        size INTEGER NOT NULL CHECK (size >= 0),
        md5 TEXT NOT NULL,
        blob_id INTEGER REFERENCES blob (id),
        downcount INTEGER NOT NULL DEFAULT 0,
        ctime INTEGER NOT NULL,
        rs_id TEXT REFERENCES netdisk_recycled (rs_id)
    ) STRICT;
    CREATE INDEX netdisk_file_by_folder ON netdisk_file (account_id, fo_id);
    CREATE INDEX netdisk_file_by_blob ON netdisk_file (blob_id);
    CREATE INDEX netdisk_file_by_item ON netdisk_file (rs_id);
    CREATE INDEX netdisk_folder_by_item ON netdisk_folder (rs_id);
)";

} // namespace

NetDiskStore::NetDiskStore(Database& database, BlobStore& blobs, PartialFiles& partials, Clock clock, Limits limits)
    : database_(database), blobs_(blobs), partials_(partials), clock_(std::move(clock)), limits_(limits)
{
    database_.Migrate("netdisk", {FirstSchema});
}

std::string NetDiskStore::Add(std::int64_t account, const std::string& name, BlobStore::Staged& staged)
{
    return database_.Transact([&](Transaction& transaction) {
        const std::int64_t blob = blobs_.Reference(transaction, staged);
        return Insert(transaction, account, name, staged.Content(), blob);
    });
}

std::string NetDiskStore::Insert(Transaction& transaction, std::int64_t account, const std::string& name,
                                 const BlobContent& content, std::optional<std::int64_t> blob)
{
    RequireSpace(GetCapacity(transaction, account), content.size);
    std::string key = RandomKey();
    auto insert = transaction.Prepare(R"(
        INSERT INTO netdisk_file (fkey, account_id, name, size, md5, blob_id, ctime) VALUES (?, ?, ?, ?, ?, ?, ?))");
    insert.bind(1, key);
    insert.bind(2, account);
    insert.bind(3, name);
    insert.bind(4, static_cast<std::int64_t>(content.size));
    insert.bind(5, content.md5);
    if (blob)
    {
        insert.bind(6, *blob);
    }
    insert.bind(7, clock_());
    insert.exec();
    return key;
}

std::optional<FileRow> NetDiskStore::Find(Transaction& transaction, std::int64_t account, const std::string& key,
                                          bool withRecycled)
{
    auto query = transaction.Prepare(R"(
        SELECT name, size, md5, blob_id FROM netdisk_file
        WHERE fkey = ? AND account_id = ? AND (? OR rs_id IS NULL))");
    query.bind(1, key);
    query.bind(2, account);
    query.bind(3, withRecycled ? 1 : 0);
    if (!query.executeStep())
    {
        return std::nullopt;
    }
    FileRow row{key, query.getColumn(0).getString(), static_cast<std::uint64_t>(query.getColumn(1).getInt64()),
                query.getColumn(2).getString(), std::nullopt};
    if (!query.getColumn(3).isNull())
    {
        row.blob = query.getColumn(3).getInt64();
    }
    return row;
}

FileRow NetDiskStore::Require(Transaction& transaction, std::int64_t account, const std::string& key)
{
    auto row = Find(transaction, account, key, false);
    if (!row)
    {
        throw HttpError(Status::NotFound, "no such file");
    }
    return *std::move(row);
}

Download NetDiskStore::Open(std::int64_t account, const std::string& key)
{
    return database_.Transact([&](Transaction& transaction) {
        FileRow row = Require(transaction, account, key);
        if (!row.IsComplete())
        {
            throw HttpError(Status::Conflict, "the file is not complete");
        }
        return Download{blobs_.Open(transaction, *row.blob), std::move(row.name), row.size, std::move(row.md5)};
    });
}

void NetDiskStore::CountDownload(const std::string& key)
{
    database_.Transact([&](Transaction& transaction) {
        auto update = transaction.Prepare("UPDATE netdisk_file SET downcount = downcount + 1 WHERE fkey = ?");
        update.bind(1, key);
        update.exec();
    });
}

void NetDiskStore::Modify(std::int64_t account, const std::string& key, const std::string& folder,
                          const std::string& name)
{
    if (!name.empty())
    {
        RequireName(name);
    }
    database_.Transact([&](Transaction& transaction) {
        Require(transaction, account, key);
        if (!name.empty())
        {
            auto update = transaction.Prepare("UPDATE netdisk_file SET name = ? WHERE fkey = ?");
            update.bind(1, name);
            update.bind(2, key);
            update.exec();
        }
        if (!folder.empty())
        {
            RequireFolder(transaction, account, folder);
            auto update = transaction.Prepare("UPDATE netdisk_file SET fo_id = NULLIF(?, ?) WHERE fkey = ?");
            update.bind(1, folder);
            update.bind(2, std::string(RootFolder));
            update.bind(3, key);
            update.exec();
        }
    });
}

void NetDiskStore::RequireFolder(Transaction& transaction, std::int64_t account, const std::string& folder)
{
    if (folder == RootFolder)
    {
        return;
    }
    auto query =
        transaction.Prepare("SELECT 1 FROM netdisk_folder WHERE fo_id = ? AND account_id = ? AND rs_id IS NULL");
    query.bind(1, folder);
    query.bind(2, account);
    if (!query.executeStep())
    {
        throw HttpError(Status::NotFound, "no such folder");
    }
}

void NetDiskStore::Recycle(std::int64_t account, const std::string& key)
{
    database_.Transact([&](Transaction& transaction) {
        const FileRow file = Require(transaction, account, key);
        if (!file.IsComplete())
        {
            EraseRow(transaction, file);
            return;
        }
        const std::string item = RandomKey();
        auto insert =
            transaction.Prepare("INSERT INTO netdisk_recycled (rs_id, account_id, type, rtime) VALUES (?, ?, ?, ?)");
        insert.bind(1, item);
        insert.bind(2, account);
        insert.bind(3, static_cast<int>(ItemType::File));
        insert.bind(4, clock_());
        insert.exec();
        auto update = transaction.Prepare("UPDATE netdisk_file SET rs_id = ? WHERE fkey = ?");
        update.bind(1, item);
        update.bind(2, key);
        update.exec();
    });
}

void NetDiskStore::Erase(std::int64_t account, const std::string& key)
{
    database_.Transact([&](Transaction& transaction) {
        const auto file = Find(transaction, account, key, true);
        if (!file)
        {
            throw HttpError(Status::NotFound, "no such file");
        }
        EraseRow(transaction, *file);
    });
}

void NetDiskStore::EraseRow(Transaction& transaction, const FileRow& file)
{
    auto remove = transaction.Prepare("DELETE FROM netdisk_file WHERE fkey = ? RETURNING rs_id");
    remove.bind(1, file.key);
    if (remove.executeStep() && !remove.getColumn(0).isNull())
    {
        auto removeItem = transaction.Prepare("DELETE FROM netdisk_recycled WHERE rs_id = ?");
        removeItem.bind(1, remove.getColumn(0).getString());
        removeItem.exec();
    }
    if (file.IsComplete())
    {
        blobs_.Release(transaction, *file.blob);
    }
    else
    {
        partials_.Discard(transaction, file.key);
    }
}

Capacity NetDiskStore::GetCapacity(std::int64_t account)
{
    return database_.Transact([&](Transaction& transaction) { return GetCapacity(transaction, account); });
}

// Everything counts with its full size: what is in the recycle bin, what shares its content with another file, and
// what is still arriving.
Capacity NetDiskStore::GetCapacity(Transaction& transaction, std::int64_t account)
{
    auto query = transaction.Prepare("SELECT COALESCE(SUM(size), 0) FROM netdisk_file WHERE account_id = ?");
    query.bind(1, account);
    query.executeStep();
    return {limits_.quota, static_cast<std::uint64_t>(query.getColumn(0).getInt64()), limits_.maxFileSize};
}

void NetDiskStore::RequireSpace(const Capacity& capacity, std::uint64_t size) const
{
    if (size > capacity.maxFileSize)
    {
        throw HttpError(Status::PayloadTooLarge, "the file is larger than a file may be");
    }
    if (capacity.used > capacity.total || size > capacity.total - capacity.used)
    {
        throw HttpError(Status::InsufficientStorage, "the disk has no room for the file");
    }
}

} // namespace quorvex::services::netdisk
