#pragma once

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>

namespace quorvex::services
{

// One transaction in the database, the only one at its time.
class Transaction
{
public:
    explicit Transaction(SQLite::Database& connection) : connection_(connection), transaction_(connection) {}

    SQLite::Statement Prepare(const char* sql) { return {connection_, sql}; }

    // For what may only happen once the rows are safe, such as removing a file that no row names any more.
    void AfterCommit(std::function<void()> action) { afterCommit_.push_back(std::move(action)); }

    std::int64_t LastRowId() const { return connection_.getLastInsertRowid(); }

    void Commit();

private:
    SQLite::Database& connection_;
    SQLite::Transaction transaction_;
    std::vector<std::function<void()>> afterCommit_;
};

// The state of all services: one connection, which one transaction at a time uses. A commit is on the disk when it
// returns.
class Database
{
public:
    explicit Database(const std::filesystem::path& file);

    // Brings the tables of one component up to date: runs the steps that were not run on this database before.
    // Steps are only ever added at the end.
    void Migrate(const std::string& component, std::initializer_list<const char*> steps);

    template <class Work>
    auto Transact(Work&& work)
    {
        const std::lock_guard lock(mutex_);
        Transaction transaction(connection_);
        if constexpr (std::is_void_v<std::invoke_result_t<Work, Transaction&>>)
        {
            work(transaction);
            transaction.Commit();
        }
        else
        {
            auto result = work(transaction);
            transaction.Commit();
            return result;
        }
    }

private:
    SQLite::Database connection_;
    std::mutex mutex_;
};

void BindBytes(SQLite::Statement& statement, int index, const std::string& bytes);

// Nothing stands for NULL.
void BindOptional(SQLite::Statement& statement, int index, const std::optional<std::string>& value);
std::optional<std::string> OptionalColumn(SQLite::Statement& statement, const char* column);

} // namespace quorvex::services
