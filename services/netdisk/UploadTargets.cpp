#include "netdisk/UploadTargets.h"

#include "common/HttpAnswers.h"

#include <utility>

namespace quorvex::services::netdisk
{

WholeUpload::WholeUpload(NetDiskStore& store, BlobStore& blobs, std::int64_t account, std::string name)
    : store_(store),
      blobs_(blobs),
      account_(account),
      name_(std::move(name)),
      capacity_(store.GetCapacity(account)),
      incoming_(blobs.TemporaryFolder())
{
}

void WholeUpload::Append(std::string_view bytes)
{
    // The size is known only at the end; what cannot fit is not written to the disk until then.
    capacity_.RequireRoom(incoming_.Size() + bytes.size());
    incoming_.Append(bytes);
}

UploadAnswer WholeUpload::Finish()
{
    BlobStore::Staged staged = blobs_.Stage(incoming_);
    return {store_.Add(account_, name_, staged), staged.Content().size, true};
}

Announcement::Announcement(LargeFiles& files, std::int64_t account, std::string name, BlobContent content)
    : files_(files), account_(account), name_(std::move(name)), content_(std::move(content))
{
}

void Announcement::Append(std::string_view)
{
    throw HttpError(Status::BadRequest, "a large file is announced without content");
}

UploadAnswer Announcement::Finish()
{
    LargeFiles::State state = files_.Create(account_, name_, content_);
    return {std::move(state.key), state.heldFromStart, state.isComplete};
}

BlockUpload::BlockUpload(LargeFiles& files, std::int64_t account, std::string key, std::uint64_t position,
                         std::uint64_t size)
    : key_(std::move(key)), size_(size), block_(files.OpenBlock(account, key_, position, size))
{
}

void BlockUpload::Append(std::string_view bytes)
{
    block_.Append(bytes);
}

UploadAnswer BlockUpload::Finish()
{
    block_.Confirm();
    return {key_, size_, std::nullopt};
}

} // namespace quorvex::services::netdisk
