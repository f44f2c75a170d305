#pragma once

#include "common/BlobStore.h"
#include "common/PartialFiles.h"
#include "common/SharedByKey.h"
#include "common/SteadyWriter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>

namespace quorvex::services
{

// A service's rows for files that arrive in blocks.
class BlockFileRows
{
public:
    struct File
    {
        BlobContent content; // as it was announced; without an MD5 where that is known only from the whole file
        bool isComplete = false;
    };

    virtual ~BlockFileRows() = default;

    // Ends the request when the account has no such file.
    virtual File RequireFile(Transaction& transaction, std::int64_t account, const std::string& key) = 0;

    virtual void Complete(Transaction& transaction, const std::string& key, std::int64_t blob) = 0;
};

// Takes the blocks of announced files, in any order, and makes a file of them once they are all there.
class BlockFiles
{
public:
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
        friend class BlockFiles;

        Block(BlockFiles& owner, std::int64_t account, std::string key, PartialFiles::Range range);

        std::shared_lock<std::shared_mutex> LockUnfinished() const;

        BlockFiles& owner_;
        std::int64_t account_;
        std::string key_;
        PartialFiles::Range range_;
        std::shared_ptr<Access> access_;
        std::optional<SteadyWriter> writer_;
    };

    BlockFiles(Database& database, BlobStore& blobs, PartialFiles& partials, BlockFileRows& rows);

    Block OpenBlock(std::int64_t account, const std::string& key, std::uint64_t position, std::uint64_t size);

    // Returns the file's size. A file that was finished before stays as it is.
    std::uint64_t Finish(std::int64_t account, const std::string& key);

private:
    BlockFileRows::File RequireWhole(std::int64_t account, const std::string& key);
    BlobContent RequireContent(const std::string& key, const BlobContent& announced);
    void Adopt(std::int64_t account, const std::string& key, const BlobContent& content);

    Database& database_;
    BlobStore& blobs_;
    PartialFiles& partials_;
    BlockFileRows& rows_;
    SharedByKey<Access> accesses_;
};

} // namespace quorvex::services
