#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::console
{

/// UTF-16 to UTF-8; a lone surrogate becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);

/// UTF-8 to UTF-16; nothing when the bytes are not valid UTF-8.
std::optional<std::wstring> ToWide(std::string_view text);

/// UTF-8 to UTF-16 for what the command line and the system have given, which is valid already.
std::wstring Wide(std::string_view text);

/// A message of the system's, which may be in its 8-bit encoding.
std::string FromSystem(std::string_view text);

/// The module puts texts into JSON bodies as they are, so whatever JSON keeps for itself is escaped here.
std::wstring JsonEscaped(std::string_view text);

/// The same for addresses, where the module puts the values of a query as they are. The system's HTTP library escapes
/// what is not ASCII, so that an address stays within the module's limit.
std::wstring QueryEscaped(std::string_view text);

/// A text for a terminal, which a server's text shall not steer: control characters become U+FFFD.
std::string Printable(std::string_view text);

/// How many columns a text takes on a terminal, near enough: most characters of three bytes and more take two.
std::size_t WidthOf(std::string_view text);

} // namespace quorvex::console
