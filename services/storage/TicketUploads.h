#pragma once

#include "common/BlobStore.h"
#include "common/BlockFiles.h"
#include "common/SharedByKey.h"
#include "storage/Depot.h"

#include <cstdint>
#include <mutex>
#include <string>

namespace quorvex::services::storage
{

// Depot files whose first block is their announcement. Each block brings its own MD5, and is written to the file only
// once that has been compared: the whole file's is not known before its end.
class TicketUploads
{
public:
    struct Block
    {
        std::string ticket; // empty for the first block
        std::string name;
        std::uint64_t offset = 0;
        std::uint64_t fileSize = 0; // at least where the block ends
        std::string md5;
        bool isLast = false; // to be sent; it may lie anywhere in the file
    };

    struct State
    {
        Depot::Upload upload;
        std::uint64_t heldFromStart = 0;
    };

    TicketUploads(Depot& depot, BlockFiles& files) : depot_(depot), files_(files) {}

    // Ends a request that will be refused, before its bytes have come.
    void Require(std::int64_t account, const Block& block);

    // A first block that is refused leaves nothing.
    State Add(std::int64_t account, const Block& block, BlobStore::Incoming& bytes);

private:
    State AddTo(const std::string& ticket, std::int64_t account, const Block& block, const BlobStore::Incoming& bytes);

    Depot& depot_;
    BlockFiles& files_;
    // Two blocks that lie upon each other must not mix.
    SharedByKey<std::mutex> writers_;
};

} // namespace quorvex::services::storage
