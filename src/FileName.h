#pragma once

#include <string_view>

namespace quorvex
{

/// Whether a name that a server gave names a file of the folder that it is put into: not a path, and no device, which
/// every folder seems to hold.
bool StaysInFolder(std::wstring_view name);

} // namespace quorvex
