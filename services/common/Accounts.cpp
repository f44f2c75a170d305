#include "common/Accounts.h"

#include "common/Crypto.h"

namespace quorvex::services
{

namespace
{

constexpr std::size_t SaltSize = 16;

struct Credentials
{
    std::int64_t id = 0;
    std::string salt;
    std::string hash;
    int iterations = 0;
};

std::optional<Credentials> Load(Transaction& transaction, const std::string& name)
{
    auto query = transaction.Prepare("SELECT id, salt, password_hash, iterations FROM account WHERE name = ?");
    query.bind(1, name);
    if (!query.executeStep())
    {
        return std::nullopt;
    }
    return Credentials{query.getColumn(0).getInt64(), query.getColumn(1).getString(), query.getColumn(2).getString(),
                       query.getColumn(3).getInt()};
}

} // namespace

Accounts::Accounts(Database& database, int hashIterations) : database_(database), hashIterations_(hashIterations)
{
    database_.Migrate("accounts", {R"(
        CREATE TABLE account (
            id INTEGER PRIMARY KEY AUTOINCREMENT,
            name TEXT NOT NULL UNIQUE,
            salt BLOB NOT NULL,
            password_hash BLOB NOT NULL,
            iterations INTEGER NOT NULL
        ) STRICT;
    )"});
}

std::int64_t Accounts::Ensure(const std::string& name, const std::string& password)
{
    if (const auto id = Verify(name, password))
    {
        return *id;
    }
    const std::string salt = RandomBytes(SaltSize);
    const std::string hash = DerivePasswordHash(password, salt, hashIterations_);
    return database_.Transact([&](Transaction& transaction) {
        auto upsert = transaction.Prepare(R"(
                INSERT INTO account (name, salt, password_hash, iterations) VALUES (?1, ?2, ?3, ?4)
                ON CONFLICT (name) DO UPDATE SET salt = ?2, password_hash = ?3, iterations = ?4
                RETURNING id)");
        upsert.bind(1, name);
        BindBytes(upsert, 2, salt);
        BindBytes(upsert, 3, hash);
        upsert.bind(4, hashIterations_);
        upsert.executeStep();
        return upsert.getColumn(0).getInt64();
    });
}

std::optional<std::int64_t> Accounts::Find(const std::string& name)
{
    const auto account = database_.Transact([&](Transaction& transaction) { return Load(transaction, name); });
    return account ? std::optional(account->id) : std::nullopt;
}

std::optional<std::int64_t> Accounts::Verify(const std::string& name, const std::string& password)
{
    const auto found = database_.Transact([&](Transaction& transaction) { return Load(transaction, name); });
    const Credentials account = found.value_or(Credentials{0, std::string(SaltSize, '\0'), {}, hashIterations_});
    const std::string hash = DerivePasswordHash(password, account.salt, account.iterations);
    if (!EqualSecrets(hash, account.hash))
    {
        return std::nullopt;
    }
    return account.id;
}

} // namespace quorvex::services
