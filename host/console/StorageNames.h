#pragma once

#include <string>

namespace quorvex::console
{

/// Names are the keys of pictures, photos and emoticons: they are sent in the system's OEM code page and asked for in
/// UTF-8.

/// @return what is wrong with a name; empty when it can be a key
std::string ComplaintAboutName(const std::string& name);

/// The name that the server gets for one: with '?' or the like for what the OEM code page cannot express.
std::wstring NameAsSent(const std::wstring& name);

/// Ends a command whose file would silently have another key than this name.
/// @param advice what to do then
/// @throws Failure
void CheckThatNameIsSent(const std::wstring& name, const std::string& advice);

/// Why the server's name for a picture, which it has taken, is not the picture's own.
std::string WhyNamedOtherwise(const std::wstring& name);

} // namespace quorvex::console
