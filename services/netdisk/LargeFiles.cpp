#include "netdisk/LargeFiles.h"

#include "common/HttpAnswers.h"

#include <mutex>
#include <utility>
#include <vector>

namespace quorvex::services::netdisk
{

namespace
{

constexpr std::size_t ReadSize = 256UL * 1024;
constexpr const char* AlreadyComplete = "the file is already complete";

std::string DigestOf(const FileHandle& file, std::uint64_t size)
{
    Md5 md5;
    std::vector<char> buffer(ReadSize);
    for (std::uint64_t position = 0; position < size;)
    {
        const std::size_t count = file.ReadAt(position, buffer);
        if (count == 0)
        {
            break;
        }
        md5.Append({buffer.data(), count});
        position += count;
    }
    return md5.Finish();
}

std::optional<std::string> FindUnfinished(Transaction& transaction, std::int64_t account, const std::string& name,
                                          const BlobContent& content)
{
    auto query = transaction.Prepare(R"(
        SELECT fkey FROM netdisk_file
        WHERE account_id = ? AND blob_id IS NULL AND name = ? AND md5 = ? AND size = ?)");
    query.bind(1, account);
    query.bind(2, name);
    query.bind(3, content.md5);
    query.bind(4, static_cast<std::int64_t>(content.size));
    return query.executeStep() ? std::optional(query.getColumn(0).getString()) : std::nullopt;
}

} // namespace

LargeFiles::LargeFiles(Database& database, BlobStore& blobs, PartialFiles& partials, NetDiskStore& store)
    : database_(database), blobs_(blobs), partials_(partials), store_(store)
{
}

LargeFiles::State LargeFiles::Create(std::int64_t account, const std::string& name, const BlobContent& content)
{
    return database_.Transact([&](Transaction& transaction) -> State {
        if (const auto key = FindUnfinished(transaction, account, name, content))
        {
            return {*key, partials_.HeldFromStart(transaction, *key), false};
        }
        if (const auto blob = blobs_.ReferenceExisting(transaction, content))
        {
            return {store_.Insert(transaction, account, name, content, blob), content.size, true};
        }
        std::string key = store_.Insert(transaction, account, name, content, std::nullopt);
        partials_.Create(transaction, key);
        return {std::move(key), 0, false};
    });
}

LargeFiles::Block LargeFiles::OpenBlock(std::int64_t account, const std::string& key, std::uint64_t position,
                                        std::uint64_t size)
{
    const FileRow file =
        database_.Transact([&](Transaction& transaction) { return store_.Require(transaction, account, key); });
    if (position > file.size || size > file.size - position)
    {
        throw HttpError(Status::BadRequest, "the block is not inside the file");
    }
    return Block(*this, account, key, {position, position + size});
}

LargeFiles::Block::Block(LargeFiles& owner, std::int64_t account, std::string key, PartialFiles::Range range)
    : owner_(owner), account_(account), key_(std::move(key)), range_(range), access_(owner.accesses_.Get(key_))
{
    const auto lock = LockUnfinished();
    owner_.database_.Transact([&](Transaction& transaction) {
        if (owner_.store_.Require(transaction, account_, key_).IsComplete())
        {
            throw HttpError(Status::Conflict, AlreadyComplete);
        }
    });
    writer_.emplace(owner_.partials_.Open(key_), range_.first);
}

std::shared_lock<std::shared_mutex> LargeFiles::Block::LockUnfinished() const
{
    std::shared_lock lock(access_->mutex);
    if (access_->isFinished)
    {
        throw HttpError(Status::Conflict, AlreadyComplete);
    }
    return lock;
}

void LargeFiles::Block::Append(std::string_view bytes)
{
    if (bytes.size() > range_.past - writer_->Position())
    {
        throw HttpError(Status::BadRequest, "the block is larger than its size says");
    }
    const auto lock = LockUnfinished();
    writer_->Append(bytes);
}

void LargeFiles::Block::Confirm()
{
    if (writer_->Position() != range_.past)
    {
        throw HttpError(Status::BadRequest, "the block is smaller than its size says");
    }
    const auto lock = LockUnfinished();
    writer_->Sync();
    owner_.database_.Transact([&](Transaction& transaction) {
        owner_.store_.Require(transaction, account_, key_);
        owner_.partials_.Confirm(transaction, key_, range_);
    });
}

std::uint64_t LargeFiles::Finish(std::int64_t account, const std::string& key)
{
    const auto access = accesses_.Get(key);
    const std::lock_guard lock(access->mutex);
    const FileRow file = RequireWhole(account, key);
    if (!file.IsComplete())
    {
        RequireDigest(file);
        Adopt(account, file);
        access->isFinished = true;
    }
    return file.size;
}

FileRow LargeFiles::RequireWhole(std::int64_t account, const std::string& key)
{
    return database_.Transact([&](Transaction& transaction) {
        FileRow file = store_.Require(transaction, account, key);
        const auto missing = file.IsComplete() ? std::nullopt : partials_.FirstMissing(transaction, key, file.size);
        if (missing)
        {
            throw HttpError(Status::Conflict, "bytes " + std::to_string(missing->first) + "-" +
                                                  std::to_string(missing->past - 1) + " are missing");
        }
        return file;
    });
}

void LargeFiles::RequireDigest(const FileRow& file)
{
    if (DigestOf(partials_.Open(file.key), file.size) != file.md5)
    {
        database_.Transact([&](Transaction& transaction) { partials_.Reset(transaction, file.key); });
        throw HttpError(Status::Conflict, "the MD5 does not match, all blocks are to be sent again");
    }
}

void LargeFiles::Adopt(std::int64_t account, const FileRow& file)
{
    BlobStore::Staged staged = blobs_.StageLink(partials_.PathOf(file.key), {file.md5, file.size});
    database_.Transact([&](Transaction& transaction) {
        // It may have been deleted meanwhile.
        store_.Require(transaction, account, file.key);
        auto update = transaction.Prepare("UPDATE netdisk_file SET blob_id = ? WHERE fkey = ?");
        update.bind(1, blobs_.Reference(transaction, staged));
        update.bind(2, file.key);
        update.exec();
        partials_.Discard(transaction, file.key);
    });
}

} // namespace quorvex::services::netdisk
