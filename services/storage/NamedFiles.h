#pragma once

#include "common/BlobStore.h"
#include "common/Database.h"
#include "common/DownloadAnswer.h"
#include "storage/Space.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::services::storage
{

// Pictures and emoticons: whole files under the names that their uploaders gave them.
class NamedFiles
{
public:
    // Where a name means one file: the pictures of all, or the emoticons of one account.
    class Shelf
    {
    public:
        static Shelf Pictures() { return Shelf(0); }
        static Shelf EmoticonsOf(std::int64_t account) { return Shelf(account); }

        std::int64_t Number() const { return number_; }

    private:
        explicit Shelf(std::int64_t number) : number_(number) {}

        std::int64_t number_;
    };

    enum class PutResult
    {
        Stored,
        HeldAlready, // with these very bytes
    };

    struct Entry
    {
        std::string key;
        std::uint64_t size = 0;
    };

    NamedFiles(Database& database, BlobStore& blobs, Space& space);

    // A file with other bytes takes the place of the account's own one; another account's ends the request.
    PutResult Put(Shelf shelf, std::int64_t account, const std::string& key, BlobStore::Staged& staged);

    // An unknown key ends the request, and so does one whose file another account than this one uploaded.
    Download Open(Shelf shelf, const std::string& key, std::optional<std::int64_t> uploader = {});
    void Remove(Shelf shelf, const std::string& key);

    // By key.
    std::vector<Entry> List(Shelf shelf);

private:
    struct Row;

    std::optional<Row> Find(Transaction& transaction, Shelf shelf, const std::string& key) const;
    Row Require(Transaction& transaction, Shelf shelf, const std::string& key) const;
    void Erase(Transaction& transaction, Shelf shelf, const std::string& key, const Row& row);

    Database& database_;
    BlobStore& blobs_;
    Space& space_;
};

} // namespace quorvex::services::storage
