#pragma once

#include <string>

namespace quorvex::services
{

// A digest that a client announces, in lower case. Ends the request as a bad one unless it is hexadecimal and has the
// right length.
std::string RequireMd5(std::string text);
std::string RequireSha1(std::string text);

} // namespace quorvex::services
