#pragma once

#include "Options.h"

#include <optional>
#include <string>

namespace quorvex::console
{

/// A session that the account system has opened. Services that know sessions only log in with it.
struct AccountSession
{
    std::string text;
    std::optional<unsigned> uid; ///< the account's number, when the account system has told it
};

/// The session that the options give, or one that the account system opens for the user or the ticket they name.
/// @throws Failure
AccountSession OpenAccountSession(const Options& options);

std::string WithoutSlashAtTheEnd(std::string address);

/// Where the account system is when nobody says: beside the service, as a network disk's logins.
std::string AccountsBeside(const std::string& server);

} // namespace quorvex::console
