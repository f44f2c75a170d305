#include "storage/TicketUploads.h"

#include "common/HttpAnswers.h"

#include <vector>

namespace quorvex::services::storage
{

namespace
{

constexpr std::size_t CopySize = 256UL * 1024;

void Copy(const BlobStore::Incoming& bytes, BlockFiles::Block& block)
{
    const FileHandle source = bytes.Read();
    std::vector<char> buffer(CopySize);
    for (std::uint64_t position = 0; position < bytes.Size();)
    {
        const std::size_t count = source.ReadAt(position, buffer);
        if (count == 0)
        {
            break;
        }
        block.Append({buffer.data(), count});
        position += count;
    }
}

} // namespace

void TicketUploads::Require(std::int64_t account, const Block& block)
{
    depot_.RequireUpload(account, block.ticket, block.fileSize);
}

TicketUploads::State TicketUploads::Add(std::int64_t account, const Block& block, BlobStore::Incoming& bytes)
{
    if (bytes.Finish().md5 != block.md5)
    {
        throw HttpError(Status::Conflict, "the MD5 does not match");
    }
    if (!block.ticket.empty())
    {
        return AddTo(block.ticket, account, block, bytes);
    }
    const Depot::Upload upload = depot_.BeginUpload(account, block.name);
    try
    {
        return AddTo(upload.ticket, account, block, bytes);
    }
    catch (...)
    {
        // Nobody else knows of it, and this client will not either.
        depot_.Remove(account, upload.key);
        throw;
    }
}

TicketUploads::State TicketUploads::AddTo(const std::string& ticket, std::int64_t account, const Block& block,
                                          const BlobStore::Incoming& bytes)
{
    const auto writer = writers_.Get(ticket);
    const std::lock_guard lock(*writer);
    const std::string key =
        depot_.ExtendUpload(account, ticket, block.fileSize, {block.offset, block.offset + bytes.Size()});
    BlockFiles::Block destination = files_.OpenBlock(account, key, block.offset, bytes.Size());
    Copy(bytes, destination);
    destination.Confirm();
    return {{key, ticket}, block.isLast ? files_.Finish(account, key) : depot_.HeldFromStart(key)};
}

} // namespace quorvex::services::storage
