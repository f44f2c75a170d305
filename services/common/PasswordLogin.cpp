#include "common/PasswordLogin.h"

#include "common/HttpAnswers.h"

namespace quorvex::services
{

std::int64_t PasswordLogin::RequireAccount(const std::string& name, const std::string& password)
{
    if (throttle_.IsBlocked(name))
    {
        throw HttpError(Status::TooManyRequests, "too many failed logins, wait a minute");
    }
    const auto account = accounts_.Verify(name, password);
    if (!account)
    {
        throttle_.OnFailure(name);
        throw HttpError(Status::Unauthorized, "account or password is not correct");
    }
    throttle_.OnSuccess(name);
    return *account;
}

} // namespace quorvex::services
