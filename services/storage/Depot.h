#pragma once

#include "common/BlobStore.h"
#include "common/BlockFiles.h"
#include "common/Clock.h"
#include "common/Database.h"
#include "common/DownloadAnswer.h"
#include "common/PartialFiles.h"
#include "storage/Space.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::services::storage
{

// Large files that are kept for a limited time. It runs from the file's creation, and anew from its finish and from
// each renewal.
class Depot : public BlockFileRows
{
public:
    struct Announcement
    {
        std::string name;
        BlobContent content;
        std::string sha1; // as the client sent it; nothing depends on it
    };

    struct State
    {
        std::string key;
        std::uint64_t heldFromStart = 0;
    };

    // A file that is announced by its first block alone: its size is as far as its blocks reach, and its MD5 shows at
    // the end. Its further blocks come with the ticket.
    struct Upload
    {
        std::string key;
        std::string ticket;
    };

    struct Entry
    {
        std::string key;
        Announcement file;
        std::int64_t createtime = 0;
        std::int64_t secondsLeft = 0;
        bool isComplete = false;
    };

    Depot(Database& database, BlobStore& blobs, PartialFiles& partials, Space& space, Clock clock,
          std::int64_t keepingTime);

    // Removes the files whose time is over.
    void Sweep();

    // The same announcement again, before the file is finished, gives the same key: an interrupted upload goes on.
    State Create(std::int64_t account, const Announcement& file);

    Upload BeginUpload(std::int64_t account, const std::string& name);

    // Ends the request unless the upload goes on and the file may have this size. An empty ticket is one to be given.
    void RequireUpload(std::int64_t account, const std::string& ticket, std::uint64_t size);

    // The same, for a block whose bytes are about to be written; returns the file's key.
    std::string ExtendUpload(std::int64_t account, const std::string& ticket, std::uint64_t size,
                             PartialFiles::Range block);

    std::uint64_t HeldFromStart(const std::string& key);

    // Unknown keys end the request, and so do other accounts' for what only the owner may do. No owner stands for
    // whoever it is.
    Download Open(std::optional<std::int64_t> owner, const std::string& key);
    void Renew(std::int64_t account, const std::string& key);
    void Remove(std::int64_t account, const std::string& key);

    // The oldest first.
    std::vector<Entry> List(std::int64_t account);

    // Ends a file's time now, whoever's it is.
    void Expire(const std::string& key);

    File RequireFile(Transaction& transaction, std::int64_t account, const std::string& key) override;
    void Complete(Transaction& transaction, const std::string& key, std::int64_t blob) override;

private:
    struct Row;

    static Row ReadRow(SQLite::Statement& query);
    static Row Require(Transaction& transaction, std::optional<std::int64_t> account, const std::string& key);
    std::optional<Row> FindUpload(Transaction& transaction, std::int64_t account, const std::string& ticket,
                                  std::uint64_t size) const;
    static std::optional<std::string> FindUnfinished(Transaction& transaction, std::int64_t account,
                                                     const Announcement& file);
    std::string Insert(Transaction& transaction, std::int64_t account, const Announcement& file,
                       const std::optional<std::string>& ticket = {});
    void KeepFromNow(Transaction& transaction, const std::string& key) const;
    void Erase(Transaction& transaction, const Row& row);

    Database& database_;
    BlobStore& blobs_;
    PartialFiles& partials_;
    Space& space_;
    Clock clock_;
    std::int64_t keepingTime_;
};

} // namespace quorvex::services::storage
