#include "storage/Space.h"

#include "storage/Schema.h"

namespace quorvex::services::storage
{

Space::Space(Database& database, const Limits& limits) : database_(database), limits_(limits)
{
    MigrateTables(database_);
}

Capacity Space::Of(std::int64_t account)
{
    return database_.Transact([&](Transaction& transaction) { return Of(transaction, account); });
}

Capacity Space::Of(Transaction& transaction, std::int64_t account) const
{
    auto query = transaction.Prepare(R"(
        SELECT (SELECT COALESCE(SUM(size), 0) FROM storage_named_file WHERE account_id = ?1) +
               (SELECT COALESCE(SUM(size), 0) FROM storage_depot_file WHERE account_id = ?1))");
    query.bind(1, account);
    query.executeStep();
    return {limits_.quota, static_cast<std::uint64_t>(query.getColumn(0).getInt64()), limits_.maxFileSize};
}

} // namespace quorvex::services::storage
