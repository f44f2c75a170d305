#include "netdisk/Folders.h"

#include "common/Crypto.h"
#include "common/FileName.h"
#include "common/HttpAnswers.h"
#include "netdisk/Schema.h"

#include <utility>

namespace quorvex::services::netdisk
{

namespace
{

FolderRow ReadRow(SQLite::Statement& query)
{
    return {query.getColumn("fo_id").getString(), query.getColumn("name").getString(),
            OptionalColumn(query, "parent_fo_id"), OptionalColumn(query, "rs_id")};
}

} // namespace

Folders::Folders(Database& database, Clock clock) : database_(database), clock_(std::move(clock))
{
    MigrateTables(database_);
}

std::string Folders::Add(std::int64_t account, const std::string& name, const std::string& parent)
{
    RequireName(name);
    return database_.Transact([&](Transaction& transaction) {
        std::string id = RandomKey();
        const auto place = Locate(transaction, account, parent);
        auto insert = transaction.Prepare(
            "INSERT INTO netdisk_folder (fo_id, account_id, parent_fo_id, name, ctime) VALUES (?, ?, ?, ?, ?)");
        insert.bind(1, id);
        insert.bind(2, account);
        BindOptional(insert, 3, place);
        insert.bind(4, name);
        insert.bind(5, clock_());
        insert.exec();
        return id;
    });
}

void Folders::Modify(std::int64_t account, const std::string& id, const std::string& name, const std::string& parent)
{
    if (!name.empty())
    {
        RequireName(name);
    }
    database_.Transact([&](Transaction& transaction) {
        Require(transaction, account, id);
        if (!name.empty())
        {
            Rename(transaction, id, name);
        }
        if (!parent.empty())
        {
            Move(transaction, account, id, parent);
        }
    });
}

void Folders::Rename(Transaction& transaction, const std::string& id, const std::string& name)
{
    auto update = transaction.Prepare("UPDATE netdisk_folder SET name = ? WHERE fo_id = ?");
    update.bind(1, name);
    update.bind(2, id);
    update.exec();
}

void Folders::Move(Transaction& transaction, std::int64_t account, const std::string& id, const std::string& parent)
{
    const auto place = Locate(transaction, account, parent);
    if (place && IsInside(transaction, *place, id))
    {
        throw HttpError(Status::Conflict, "a folder cannot be moved into itself");
    }
    auto update = transaction.Prepare("UPDATE netdisk_folder SET parent_fo_id = ? WHERE fo_id = ?");
    BindOptional(update, 1, place);
    update.bind(2, id);
    update.exec();
}

bool Folders::IsInside(Transaction& transaction, const std::string& inner, const std::string& outer)
{
    auto query = transaction.Prepare(R"(
        WITH RECURSIVE above(fo_id) AS (
            VALUES (?1)
            UNION
            SELECT parent_fo_id FROM netdisk_folder JOIN above USING (fo_id) WHERE parent_fo_id IS NOT NULL
        )
        SELECT 1 FROM above WHERE fo_id = ?2)");
    query.bind(1, inner);
    query.bind(2, outer);
    return query.executeStep();
}

std::optional<std::string> Folders::Locate(Transaction& transaction, std::int64_t account, const std::string& id)
{
    if (id.empty() || id == Root)
    {
        return std::nullopt;
    }
    return Require(transaction, account, id).id;
}

FolderRow Folders::Require(Transaction& transaction, std::int64_t account, const std::string& id, bool withRecycled)
{
    if (id == Root)
    {
        throw HttpError(Status::BadRequest, "the top of the disk stays as it is");
    }
    auto query =
        transaction.Prepare("SELECT * FROM netdisk_folder WHERE fo_id = ? AND account_id = ? AND (? OR rs_id IS NULL)");
    query.bind(1, id);
    query.bind(2, account);
    query.bind(3, withRecycled ? 1 : 0);
    if (!query.executeStep())
    {
        throw HttpError(Status::NotFound, "no such folder");
    }
    return ReadRow(query);
}

std::vector<FolderRow> Folders::List(Transaction& transaction, std::int64_t account,
                                     const std::optional<std::string>& parent)
{
    auto query = transaction.Prepare(R"(
        SELECT * FROM netdisk_folder WHERE account_id = ? AND parent_fo_id IS ? AND rs_id IS NULL
        ORDER BY name, fo_id)");
    query.bind(1, account);
    BindOptional(query, 2, parent);
    std::vector<FolderRow> rows;
    while (query.executeStep())
    {
        rows.push_back(ReadRow(query));
    }
    return rows;
}

std::string Folders::PathOf(Transaction& transaction, const std::optional<std::string>& folder)
{
    auto query = transaction.Prepare(R"(
        WITH RECURSIVE above(name, parent, distance) AS (
            SELECT name, parent_fo_id, 0 FROM netdisk_folder WHERE fo_id = ?
            UNION ALL
            SELECT folder.name, folder.parent_fo_id, distance + 1
            FROM netdisk_folder AS folder JOIN above ON folder.fo_id = above.parent
        )
        SELECT name FROM above ORDER BY distance DESC)");
    BindOptional(query, 1, folder);
    std::string path;
    while (query.executeStep())
    {
        path.append("/").append(query.getColumn(0).getString());
    }
    return path.empty() ? "/" : path;
}

} // namespace quorvex::services::netdisk
