#pragma once

#include "Options.h"

#include <quorvex/NetDisk.h>

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

/// The module builds its JSON requests in 256 bytes and cuts off what does not fit; so nothing longer is sent.
/// @throws Failure
void CheckThatRequestHolds(std::initializer_list<std::wstring> escapedTexts);

} // namespace quorvex::console
