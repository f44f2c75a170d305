#pragma once

#include "Command.h"

#include <quorvex/OnlineUserSearch.h>

#include <memory>

namespace quorvex::console
{

/// Connects to the server and logs in.
/// @throws Failure
std::unique_ptr<COnlineUserSearch> LogInToSearch(const Options& options);

/// The commands of "quorvex search".
/// @throws Failure
/// @{
Report SearchLoginCommand(const Options& options);
Report SearchLogoutCommand(const Options& options);
Report SearchStatusCommand(const Options& options);
Report SearchUpdateCommand(const Options& options);
Report SearchProfileCommand(const Options& options);
Report SearchFindCommand(const Options& options);
Report SearchCountCommand(const Options& options);
/// @}

} // namespace quorvex::console
