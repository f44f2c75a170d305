#pragma once

#include "Options.h"
#include "Output.h"

namespace quorvex::console
{

/// One command of "quorvex netdisk": does its work and tells what came of it.
/// @throws Failure
using Command = Report (*)(const Options& options);

Report LoginCommand(const Options& options);
Report PutCommand(const Options& options);
Report GetCommand(const Options& options);
Report InfoCommand(const Options& options);
Report MoveCommand(const Options& options);
Report RemoveCommand(const Options& options);
Report QuotaCommand(const Options& options);
Report ChecksumCommand(const Options& options);

} // namespace quorvex::console
