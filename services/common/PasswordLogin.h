#pragma once

#include "common/Accounts.h"
#include "common/LoginThrottle.h"

#include <cstdint>
#include <string>
#include <utility>

namespace quorvex::services
{

// Logs in with account name and password, for all services together: guesses count wherever they are made.
class PasswordLogin
{
public:
    PasswordLogin(Accounts& accounts, Clock clock) : accounts_(accounts), throttle_(std::move(clock)) {}

    // The account. Ends the request when the password is wrong or the account has to wait. A failed login is not
    // "forbidden": clients take that for an expired session and log in again.
    std::int64_t RequireAccount(const std::string& name, const std::string& password);

private:
    Accounts& accounts_;
    LoginThrottle throttle_;
};

} // namespace quorvex::services
