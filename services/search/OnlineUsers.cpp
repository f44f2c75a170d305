#include "search/OnlineUsers.h"

#include <utility>

namespace quorvex::services::search
{

namespace
{

constexpr const char* Schema = R"(
    CREATE TABLE search_presence (
        app BLOB NOT NULL,
        account_id INTEGER NOT NULL REFERENCES account (id),
        status INTEGER NOT NULL,
        seen_at INTEGER NOT NULL,
        PRIMARY KEY (app, account_id)
    ) STRICT, WITHOUT ROWID;
    CREATE INDEX search_presence_by_account ON search_presence (account_id);
    CREATE INDEX search_presence_by_report ON search_presence (seen_at);
)";

// Lists of accounts, which the indexes give at once, rather than a look at the values of each user who is online.
constexpr const char* HasText = R"(
    SELECT account_id FROM search_value WHERE name = ? AND value = ? AND app IN (?, x''))";
constexpr const char* HasTextOrNumber = R"(
    SELECT account_id FROM search_value WHERE name = ? AND value = ? AND app IN (?, x'')
    UNION ALL
    SELECT account_id FROM search_value WHERE name = ? AND app IN (?, x'') AND number >= ? AND number <= ?)";

// One statement about the users that are online in an application and meet the conditions.
class Query
{
public:
    Query(Transaction& transaction, const std::string& columns, const std::string& app, std::int64_t oldestReport,
          const std::vector<Condition>& conditions, const std::string& order = {})
        : statement_(transaction.Prepare((columns + Source(conditions) + order).c_str()))
    {
        Bind(app);
        Bind(oldestReport);
        for (const Condition& condition : conditions)
        {
            Bind(app, condition);
        }
    }

    void Bind(std::int64_t value) { statement_.bind(++bound_, value); }
    bool Step() { return statement_.executeStep(); }
    std::int64_t Value() { return statement_.getColumn(0).getInt64(); }

private:
    static std::string Source(const std::vector<Condition>& conditions)
    {
        std::string text = " FROM search_presence WHERE app = ? AND seen_at > ?";
        for (const Condition& condition : conditions)
        {
            text.append(" AND account_id IN (").append(condition.range ? HasTextOrNumber : HasText).append(")");
        }
        return text;
    }

    void Bind(const std::string& bytes) { BindBytes(statement_, ++bound_, bytes); }

    void Bind(const std::string& app, const Condition& condition)
    {
        Bind(condition.name);
        Bind(condition.value);
        Bind(app);
        if (condition.range)
        {
            Bind(condition.name);
            Bind(app);
            Bind(condition.range->low);
            Bind(condition.range->high);
        }
    }

    SQLite::Statement statement_;
    int bound_ = 0;
};

void ForgetSilent(Transaction& transaction, std::int64_t oldestReport)
{
    auto remove = transaction.Prepare("DELETE FROM search_presence WHERE seen_at <= ?");
    remove.bind(1, oldestReport);
    remove.exec();
}

void SetOffline(Transaction& transaction, std::int64_t account, const std::string& app)
{
    auto remove = transaction.Prepare("DELETE FROM search_presence WHERE app = ? AND account_id = ?");
    BindBytes(remove, 1, app);
    remove.bind(2, account);
    remove.exec();
}

void SetOnline(Transaction& transaction, std::int64_t account, const std::string& app, int status, std::int64_t now)
{
    auto upsert = transaction.Prepare(R"(
        INSERT INTO search_presence (app, account_id, status, seen_at) VALUES (?1, ?2, ?3, ?4)
        ON CONFLICT (app, account_id) DO UPDATE SET status = ?3, seen_at = ?4)");
    BindBytes(upsert, 1, app);
    upsert.bind(2, account);
    upsert.bind(3, status);
    upsert.bind(4, now);
    upsert.exec();
}

} // namespace

OnlineUsers::OnlineUsers(Database& database, Clock clock, std::int64_t lifetime)
    : database_(database), clock_(std::move(clock)), lifetime_(lifetime)
{
    database_.Migrate("search_presence", {Schema});
}

void OnlineUsers::Report(std::int64_t account, const std::string& app, int status)
{
    database_.Transact([&](Transaction& transaction) {
        ForgetSilent(transaction, OldestReport());
        if (status == Offline)
        {
            SetOffline(transaction, account, app);
        }
        else
        {
            SetOnline(transaction, account, app, status, clock_());
        }
    });
}

int OnlineUsers::EndPresence(std::optional<std::int64_t> account)
{
    return database_.Transact([&](Transaction& transaction) {
        if (!account)
        {
            return transaction.Prepare("DELETE FROM search_presence").exec();
        }
        auto remove = transaction.Prepare("DELETE FROM search_presence WHERE account_id = ?");
        remove.bind(1, *account);
        return remove.exec();
    });
}

std::vector<std::int64_t> OnlineUsers::Find(const std::string& app, const std::vector<Condition>& conditions,
                                            std::int64_t skip)
{
    return database_.Transact([&](Transaction& transaction) {
        Query query(transaction, "SELECT account_id", app, OldestReport(), conditions,
                    " ORDER BY account_id LIMIT ? OFFSET ?");
        query.Bind(std::int64_t{PageSize});
        query.Bind(skip);
        std::vector<std::int64_t> accounts;
        while (query.Step())
        {
            accounts.push_back(query.Value());
        }
        return accounts;
    });
}

std::int64_t OnlineUsers::Count(const std::string& app, const std::vector<Condition>& conditions)
{
    return database_.Transact([&](Transaction& transaction) {
        Query query(transaction, "SELECT COUNT(*)", app, OldestReport(), conditions);
        query.Step();
        return query.Value();
    });
}

} // namespace quorvex::services::search
