#pragma once

#include "Failure.h"
#include "Options.h"

#include <quorvex/NetDisk.h>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>

namespace quorvex::console
{

/// How the options log in: "session", "password", "ticket", or an empty text when they do not.
std::string LoginMethod(const Options& options);

/// Connects to the server and logs in.
/// @throws Failure
std::unique_ptr<netdisk::CNetDisk> LogIn(const Options& options);

/// Ends a command whose login was refused.
/// @param lastError what the client has to say of it, which may be nothing
/// @throws Failure
void CheckLogin(Outcome outcome, const std::string& server, const wchar_t* lastError);

/// Bytes that the texts of a JSON request can have: the module builds most of them in 256 bytes, of which keys, quotes
/// and braces take at most 32, and the change of a folder in 512, of which they take 40.
inline constexpr std::size_t kRequestRoom = 255 - 32;
inline constexpr std::size_t kFolderChangeRoom = 511 - 40;

/// The module cuts off what does not fit into a request; so nothing longer is sent.
/// @throws Failure
void CheckThatRequestHolds(std::initializer_list<std::wstring> escapedTexts, std::size_t room = kRequestRoom);

} // namespace quorvex::console
