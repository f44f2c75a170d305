#include "netdisk/NetDiskStore.h"

#include "common/Crypto.h"
#include "common/FileName.h"
#include "common/HttpAnswers.h"
#include "netdisk/Schema.h"

#include <utility>

namespace quorvex::services::netdisk
{

namespace
{

FileRow ReadRow(SQLite::Statement& query)
{
    FileRow row;
    row.key = query.getColumn("fkey").getString();
    row.name = query.getColumn("name").getString();
    row.size = static_cast<std::uint64_t>(query.getColumn("size").getInt64());
    row.md5 = query.getColumn("md5").getString();
    if (!query.getColumn("blob_id").isNull())
    {
        row.blob = query.getColumn("blob_id").getInt64();
    }
    row.folder = OptionalColumn(query, "fo_id");
    row.downcount = static_cast<std::uint64_t>(query.getColumn("downcount").getInt64());
    row.ctime = query.getColumn("ctime").getInt64();
    return row;
}

} // namespace

NetDiskStore::NetDiskStore(Database& database, BlobStore& blobs, PartialFiles& partials, Folders& folders, Clock clock,
                           Limits limits)
    : database_(database),
      blobs_(blobs),
      partials_(partials),
      folders_(folders),
      clock_(std::move(clock)),
      limits_(limits)
{
}

std::string NetDiskStore::Add(std::int64_t account, const std::string& name, BlobStore::Staged& staged)
{
    return database_.Transact([&](Transaction& transaction) {
        const std::int64_t blob = blobs_.Reference(transaction, staged);
        return Insert(transaction, account, name, staged.Content(), blob);
    });
}

std::string NetDiskStore::Insert(Transaction& transaction, std::int64_t account, const std::string& name,
                                 const BlobContent& content, std::optional<std::int64_t> blob,
                                 const std::optional<std::string>& folder)
{
    GetCapacity(transaction, account).RequireRoom(content.size);
    std::string key = RandomKey();
    auto insert = transaction.Prepare(R"(
        INSERT INTO netdisk_file (fkey, account_id, name, size, md5, blob_id, ctime, fo_id)
        VALUES (?, ?, ?, ?, ?, ?, ?, ?))");
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
    BindOptional(insert, 8, folder);
    insert.exec();
    return key;
}

std::string NetDiskStore::Copy(Transaction& transaction, std::int64_t account, const FileRow& file,
                               const std::optional<std::string>& folder)
{
    const BlobContent content{file.md5, file.size};
    return Insert(transaction, account, file.name, content, blobs_.ReferenceExisting(transaction, content), folder);
}

std::optional<FileRow> NetDiskStore::Find(Transaction& transaction, std::int64_t account, const std::string& key,
                                          bool withRecycled)
{
    auto query = transaction.Prepare(R"(
        SELECT * FROM netdisk_file WHERE fkey = ? AND account_id = ? AND (? OR rs_id IS NULL))");
    query.bind(1, key);
    query.bind(2, account);
    query.bind(3, withRecycled ? 1 : 0);
    return query.executeStep() ? std::optional(ReadRow(query)) : std::nullopt;
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

BlockFileRows::File NetDiskStore::RequireFile(Transaction& transaction, std::int64_t account, const std::string& key)
{
    const FileRow row = Require(transaction, account, key);
    return {{row.md5, row.size}, row.IsComplete()};
}

void NetDiskStore::Complete(Transaction& transaction, const std::string& key, std::int64_t blob)
{
    auto update = transaction.Prepare("UPDATE netdisk_file SET blob_id = ? WHERE fkey = ?");
    update.bind(1, blob);
    update.bind(2, key);
    update.exec();
}

std::vector<FileRow> NetDiskStore::ReadAll(SQLite::Statement& query)
{
    std::vector<FileRow> rows;
    while (query.executeStep())
    {
        rows.push_back(ReadRow(query));
    }
    return rows;
}

FolderContent NetDiskStore::List(std::int64_t account, const std::string& folder)
{
    return database_.Transact([&](Transaction& transaction) {
        const auto place = folders_.Locate(transaction, account, folder);
        auto query = transaction.Prepare(R"(
            SELECT * FROM netdisk_file WHERE account_id = ? AND fo_id IS ? AND rs_id IS NULL
            ORDER BY name, fkey)");
        query.bind(1, account);
        BindOptional(query, 2, place);
        return FolderContent{ReadAll(query), folders_.List(transaction, account, place)};
    });
}

Download NetDiskStore::Open(std::int64_t account, const std::string& key)
{
    return database_.Transact(
        [&](Transaction& transaction) { return Open(transaction, Require(transaction, account, key)); });
}

Download NetDiskStore::Open(Transaction& transaction, FileRow file)
{
    if (!file.IsComplete())
    {
        throw HttpError(Status::Conflict, "the file is not complete");
    }
    return {blobs_.Open(transaction, *file.blob), std::move(file.name), file.size, std::move(file.md5), {}};
}

void NetDiskStore::CountDownload(const std::string& key)
{
    database_.Transact([&](Transaction& transaction) { CountDownload(transaction, key); });
}

void NetDiskStore::CountDownload(Transaction& transaction, const std::string& key)
{
    auto update = transaction.Prepare("UPDATE netdisk_file SET downcount = downcount + 1 WHERE fkey = ?");
    update.bind(1, key);
    update.exec();
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
            auto update = transaction.Prepare("UPDATE netdisk_file SET fo_id = ? WHERE fkey = ?");
            BindOptional(update, 1, folders_.Locate(transaction, account, folder));
            update.bind(2, key);
            update.exec();
        }
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
        Erase(transaction, *file);
    });
}

void NetDiskStore::Erase(Transaction& transaction, const FileRow& file)
{
    auto remove = transaction.Prepare("DELETE FROM netdisk_file WHERE fkey = ? RETURNING rs_id");
    remove.bind(1, file.key);
    if (remove.executeStep() && !remove.getColumn(0).isNull())
    {
        // A folder's item stays for the rest that lies in it.
        auto removeItem = transaction.Prepare("DELETE FROM netdisk_recycled WHERE rs_id = ? AND type = ?");
        removeItem.bind(1, remove.getColumn(0).getString());
        removeItem.bind(2, static_cast<int>(ItemType::File));
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

} // namespace quorvex::services::netdisk
