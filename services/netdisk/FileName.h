#pragma once

#include <string>
#include <string_view>

namespace quorvex::services::netdisk
{

// Ends the request as a bad one unless a file or folder may bear this name: valid text of at most 255 bytes that is not
// a path and holds no control characters.
void RequireName(std::string_view name);

// The Content-Disposition value of a download in the form in which the clients cut it apart: the name stands between a
// quotation mark and the next semicolon, and the digest is the second parameter.
std::string ContentDisposition(std::string_view name, std::string_view md5);

} // namespace quorvex::services::netdisk
