#pragma once

#include "common/Database.h"
#include "common/FileHandle.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace quorvex::services
{

// Files that arrive in blocks, in any order and over any number of connections, each under its key. A block counts once
// it is confirmed, and its bytes are on the disk before that.
class PartialFiles
{
public:
    // The bytes from `first` up to but not including `past`.
    struct Range
    {
        std::uint64_t first = 0;
        std::uint64_t past = 0;

        bool operator==(const Range&) const = default;
    };

    PartialFiles(Database& database, const std::filesystem::path& root);

    // Removes files without a row; a row whose file was lost starts again with nothing confirmed.
    void Recover();

    void Create(Transaction& transaction, const std::string& key);
    FileHandle Open(const std::string& key) const;
    std::filesystem::path PathOf(const std::string& key) const { return folder_ / key; }

    void Confirm(Transaction& transaction, const std::string& key, Range block);

    // The block's bytes are about to be written anew, and count for nothing until then.
    void Forget(Transaction& transaction, const std::string& key, Range block);

    std::optional<Range> FirstMissing(Transaction& transaction, const std::string& key, std::uint64_t totalSize);
    std::uint64_t HeldFromStart(Transaction& transaction, const std::string& key);

    // Forgets what was confirmed, so that all blocks are sent again.
    void Reset(Transaction& transaction, const std::string& key);
    void Discard(Transaction& transaction, const std::string& key);

private:
    Database& database_;
    std::filesystem::path folder_;
};

} // namespace quorvex::services
