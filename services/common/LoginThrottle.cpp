#include "common/LoginThrottle.h"

#include <utility>

namespace quorvex::services
{

namespace
{

constexpr int MaxFailures = 10;
constexpr std::int64_t WaitSeconds = 60;

} // namespace

LoginThrottle::LoginThrottle(Clock clock) : clock_(std::move(clock))
{
}

bool LoginThrottle::IsBlocked(const std::string& account)
{
    const std::lock_guard lock(mutex_);
    ForgetOld();
    const auto found = failures_.find(account);
    return found != failures_.end() && found->second.count >= MaxFailures;
}

void LoginThrottle::OnFailure(const std::string& account)
{
    const std::lock_guard lock(mutex_);
    Failures& failures = failures_[account];
    ++failures.count;
    failures.last = clock_();
}

void LoginThrottle::OnSuccess(const std::string& account)
{
    const std::lock_guard lock(mutex_);
    failures_.erase(account);
}

void LoginThrottle::ForgetOld()
{
    const std::int64_t now = clock_();
    std::erase_if(failures_, [now](const auto& entry) { return entry.second.last + WaitSeconds <= now; });
}

} // namespace quorvex::services
