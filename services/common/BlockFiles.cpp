#include "common/BlockFiles.h"

#include "common/HttpAnswers.h"

#include <mutex>
#include <utility>
#include <vector>

namespace quorvex::services
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

} // namespace

BlockFiles::BlockFiles(Database& database, BlobStore& blobs, PartialFiles& partials, BlockFileRows& rows)
    : database_(database), blobs_(blobs), partials_(partials), rows_(rows)
{
}

BlockFiles::Block BlockFiles::OpenBlock(std::int64_t account, const std::string& key, std::uint64_t position,
                                        std::uint64_t size)
{
    const auto file =
        database_.Transact([&](Transaction& transaction) { return rows_.RequireFile(transaction, account, key); });
    if (position > file.content.size || size > file.content.size - position)
    {
        throw HttpError(Status::BadRequest, "the block is not inside the file");
    }
    return Block(*this, account, key, {position, position + size});
}

BlockFiles::Block::Block(BlockFiles& owner, std::int64_t account, std::string key, PartialFiles::Range range)
    : owner_(owner), account_(account), key_(std::move(key)), range_(range), access_(owner.accesses_.Get(key_))
{
    const auto lock = LockUnfinished();
    owner_.database_.Transact([&](Transaction& transaction) {
        if (owner_.rows_.RequireFile(transaction, account_, key_).isComplete)
        {
            throw HttpError(Status::Conflict, AlreadyComplete);
        }
    });
    writer_.emplace(owner_.partials_.Open(key_), range_.first);
}

std::shared_lock<std::shared_mutex> BlockFiles::Block::LockUnfinished() const
{
    std::shared_lock lock(access_->mutex);
    if (access_->isFinished)
    {
        throw HttpError(Status::Conflict, AlreadyComplete);
    }
    return lock;
}

void BlockFiles::Block::Append(std::string_view bytes)
{
    if (bytes.size() > range_.past - writer_->Position())
    {
        throw HttpError(Status::BadRequest, "the block is larger than its size says");
    }
    const auto lock = LockUnfinished();
    writer_->Append(bytes);
}

void BlockFiles::Block::Confirm()
{
    if (writer_->Position() != range_.past)
    {
        throw HttpError(Status::BadRequest, "the block is smaller than its size says");
    }
    const auto lock = LockUnfinished();
    writer_->Sync();
    owner_.database_.Transact([&](Transaction& transaction) {
        owner_.rows_.RequireFile(transaction, account_, key_);
        owner_.partials_.Confirm(transaction, key_, range_);
    });
}

std::uint64_t BlockFiles::Finish(std::int64_t account, const std::string& key)
{
    const auto access = accesses_.Get(key);
    const std::lock_guard lock(access->mutex);
    const auto file = RequireWhole(account, key);
    if (!file.isComplete)
    {
        Adopt(account, key, RequireContent(key, file.content));
        access->isFinished = true;
    }
    return file.content.size;
}

BlockFileRows::File BlockFiles::RequireWhole(std::int64_t account, const std::string& key)
{
    return database_.Transact([&](Transaction& transaction) {
        auto file = rows_.RequireFile(transaction, account, key);
        const auto missing =
            file.isComplete ? std::nullopt : partials_.FirstMissing(transaction, key, file.content.size);
        if (missing)
        {
            throw HttpError(Status::Conflict, "bytes " + std::to_string(missing->first) + "-" +
                                                  std::to_string(missing->past - 1) + " are missing");
        }
        return file;
    });
}

BlobContent BlockFiles::RequireContent(const std::string& key, const BlobContent& announced)
{
    std::string md5 = DigestOf(partials_.Open(key), announced.size);
    if (!announced.md5.empty() && md5 != announced.md5)
    {
        database_.Transact([&](Transaction& transaction) { partials_.Reset(transaction, key); });
        throw HttpError(Status::Conflict, "the MD5 does not match, all blocks are to be sent again");
    }
    return {std::move(md5), announced.size};
}

void BlockFiles::Adopt(std::int64_t account, const std::string& key, const BlobContent& content)
{
    BlobStore::Staged staged = blobs_.StageLink(partials_.PathOf(key), content);
    database_.Transact([&](Transaction& transaction) {
        // It may have been deleted meanwhile.
        rows_.RequireFile(transaction, account, key);
        rows_.Complete(transaction, key, blobs_.Reference(transaction, staged));
        partials_.Discard(transaction, key);
    });
}

} // namespace quorvex::services
