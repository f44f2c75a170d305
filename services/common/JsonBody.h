#pragma once

#include <string>

#include <httplib.h>
#include <json/value.h>

namespace quorvex::services
{

// Reads a request's body as one JSON object. Clients build their bodies by hand, without escaping and cut at a fixed
// size: whatever is not an object ends the request as a bad one.
Json::Value ReadJsonBody(const httplib::ContentReader& read);

// The text value of a key; a missing key or another type ends the request as a bad one.
std::string RequiredText(const Json::Value& body, const char* key);

// Empty when the key is absent.
std::string OptionalText(const Json::Value& body, const char* key);

} // namespace quorvex::services
