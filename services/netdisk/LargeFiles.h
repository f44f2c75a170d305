#pragma once

#include "common/SharedByKey.h"
#include "common/SteadyWriter.h"
#include "netdisk/NetDiskStore.h"

#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>

namespace quorvex::services::netdisk
{

// Files that arrive in blocks: announced with name, size and MD5, sent in any order, and finished once they are whole.
class LargeFiles
{
public:
    struct State
    {
        std::string key;
        std::uint64_t heldFromStart = 0;
        bool isComplete = false;
    };

    // What all who write to one unfinished file share. A block may hang in a connection that broke down long ago, so
    // that nobody waits for whole blocks: each write has the lock on its own, and none comes after the finish, when
    // the bytes are those of a finished file.
    struct Access
    {
        std::shared_mutex mutex;
        bool isFinished = false;
    };

    // One block on its way; nothing of it counts before Confirm.
    class Block
    {
    public:
        void Append(std::string_view bytes);
        void Confirm();

    private:
        friend class LargeFiles;

        Block(LargeFiles& owner, std::int64_t account, std::string key, PartialFiles::Range range);

        std::shared_lock<std::shared_mutex> LockUnfinished() const;

        LargeFiles& owner_;
        std::int64_t account_;
        std::string key_;
        PartialFiles::Range range_;
        std::shared_ptr<Access> access_;
        std::optional<SteadyWriter> writer_;
    };

    LargeFiles(Database& database, BlobStore& blobs, PartialFiles& partials, NetDiskStore& store);

    // Complete at once when content with this MD5 and size is held. The same announcement again, before the file is
    // finished, gives the same key: an interrupted upload goes on.
    State Create(std::int64_t account, const std::string& name, const BlobContent& content);

    Block OpenBlock(std::int64_t account, const std::string& key, std::uint64_t position, std::uint64_t size);

    // Returns the file's size. A file that was finished before stays as it is.
    std::uint64_t Finish(std::int64_t account, const std::string& key);

private:
    FileRow RequireWhole(std::int64_t account, const std::string& key);
    void RequireDigest(const FileRow& file);
    void Adopt(std::int64_t account, const FileRow& file);

    Database& database_;
    BlobStore& blobs_;
    PartialFiles& partials_;
    NetDiskStore& store_;
    SharedByKey<Access> accesses_;
};

} // namespace quorvex::services::netdisk
