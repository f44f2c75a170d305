#include "storage/Depot.h"

#include "common/HttpAnswers.h"

#include <utility>

namespace quorvex::services::storage
{

struct Depot::Row
{
    std::string key;
    Announcement file;
    std::optional<std::int64_t> blob; // absent while blocks are still to come
    std::int64_t createtime = 0;
    std::int64_t deadline = 0;
};

Depot::Depot(Database& database, BlobStore& blobs, PartialFiles& partials, Space& space, Clock clock,
             std::int64_t keepingTime)
    : database_(database),
      blobs_(blobs),
      partials_(partials),
      space_(space),
      clock_(std::move(clock)),
      keepingTime_(keepingTime)
{
}

void Depot::Sweep()
{
    database_.Transact([&](Transaction& transaction) {
        auto query = transaction.Prepare("SELECT * FROM storage_depot_file WHERE deadline <= ?");
        query.bind(1, clock_());
        std::vector<Row> rows;
        while (query.executeStep())
        {
            rows.push_back(ReadRow(query));
        }
        for (const Row& row : rows)
        {
            Erase(transaction, row);
        }
    });
}

Depot::State Depot::Create(std::int64_t account, const Announcement& file)
{
    return database_.Transact([&](Transaction& transaction) -> State {
        if (const auto key = FindUnfinished(transaction, account, file))
        {
            KeepFromNow(transaction, *key);
            return {*key, partials_.HeldFromStart(transaction, *key)};
        }
        space_.Of(transaction, account).RequireRoom(file.content.size);
        return {Insert(transaction, account, file), 0};
    });
}

Depot::Upload Depot::BeginUpload(std::int64_t account, const std::string& name)
{
    return database_.Transact([&](Transaction& transaction) {
        std::string ticket = RandomKey();
        std::string key = Insert(transaction, account, {name, {}, {}}, ticket);
        return Upload{std::move(key), std::move(ticket)};
    });
}

void Depot::RequireUpload(std::int64_t account, const std::string& ticket, std::uint64_t size)
{
    database_.Transact([&](Transaction& transaction) { FindUpload(transaction, account, ticket, size); });
}

std::string Depot::ExtendUpload(std::int64_t account, const std::string& ticket, std::uint64_t size,
                                PartialFiles::Range block)
{
    return database_.Transact([&](Transaction& transaction) {
        auto row = FindUpload(transaction, account, ticket, size);
        auto update = transaction.Prepare("UPDATE storage_depot_file SET size = MAX(size, ?) WHERE fkey = ?");
        update.bind(1, static_cast<std::int64_t>(size));
        update.bind(2, row->key);
        update.exec();
        partials_.Forget(transaction, row->key, block);
        return std::move(row->key);
    });
}

std::uint64_t Depot::HeldFromStart(const std::string& key)
{
    return database_.Transact([&](Transaction& transaction) { return partials_.HeldFromStart(transaction, key); });
}

Download Depot::Open(std::optional<std::int64_t> owner, const std::string& key)
{
    return database_.Transact([&](Transaction& transaction) {
        Row row = Require(transaction, owner, key);
        if (!row.blob)
        {
            throw HttpError(Status::Conflict, "the file is not complete");
        }
        return Download{blobs_.Open(transaction, *row.blob), std::move(row.file.name), row.file.content.size,
                        std::move(row.file.content.md5), std::move(row.file.sha1)};
    });
}

void Depot::Renew(std::int64_t account, const std::string& key)
{
    database_.Transact([&](Transaction& transaction) {
        Require(transaction, account, key);
        KeepFromNow(transaction, key);
    });
}

void Depot::Remove(std::int64_t account, const std::string& key)
{
    database_.Transact([&](Transaction& transaction) { Erase(transaction, Require(transaction, account, key)); });
}

std::vector<Depot::Entry> Depot::List(std::int64_t account)
{
    return database_.Transact([&](Transaction& transaction) {
        auto query = transaction.Prepare(
            "SELECT * FROM storage_depot_file WHERE account_id = ? ORDER BY createtime, name, fkey");
        query.bind(1, account);
        const std::int64_t now = clock_();
        std::vector<Entry> entries;
        while (query.executeStep())
        {
            Row row = ReadRow(query);
            entries.push_back(
                {std::move(row.key), std::move(row.file), row.createtime, row.deadline - now, row.blob.has_value()});
        }
        return entries;
    });
}

void Depot::Expire(const std::string& key)
{
    database_.Transact([&](Transaction& transaction) {
        auto update = transaction.Prepare("UPDATE storage_depot_file SET deadline = ? WHERE fkey = ?");
        update.bind(1, clock_());
        update.bind(2, key);
        if (update.exec() == 0)
        {
            throw HttpError(Status::NotFound, "no such file");
        }
    });
    Sweep();
}

BlockFileRows::File Depot::RequireFile(Transaction& transaction, std::int64_t account, const std::string& key)
{
    const Row row = Require(transaction, account, key);
    return {row.file.content, row.blob.has_value()};
}

void Depot::Complete(Transaction& transaction, const std::string& key, std::int64_t blob)
{
    auto update = transaction.Prepare(
        "UPDATE storage_depot_file SET blob_id = ?1, md5 = (SELECT md5 FROM blob WHERE id = ?1) WHERE fkey = ?2");
    update.bind(1, blob);
    update.bind(2, key);
    update.exec();
    KeepFromNow(transaction, key);
}

Depot::Row Depot::ReadRow(SQLite::Statement& query)
{
    Row row;
    row.key = query.getColumn("fkey").getString();
    row.file.name = query.getColumn("name").getString();
    row.file.content.md5 = query.getColumn("md5").getString();
    row.file.content.size = static_cast<std::uint64_t>(query.getColumn("size").getInt64());
    row.file.sha1 = query.getColumn("sha1").getString();
    if (!query.getColumn("blob_id").isNull())
    {
        row.blob = query.getColumn("blob_id").getInt64();
    }
    row.createtime = query.getColumn("createtime").getInt64();
    row.deadline = query.getColumn("deadline").getInt64();
    return row;
}

Depot::Row Depot::Require(Transaction& transaction, std::optional<std::int64_t> account, const std::string& key)
{
    auto query =
        transaction.Prepare("SELECT * FROM storage_depot_file WHERE fkey = ?1 AND (?2 IS NULL OR account_id = ?2)");
    query.bind(1, key);
    if (account)
    {
        query.bind(2, *account);
    }
    if (!query.executeStep())
    {
        throw HttpError(Status::NotFound, "no such file");
    }
    return ReadRow(query);
}

// Nothing where the ticket is still to be given.
std::optional<Depot::Row> Depot::FindUpload(Transaction& transaction, std::int64_t account, const std::string& ticket,
                                            std::uint64_t size) const
{
    std::optional<Row> row;
    Capacity capacity = space_.Of(transaction, account);
    if (!ticket.empty())
    {
        auto query = transaction.Prepare("SELECT * FROM storage_depot_file WHERE ticket = ? AND account_id = ?");
        query.bind(1, ticket);
        query.bind(2, account);
        if (!query.executeStep())
        {
            throw HttpError(Status::NotFound, "no such ticket");
        }
        row = ReadRow(query);
        if (row->blob)
        {
            throw HttpError(Status::Conflict, "the file is already complete");
        }
        capacity.used -= row->file.content.size;
    }
    capacity.RequireRoom(size);
    return row;
}

std::optional<std::string> Depot::FindUnfinished(Transaction& transaction, std::int64_t account,
                                                 const Announcement& file)
{
    auto query = transaction.Prepare(R"(
        SELECT fkey FROM storage_depot_file
        WHERE account_id = ? AND blob_id IS NULL AND name = ? AND md5 = ? AND size = ?)");
    query.bind(1, account);
    query.bind(2, file.name);
    query.bind(3, file.content.md5);
    query.bind(4, static_cast<std::int64_t>(file.content.size));
    return query.executeStep() ? std::optional(query.getColumn(0).getString()) : std::nullopt;
}

std::string Depot::Insert(Transaction& transaction, std::int64_t account, const Announcement& file,
                          const std::optional<std::string>& ticket)
{
    std::string key = RandomKey();
    auto insert = transaction.Prepare(R"(
        INSERT INTO storage_depot_file (fkey, account_id, name, size, md5, sha1, createtime, deadline, ticket)
        VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?7 + ?8, ?9))");
    insert.bind(1, key);
    insert.bind(2, account);
    insert.bind(3, file.name);
    insert.bind(4, static_cast<std::int64_t>(file.content.size));
    insert.bind(5, file.content.md5);
    insert.bind(6, file.sha1);
    insert.bind(7, clock_());
    insert.bind(8, keepingTime_);
    BindOptional(insert, 9, ticket);
    insert.exec();
    partials_.Create(transaction, key);
    return key;
}

void Depot::KeepFromNow(Transaction& transaction, const std::string& key) const
{
    auto update = transaction.Prepare("UPDATE storage_depot_file SET deadline = ? WHERE fkey = ?");
    update.bind(1, clock_() + keepingTime_);
    update.bind(2, key);
    update.exec();
}

void Depot::Erase(Transaction& transaction, const Row& row)
{
    auto remove = transaction.Prepare("DELETE FROM storage_depot_file WHERE fkey = ?");
    remove.bind(1, row.key);
    remove.exec();
    if (row.blob)
    {
        blobs_.Release(transaction, *row.blob);
    }
    else
    {
        partials_.Discard(transaction, row.key);
    }
}

} // namespace quorvex::services::storage
