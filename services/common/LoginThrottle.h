#pragma once

#include "common/Clock.h"

#include <map>
#include <mutex>
#include <string>

namespace quorvex::services
{

// Stops guessing at an account's password: after a number of wrong ones in a row the account has to wait.
class LoginThrottle
{
public:
    explicit LoginThrottle(Clock clock);

    bool IsBlocked(const std::string& account);
    void OnFailure(const std::string& account);
    void OnSuccess(const std::string& account);

private:
    struct Failures
    {
        int count = 0;
        std::int64_t last = 0;
    };

    void ForgetOld();

    Clock clock_;
    std::mutex mutex_;
    std::map<std::string, Failures> failures_;
};

} // namespace quorvex::services
