#pragma once

#include "CommandLine.h"

#include <string>
#include <vector>

namespace quorvex::console
{

/// A script that completes the grammar's commands, options, choices and file names in bash.
std::string BashCompletion(const std::vector<CommandInfo>& commands);

} // namespace quorvex::console
