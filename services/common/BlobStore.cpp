#include "common/BlobStore.h"

#include <unordered_set>
#include <utility>

namespace quorvex::services
{

namespace
{

void RemoveQuietly(const std::filesystem::path& file)
{
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
}

} // namespace

BlobStore::Staged::Staged(std::filesystem::path file, BlobContent content)
    : file_(std::move(file)), content_(std::move(content))
{
}

BlobStore::Staged::Staged(Staged&& other) noexcept
    : file_(std::exchange(other.file_, {})), content_(std::move(other.content_))
{
}

BlobStore::Staged::~Staged()
{
    if (!file_.empty())
    {
        RemoveQuietly(file_);
    }
}

BlobStore::Incoming::Incoming(const std::filesystem::path& folder)
    : path_(folder / RandomKey()), writer_(FileHandle(path_, FileHandle::Mode::CreateNew))
{
}

BlobStore::Incoming::~Incoming()
{
    RemoveQuietly(path_);
}

void BlobStore::Incoming::Append(std::string_view bytes)
{
    writer_.Append(bytes);
    md5_.Append(bytes);
}

BlobContent BlobStore::Incoming::Finish()
{
    return {md5_.Finish(), Size()};
}

BlobStore::BlobStore(Database& database, const std::filesystem::path& root)
    : database_(database), root_(root / "blobs"), temporary_(root / "tmp")
{
    std::filesystem::create_directories(root_);
    std::filesystem::create_directories(temporary_);
    database_.Migrate("blobs", {R"(
        CREATE TABLE blob (
            id INTEGER PRIMARY KEY,
            name TEXT NOT NULL UNIQUE,
            md5 TEXT NOT NULL,
            size INTEGER NOT NULL CHECK (size >= 0),
            refs INTEGER NOT NULL CHECK (refs > 0),
            UNIQUE (md5, size)
        ) STRICT;
    )"});
}

void BlobStore::Recover()
{
    for (const auto& entry : std::filesystem::directory_iterator(temporary_))
    {
        std::filesystem::remove(entry.path());
    }
    std::unordered_set<std::string> named;
    database_.Transact([&](Transaction& transaction) {
        auto query = transaction.Prepare("SELECT name FROM blob");
        while (query.executeStep())
        {
            named.insert(query.getColumn(0).getString());
        }
    });
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_))
    {
        if (entry.is_regular_file() && !named.contains(entry.path().filename().string()))
        {
            std::filesystem::remove(entry.path());
        }
    }
}

BlobStore::Staged BlobStore::Stage(Incoming& incoming)
{
    incoming.writer_.Sync();
    Staged staged(NewPath(), incoming.Finish());
    std::filesystem::rename(incoming.path_, staged.file_);
    SyncFolder(staged.file_.parent_path());
    return staged;
}

BlobStore::Staged BlobStore::StageLink(const std::filesystem::path& source, BlobContent content)
{
    Staged staged(NewPath(), std::move(content));
    std::filesystem::create_hard_link(source, staged.file_);
    SyncFolder(staged.file_.parent_path());
    return staged;
}

std::optional<std::int64_t> BlobStore::ReferenceExisting(Transaction& transaction, const BlobContent& content)
{
    auto update = transaction.Prepare("UPDATE blob SET refs = refs + 1 WHERE md5 = ? AND size = ? RETURNING id");
    update.bind(1, content.md5);
    update.bind(2, static_cast<std::int64_t>(content.size));
    if (!update.executeStep())
    {
        return std::nullopt;
    }
    return update.getColumn(0).getInt64();
}

std::int64_t BlobStore::Reference(Transaction& transaction, Staged& staged)
{
    if (const auto existing = ReferenceExisting(transaction, staged.content_))
    {
        return *existing;
    }
    auto insert = transaction.Prepare("INSERT INTO blob (name, md5, size, refs) VALUES (?, ?, ?, 1)");
    insert.bind(1, staged.file_.filename().string());
    insert.bind(2, staged.content_.md5);
    insert.bind(3, static_cast<std::int64_t>(staged.content_.size));
    insert.exec();
    transaction.AfterCommit([&staged] { staged.file_.clear(); });
    return transaction.LastRowId();
}

void BlobStore::Release(Transaction& transaction, std::int64_t blob)
{
    auto last = transaction.Prepare("DELETE FROM blob WHERE id = ? AND refs = 1 RETURNING name");
    last.bind(1, blob);
    if (last.executeStep())
    {
        transaction.AfterCommit([file = PathOf(last.getColumn(0).getString())] { RemoveQuietly(file); });
        return;
    }
    auto update = transaction.Prepare("UPDATE blob SET refs = refs - 1 WHERE id = ?");
    update.bind(1, blob);
    update.exec();
}

FileHandle BlobStore::Open(Transaction& transaction, std::int64_t blob) const
{
    auto query = transaction.Prepare("SELECT name FROM blob WHERE id = ?");
    query.bind(1, blob);
    query.executeStep();
    return {PathOf(query.getColumn(0).getString()), FileHandle::Mode::Read};
}

std::filesystem::path BlobStore::PathOf(const std::string& name) const
{
    return root_ / name.substr(0, 2) / name;
}

std::filesystem::path BlobStore::NewPath()
{
    std::filesystem::path path = PathOf(RandomKey());
    // A folder that another thread has just made may not be on the disk yet.
    const std::lock_guard lock(newFolder_);
    if (std::filesystem::create_directory(path.parent_path()))
    {
        SyncFolder(root_);
    }
    return path;
}

} // namespace quorvex::services
