#pragma once

#include "common/Database.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvex::services
{

// The people who can log in to any of the services.
class Accounts
{
public:
    // More iterations make each guess at a stolen password hash dearer, and each login.
    explicit Accounts(Database& database, int hashIterations = 120'000);

    // Creates the account, or gives an existing one this password. Returns the account's id.
    std::int64_t Ensure(const std::string& name, const std::string& password);

    std::optional<std::int64_t> Find(const std::string& name);

    // Nothing when the account is unknown or the password wrong; both take the same time.
    std::optional<std::int64_t> Verify(const std::string& name, const std::string& password);

private:
    Database& database_;
    int hashIterations_;
};

} // namespace quorvex::services
