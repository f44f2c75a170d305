#pragma once

#include "common/BlockFiles.h"
#include "netdisk/NetDiskStore.h"

#include <string>

namespace quorvex::services::netdisk
{

// Files that arrive in blocks: announced with name, size and MD5, sent in any order, and finished once they are whole.
class LargeFiles : public BlockFiles
{
public:
    struct State
    {
        std::string key;
        std::uint64_t heldFromStart = 0;
        bool isComplete = false;
    };

    LargeFiles(Database& database, BlobStore& blobs, PartialFiles& partials, NetDiskStore& store);

    // Complete at once when content with this MD5 and size is held. The same announcement again, before the file is
    // finished, gives the same key: an interrupted upload goes on.
    State Create(std::int64_t account, const std::string& name, const BlobContent& content);

private:
    Database& database_;
    BlobStore& blobs_;
    PartialFiles& partials_;
    NetDiskStore& store_;
};

} // namespace quorvex::services::netdisk
