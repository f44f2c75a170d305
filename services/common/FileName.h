#pragma once

#include <string_view>

namespace quorvex::services
{

// Ends the request as a bad one unless a file or folder may bear this name: valid text of at most 255 bytes that is not
// a path and holds no control characters.
void RequireName(std::string_view name);

} // namespace quorvex::services
