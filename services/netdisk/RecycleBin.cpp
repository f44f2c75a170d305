#include "netdisk/RecycleBin.h"

#include "common/Crypto.h"
#include "common/HttpAnswers.h"

#include <utility>

namespace quorvex::services::netdisk
{

namespace
{

void RunFor(Transaction& transaction, const std::string& item, const char* sql)
{
    auto statement = transaction.Prepare(sql);
    statement.bind(1, item);
    statement.exec();
}

} // namespace

RecycleBin::RecycleBin(Database& database, Folders& folders, NetDiskStore& files, Clock clock)
    : database_(database), folders_(folders), files_(files), clock_(std::move(clock))
{
}

void RecycleBin::RecycleFile(std::int64_t account, const std::string& key)
{
    database_.Transact([&](Transaction& transaction) {
        const FileRow file = files_.Require(transaction, account, key);
        if (!file.IsComplete())
        {
            files_.Erase(transaction, file);
            return;
        }
        const std::string item =
            AddItem(transaction, account, ItemType::File, file.name, folders_.PathOf(transaction, file.folder));
        auto update = transaction.Prepare("UPDATE netdisk_file SET rs_id = ? WHERE fkey = ?");
        update.bind(1, item);
        update.bind(2, key);
        update.exec();
    });
}

void RecycleBin::RecycleFolder(std::int64_t account, const std::string& folder)
{
    database_.Transact([&](Transaction& transaction) {
        const FolderRow top = folders_.Require(transaction, account, folder);
        const std::string item =
            AddItem(transaction, account, ItemType::Folder, top.name, folders_.PathOf(transaction, top.parent));
        PutTree(transaction, top, item);
        for (const FileRow& file : FilesOf(transaction, item))
        {
            if (!file.IsComplete())
            {
                files_.Erase(transaction, file);
            }
        }
    });
}

// As an item of its own the tree is what an item's end takes away, wherever it was before.
void RecycleBin::EraseFolder(std::int64_t account, const std::string& folder)
{
    database_.Transact([&](Transaction& transaction) {
        const FolderRow top = folders_.Require(transaction, account, folder, true);
        const std::string item = AddItem(transaction, account, ItemType::Folder, top.name, "/");
        PutTree(transaction, top, item);
        EraseItem(transaction, item);
        if (top.item)
        {
            RunFor(transaction, *top.item, R"(
                DELETE FROM netdisk_recycled
                WHERE rs_id = ?1 AND NOT EXISTS (SELECT 1 FROM netdisk_folder WHERE rs_id = ?1))");
        }
    });
}

std::vector<RecycledItem> RecycleBin::List(std::int64_t account)
{
    return database_.Transact([&](Transaction& transaction) {
        auto query = transaction.Prepare(R"(
            SELECT rs_id, rtime, type, name, fo_before FROM netdisk_recycled WHERE account_id = ?
            ORDER BY rtime DESC, name, rs_id)");
        query.bind(1, account);
        std::vector<RecycledItem> items;
        while (query.executeStep())
        {
            items.push_back({query.getColumn(0).getString(), query.getColumn(1).getInt64(),
                             static_cast<ItemType>(query.getColumn(2).getInt()), query.getColumn(3).getString(),
                             query.getColumn(4).getString()});
        }
        return items;
    });
}

void RecycleBin::Recover(std::int64_t account, const std::string& item)
{
    database_.Transact([&](Transaction& transaction) {
        Require(transaction, account, item);
        // Only the item's topmost row can be in a folder that bears another item.
        RunFor(transaction, item, R"(
            UPDATE netdisk_folder SET parent_fo_id = NULL
            WHERE rs_id = ?1 AND parent_fo_id IN (SELECT fo_id FROM netdisk_folder WHERE rs_id <> ?1))");
        RunFor(transaction, item, R"(
            UPDATE netdisk_file SET fo_id = NULL
            WHERE rs_id = ?1 AND fo_id IN (SELECT fo_id FROM netdisk_folder WHERE rs_id <> ?1))");
        RunFor(transaction, item, "UPDATE netdisk_folder SET rs_id = NULL WHERE rs_id = ?");
        RunFor(transaction, item, "UPDATE netdisk_file SET rs_id = NULL WHERE rs_id = ?");
        RunFor(transaction, item, "DELETE FROM netdisk_recycled WHERE rs_id = ?");
    });
}

void RecycleBin::Erase(std::int64_t account, const std::string& item)
{
    database_.Transact([&](Transaction& transaction) {
        Require(transaction, account, item);
        EraseItem(transaction, item);
    });
}

void RecycleBin::Require(Transaction& transaction, std::int64_t account, const std::string& item)
{
    auto query = transaction.Prepare("SELECT 1 FROM netdisk_recycled WHERE rs_id = ? AND account_id = ?");
    query.bind(1, item);
    query.bind(2, account);
    if (!query.executeStep())
    {
        throw HttpError(Status::NotFound, "no such item in the recycle bin");
    }
}

std::string RecycleBin::AddItem(Transaction& transaction, std::int64_t account, ItemType type, const std::string& name,
                                const std::string& folderBefore)
{
    std::string item = RandomKey();
    auto insert = transaction.Prepare(R"(
        INSERT INTO netdisk_recycled (rs_id, account_id, type, rtime, name, fo_before) VALUES (?, ?, ?, ?, ?, ?))");
    insert.bind(1, item);
    insert.bind(2, account);
    insert.bind(3, static_cast<int>(type));
    insert.bind(4, clock_());
    insert.bind(5, name);
    insert.bind(6, folderBefore);
    insert.exec();
    return item;
}

// What was recycled before from inside the tree keeps its own item.
void RecycleBin::PutTree(Transaction& transaction, const FolderRow& top, const std::string& item)
{
    const std::string tree = R"(
        WITH RECURSIVE tree(fo_id) AS (
            VALUES (?1)
            UNION
            SELECT netdisk_folder.fo_id FROM netdisk_folder JOIN tree ON parent_fo_id = tree.fo_id
            WHERE rs_id IS ?2
        ))";
    const auto put = [&](const char* update) {
        auto statement = transaction.Prepare((tree + update).c_str());
        statement.bind(1, top.id);
        BindOptional(statement, 2, top.item);
        statement.bind(3, item);
        statement.exec();
    };
    // The files first: afterwards the folders no longer bear what the tree is found by.
    put("UPDATE netdisk_file SET rs_id = ?3 WHERE fo_id IN (SELECT fo_id FROM tree) AND rs_id IS ?2");
    put("UPDATE netdisk_folder SET rs_id = ?3 WHERE fo_id IN (SELECT fo_id FROM tree) AND rs_id IS ?2");
}

void RecycleBin::EraseItem(Transaction& transaction, const std::string& item)
{
    for (const FileRow& file : FilesOf(transaction, item))
    {
        files_.Erase(transaction, file);
    }
    // Items of their own that came from these folders outlive them.
    RunFor(transaction, item, R"(
        UPDATE netdisk_file SET fo_id = NULL WHERE fo_id IN (SELECT fo_id FROM netdisk_folder WHERE rs_id = ?))");
    RunFor(transaction, item, R"(
        UPDATE netdisk_folder SET parent_fo_id = NULL
        WHERE parent_fo_id IN (SELECT fo_id FROM netdisk_folder WHERE rs_id = ?))");
    RunFor(transaction, item, "DELETE FROM netdisk_folder WHERE rs_id = ?");
    RunFor(transaction, item, "DELETE FROM netdisk_recycled WHERE rs_id = ?");
}

std::vector<FileRow> RecycleBin::FilesOf(Transaction& transaction, const std::string& item)
{
    auto query = transaction.Prepare("SELECT * FROM netdisk_file WHERE rs_id = ?");
    query.bind(1, item);
    return NetDiskStore::ReadAll(query);
}

} // namespace quorvex::services::netdisk
