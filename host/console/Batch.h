#pragma once

#include "Options.h"
#include "Output.h"

#include <functional>
#include <string>
#include <vector>

namespace quorvex::console
{

/// Does the same with each of several things, also when it fails with some of them; an interruption ends it. The
/// report has one object for each thing in the list, in which "given" is the thing and "ok" whether it was done. Of a
/// single thing, the values stand in the report itself as well, and its failure is thrown.
/// @param list the member that the list becomes
/// @throws Failure
Report ForEach(const std::string& list, const std::vector<std::string>& things, const Options& options,
               const std::function<Report(const std::string& thing)>& act);

} // namespace quorvex::console
