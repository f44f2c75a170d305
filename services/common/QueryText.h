#pragma once

#include <string>
#include <string_view>

#include <httplib.h>

namespace quorvex::services
{

// Values of the query as clients write them: by hand, and escaped at most by their HTTP library, which leaves `&` and
// `+` alone. A missing value is empty.

// The value up to the next parameter.
std::string QueryValue(const httplib::Request& request, std::string_view name);

// The value up to the query's end, for a last parameter that may hold anything.
std::string LastQueryValue(const httplib::Request& request, std::string_view name);

// Resolves percent escapes; a percent sign that begins none stands for itself.
std::string Unescape(std::string_view text);

} // namespace quorvex::services
