#include "common/Database.h"

namespace quorvex::services
{

void Transaction::Commit()
{
    transaction_.commit();
    for (const auto& action : afterCommit_)
    {
        action();
    }
}

Database::Database(const std::filesystem::path& file)
    : connection_(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
{
    connection_.exec("PRAGMA journal_mode = WAL");
    connection_.exec("PRAGMA synchronous = FULL");
    connection_.exec("PRAGMA foreign_keys = ON");
    connection_.exec(
        "CREATE TABLE IF NOT EXISTS schema_step (component TEXT PRIMARY KEY, applied INTEGER NOT NULL) STRICT");
}

void Database::Migrate(const std::string& component, std::initializer_list<const char*> steps)
{
    Transact([&](Transaction& transaction) {
        auto applied = transaction.Prepare("SELECT applied FROM schema_step WHERE component = ?");
        applied.bind(1, component);
        int next = 0;
        const int done = applied.executeStep() ? applied.getColumn(0).getInt() : 0;
        for (const char* step : steps)
        {
            if (next++ >= done)
            {
                connection_.exec(step);
            }
        }
        auto record = transaction.Prepare("INSERT INTO schema_step (component, applied) VALUES (?1, ?2) "
                                          "ON CONFLICT (component) DO UPDATE SET applied = MAX(applied, ?2)");
        record.bind(1, component);
        record.bind(2, next);
        record.exec();
    });
}

void BindBytes(SQLite::Statement& statement, int index, const std::string& bytes)
{
    statement.bind(index, bytes.data(), static_cast<int>(bytes.size()));
}

void BindOptional(SQLite::Statement& statement, int index, const std::optional<std::string>& value)
{
    if (value)
    {
        statement.bind(index, *value);
    }
    else
    {
        statement.bind(index);
    }
}

std::optional<std::string> OptionalColumn(SQLite::Statement& statement, const char* column)
{
    const SQLite::Column value = statement.getColumn(column);
    return value.isNull() ? std::nullopt : std::optional(value.getString());
}

} // namespace quorvex::services
