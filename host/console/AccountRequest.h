#pragma once

#include <string>

#include <json/value.h>

namespace quorvex::console
{

/// Posts a login to the account system. It is asked here because the module keeps the session that it gets to itself.
/// @param url  scheme, host, optional port and path
/// @param body the login
/// @return the object that the account system answers with
/// @throws Failure; with the HTTP status as its result when the login is refused
Json::Value PostLogin(const std::string& url, const Json::Value& body);

} // namespace quorvex::console
