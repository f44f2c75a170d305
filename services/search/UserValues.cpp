#include "search/UserValues.h"

#include "common/HttpAnswers.h"
#include "search/Condition.h"

namespace quorvex::services::search
{

namespace
{

constexpr std::int64_t MaxValuesPerUser = 1000;

// The profile's values stand under the empty application. A value that is a number is there as such too, for ranges.
constexpr const char* Schema = R"(
    CREATE TABLE search_value (
        account_id INTEGER NOT NULL REFERENCES account (id),
        app BLOB NOT NULL,
        name BLOB NOT NULL,
        value BLOB NOT NULL,
        number INTEGER,
        PRIMARY KEY (account_id, app, name)
    ) STRICT, WITHOUT ROWID;
    CREATE INDEX search_value_by_value ON search_value (name, value, app, account_id);
    CREATE INDEX search_value_by_number ON search_value (name, app, number, account_id) WHERE number IS NOT NULL;
)";

void Set(Transaction& transaction, std::int64_t account, const std::string& app, const Field& field)
{
    auto upsert = transaction.Prepare(R"(
        INSERT INTO search_value (account_id, app, name, value, number) VALUES (?1, ?2, ?3, ?4, ?5)
        ON CONFLICT (account_id, app, name) DO UPDATE SET value = ?4, number = ?5)");
    upsert.bind(1, account);
    BindBytes(upsert, 2, app);
    BindBytes(upsert, 3, field.name);
    BindBytes(upsert, 4, field.value);
    if (const auto number = ParseNumber(field.value))
    {
        upsert.bind(5, *number);
    }
    upsert.exec();
}

std::int64_t CountValues(Transaction& transaction, std::int64_t account)
{
    auto query = transaction.Prepare("SELECT COUNT(*) FROM search_value WHERE account_id = ?");
    query.bind(1, account);
    query.executeStep();
    return query.getColumn(0).getInt64();
}

} // namespace

UserValues::UserValues(Database& database) : database_(database)
{
    database_.Migrate("search_values", {Schema});
}

void UserValues::Update(std::int64_t account, const std::optional<std::string>& app, const std::vector<Field>& fields)
{
    database_.Transact([&](Transaction& transaction) {
        for (const Field& field : fields)
        {
            Set(transaction, account, app.value_or(""), field);
        }
        if (CountValues(transaction, account) > MaxValuesPerUser)
        {
            throw HttpError(Status::PayloadTooLarge, "the user has too many values");
        }
    });
}

} // namespace quorvex::services::search
