#pragma once

#include "Options.h"
#include "Output.h"

namespace quorvex::console
{

/// One command: does its work and tells what came of it.
/// @throws Failure
using Command = Report (*)(const Options& options);

} // namespace quorvex::console
