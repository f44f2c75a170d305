#include "common/PartialFiles.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace quorvex::services
{

namespace
{

std::uint64_t UnsignedColumn(SQLite::Statement& statement, int index)
{
    return static_cast<std::uint64_t>(statement.getColumn(index).getInt64());
}

void BindRange(SQLite::Statement& statement, const std::string& key, const PartialFiles::Range& range)
{
    statement.bind(1, key);
    statement.bind(2, static_cast<std::int64_t>(range.first));
    statement.bind(3, static_cast<std::int64_t>(range.past));
}

} // namespace

PartialFiles::PartialFiles(Database& database, const std::filesystem::path& root)
    : database_(database), folder_(root / "partial")
{
    std::filesystem::create_directories(folder_);
    // Ranges of one file neither overlap nor touch.
    database_.Migrate("partial files", {R"(
        CREATE TABLE partial_file (
            key TEXT PRIMARY KEY
        ) STRICT;
        CREATE TABLE confirmed_range (
            key TEXT NOT NULL REFERENCES partial_file (key) ON DELETE CASCADE,
            first INTEGER NOT NULL CHECK (first >= 0),
            past INTEGER NOT NULL CHECK (past > first),
            PRIMARY KEY (key, first)
        ) STRICT, WITHOUT ROWID;
    )"});
}

void PartialFiles::Recover()
{
    std::unordered_set<std::string> keys;
    database_.Transact([&](Transaction& transaction) {
        auto query = transaction.Prepare("SELECT key FROM partial_file");
        while (query.executeStep())
        {
            keys.insert(query.getColumn(0).getString());
        }
        for (const std::string& key : keys)
        {
            if (!std::filesystem::exists(PathOf(key)))
            {
                Reset(transaction, key);
            }
        }
    });
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
    {
        if (!keys.contains(entry.path().filename().string()))
        {
            std::filesystem::remove(entry.path());
        }
    }
}

void PartialFiles::Create(Transaction& transaction, const std::string& key)
{
    auto insert = transaction.Prepare("INSERT INTO partial_file (key) VALUES (?)");
    insert.bind(1, key);
    insert.exec();
}

FileHandle PartialFiles::Open(const std::string& key) const
{
    FileHandle file(PathOf(key), FileHandle::Mode::OpenOrCreate);
    // Whoever has written to it has come by here before.
    if (file.Size() == 0)
    {
        SyncFolder(folder_);
    }
    return file;
}

void PartialFiles::Confirm(Transaction& transaction, const std::string& key, Range block)
{
    if (block.first == block.past)
    {
        return;
    }
    auto neighbours = transaction.Prepare(
        "SELECT MIN(first), MAX(past) FROM confirmed_range WHERE key = ? AND past >= ? AND first <= ?");
    BindRange(neighbours, key, block);
    Range merged = block;
    if (neighbours.executeStep() && !neighbours.getColumn(0).isNull())
    {
        merged.first = std::min(merged.first, UnsignedColumn(neighbours, 0));
        merged.past = std::max(merged.past, UnsignedColumn(neighbours, 1));
    }
    auto remove = transaction.Prepare("DELETE FROM confirmed_range WHERE key = ? AND first >= ? AND past <= ?");
    BindRange(remove, key, merged);
    remove.exec();
    auto insert = transaction.Prepare("INSERT INTO confirmed_range (key, first, past) VALUES (?, ?, ?)");
    BindRange(insert, key, merged);
    insert.exec();
}

void PartialFiles::Forget(Transaction& transaction, const std::string& key, Range block)
{
    auto remove = transaction.Prepare(
        "DELETE FROM confirmed_range WHERE key = ? AND past > ? AND first < ? RETURNING first, past");
    BindRange(remove, key, block);
    std::vector<Range> rests;
    while (remove.executeStep())
    {
        const Range held{UnsignedColumn(remove, 0), UnsignedColumn(remove, 1)};
        rests.push_back({held.first, std::max(held.first, block.first)});
        rests.push_back({std::min(held.past, block.past), held.past});
    }
    for (const Range& rest : rests)
    {
        Confirm(transaction, key, rest);
    }
}

std::optional<PartialFiles::Range> PartialFiles::FirstMissing(Transaction& transaction, const std::string& key,
                                                              std::uint64_t totalSize)
{
    const std::uint64_t held = HeldFromStart(transaction, key);
    if (held >= totalSize)
    {
        return std::nullopt;
    }
    auto next = transaction.Prepare("SELECT MIN(first) FROM confirmed_range WHERE key = ? AND first > ?");
    next.bind(1, key);
    next.bind(2, static_cast<std::int64_t>(held));
    next.executeStep();
    return Range{held, next.getColumn(0).isNull() ? totalSize : UnsignedColumn(next, 0)};
}

std::uint64_t PartialFiles::HeldFromStart(Transaction& transaction, const std::string& key)
{
    auto query = transaction.Prepare("SELECT past FROM confirmed_range WHERE key = ? AND first = 0");
    query.bind(1, key);
    return query.executeStep() ? UnsignedColumn(query, 0) : 0;
}

void PartialFiles::Reset(Transaction& transaction, const std::string& key)
{
    auto remove = transaction.Prepare("DELETE FROM confirmed_range WHERE key = ?");
    remove.bind(1, key);
    remove.exec();
}

void PartialFiles::Discard(Transaction& transaction, const std::string& key)
{
    auto remove = transaction.Prepare("DELETE FROM partial_file WHERE key = ?");
    remove.bind(1, key);
    remove.exec();
    transaction.AfterCommit([path = PathOf(key)] {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    });
}

} // namespace quorvex::services
