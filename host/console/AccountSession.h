#pragma once

#include "Options.h"
#include "Services.h"

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

/// Where a service is when nobody says: on the server of another one. The account system is where the network disk is.
std::string Beside(const std::string& server, const Service& service);

} // namespace quorvex::console
