#include "storage/NamedFiles.h"

#include "common/HttpAnswers.h"

#include <utility>

namespace quorvex::services::storage
{

namespace
{

constexpr const char* NoSuchFile = "no such file";

} // namespace

struct NamedFiles::Row
{
    std::int64_t account = 0;
    std::int64_t blob = 0;
    BlobContent content;
};

NamedFiles::NamedFiles(Database& database, BlobStore& blobs, Space& space)
    : database_(database), blobs_(blobs), space_(space)
{
}

NamedFiles::PutResult NamedFiles::Put(Shelf shelf, std::int64_t account, const std::string& key,
                                      BlobStore::Staged& staged)
{
    return database_.Transact([&](Transaction& transaction) {
        if (const auto held = Find(transaction, shelf, key))
        {
            if (held->content == staged.Content())
            {
                return PutResult::HeldAlready;
            }
            if (held->account != account)
            {
                throw HttpError(Status::Locked, "a file of another user has this name");
            }
            Erase(transaction, shelf, key, *held);
        }
        space_.Of(transaction, account).RequireRoom(staged.Content().size);
        auto insert = transaction.Prepare(
            "INSERT INTO storage_named_file (shelf, fkey, account_id, blob_id, size) VALUES (?, ?, ?, ?, ?)");
        insert.bind(1, shelf.Number());
        insert.bind(2, key);
        insert.bind(3, account);
        insert.bind(4, blobs_.Reference(transaction, staged));
        insert.bind(5, static_cast<std::int64_t>(staged.Content().size));
        insert.exec();
        return PutResult::Stored;
    });
}

Download NamedFiles::Open(Shelf shelf, const std::string& key, std::optional<std::int64_t> uploader)
{
    return database_.Transact([&](Transaction& transaction) {
        Row row = Require(transaction, shelf, key);
        if (uploader && *uploader != row.account)
        {
            throw HttpError(Status::NotFound, NoSuchFile);
        }
        return Download{blobs_.Open(transaction, row.blob), key, row.content.size, std::move(row.content.md5), {}};
    });
}

void NamedFiles::Remove(Shelf shelf, const std::string& key)
{
    database_.Transact(
        [&](Transaction& transaction) { Erase(transaction, shelf, key, Require(transaction, shelf, key)); });
}

std::vector<NamedFiles::Entry> NamedFiles::List(Shelf shelf)
{
    return database_.Transact([&](Transaction& transaction) {
        auto query = transaction.Prepare("SELECT fkey, size FROM storage_named_file WHERE shelf = ? ORDER BY fkey");
        query.bind(1, shelf.Number());
        std::vector<Entry> entries;
        while (query.executeStep())
        {
            entries.push_back(
                {query.getColumn(0).getString(), static_cast<std::uint64_t>(query.getColumn(1).getInt64())});
        }
        return entries;
    });
}

std::optional<NamedFiles::Row> NamedFiles::Find(Transaction& transaction, Shelf shelf, const std::string& key) const
{
    auto query = transaction.Prepare(R"(
        SELECT file.account_id, file.blob_id, blob.md5, blob.size FROM storage_named_file AS file
        JOIN blob ON blob.id = file.blob_id WHERE file.shelf = ? AND file.fkey = ?)");
    query.bind(1, shelf.Number());
    query.bind(2, key);
    if (!query.executeStep())
    {
        return std::nullopt;
    }
    return Row{query.getColumn(0).getInt64(), query.getColumn(1).getInt64(),
               BlobContent{query.getColumn(2).getString(), static_cast<std::uint64_t>(query.getColumn(3).getInt64())}};
}

NamedFiles::Row NamedFiles::Require(Transaction& transaction, Shelf shelf, const std::string& key) const
{
    auto row = Find(transaction, shelf, key);
    if (!row)
    {
        throw HttpError(Status::NotFound, NoSuchFile);
    }
    return *std::move(row);
}

void NamedFiles::Erase(Transaction& transaction, Shelf shelf, const std::string& key, const Row& row)
{
    auto remove = transaction.Prepare("DELETE FROM storage_named_file WHERE shelf = ? AND fkey = ?");
    remove.bind(1, shelf.Number());
    remove.bind(2, key);
    remove.exec();
    blobs_.Release(transaction, row.blob);
}

} // namespace quorvex::services::storage
