#pragma once

#include <string>
#include <string_view>

namespace support
{

std::string toUtf8(std::wstring_view text);
std::wstring toWide(std::string_view utf8);

/// Bytes as a case file would write them: control characters, backslashes and what is not ASCII are escaped.
std::string escaped(std::string_view bytes);

} // namespace support
