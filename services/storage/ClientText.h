#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvex::services::storage
{

// The most characters that clients have room for in a key, and in a listed name.
inline constexpr std::size_t MaxKeyLength = 64;

// A name as UTF-8, however it came. Clients write names into forms in the OEM code page of their system, and into the
// query in UTF-8: bytes that are not UTF-8 are taken for code page 437, that of an English system. The signs that this
// code page has in the place of control characters are such signs here too.
std::string TextFromClient(std::string_view bytes);

// Ends the request as a bad one unless a file can have this key, which is the name that its uploader gave it.
void RequireKey(std::string_view key);

// A name as listings show it, cut to 64 bytes at a character's end. Clients read listings in a code page in which each
// byte may be a character, into records with room for 64.
std::string ListedName(std::string_view name);

} // namespace quorvex::services::storage
