#pragma once

#include "Command.h"

namespace quorvex::console
{

/// The commands of "quorvex search".
/// @throws Failure
/// @{
Report SearchLoginCommand(const Options& options);
Report SearchStatusCommand(const Options& options);
Report SearchUpdateCommand(const Options& options);
Report SearchFindCommand(const Options& options);
Report SearchCountCommand(const Options& options);
/// @}

} // namespace quorvex::console
