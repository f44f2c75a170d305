#pragma once

#include "Command.h"

namespace quorvex::console
{

/// The commands that stand in no group.
/// @throws Failure
/// @{
Report Md5Command(const Options& options);
Report CompletionCommand(const Options& options);
Report DoctorCommand(const Options& options);
/// @}

} // namespace quorvex::console
