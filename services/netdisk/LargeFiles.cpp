#include "netdisk/LargeFiles.h"

#include <optional>
#include <utility>

namespace quorvex::services::netdisk
{

namespace
{

std::optional<std::string> FindUnfinished(Transaction& transaction, std::int64_t account, const std::string& name,
                                          const BlobContent& content)
{
    auto query = transaction.Prepare(R"(
        SELECT fkey FROM netdisk_file
        WHERE account_id = ? AND blob_id IS NULL AND name = ? AND md5 = ? AND size = ?)");
    query.bind(1, account);
    query.bind(2, name);
    query.bind(3, content.md5);
    query.bind(4, static_cast<std::int64_t>(content.size));
    return query.executeStep() ? std::optional(query.getColumn(0).getString()) : std::nullopt;
}

} // namespace

LargeFiles::LargeFiles(Database& database, BlobStore& blobs, PartialFiles& partials, NetDiskStore& store)
    : BlockFiles(database, blobs, partials, store),
      database_(database),
      blobs_(blobs),
      partials_(partials),
      store_(store)
{
}

LargeFiles::State LargeFiles::Create(std::int64_t account, const std::string& name, const BlobContent& content)
{
    return database_.Transact([&](Transaction& transaction) -> State {
        if (const auto key = FindUnfinished(transaction, account, name, content))
        {
            return {*key, partials_.HeldFromStart(transaction, *key), false};
        }
        if (const auto blob = blobs_.ReferenceExisting(transaction, content))
        {
            return {store_.Insert(transaction, account, name, content, blob), content.size, true};
        }
        std::string key = store_.Insert(transaction, account, name, content, std::nullopt);
        partials_.Create(transaction, key);
        return {std::move(key), 0, false};
    });
}

} // namespace quorvex::services::netdisk
