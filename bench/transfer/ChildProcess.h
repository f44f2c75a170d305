#pragma once

#include <string>

namespace quorvex::bench
{

/// Runs this program once more and waits for its end; throws when its exit status is not 0.
/// @param arguments the command line behind the program's name
/// @return what it wrote to its standard output
std::string RunSelf(const std::wstring& arguments);

} // namespace quorvex::bench
