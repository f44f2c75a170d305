#pragma once

#include <cstdint>
#include <set>
#include <string>

#include <httplib.h>
#include <json/value.h>

namespace quorvex::services
{

// A request's body of at most 64 KiB; a larger or broken one ends the request.
std::string ReadTextBody(const httplib::ContentReader& read);

// Reads a request's body as one JSON object. Clients build their bodies by hand, without escaping and cut at a fixed
// size: whatever is not an object ends the request as a bad one.
Json::Value ReadJsonBody(const httplib::ContentReader& read);

// The text value of a key; a missing key or another type ends the request as a bad one.
std::string RequiredText(const Json::Value& body, const char* key);

// Empty when the key is absent.
std::string OptionalText(const Json::Value& body, const char* key);

// The texts of an array, each once.
std::set<std::string> RequiredTexts(const Json::Value& body, const char* key);

// A whole number of at most 32 bits without a sign, as clients write it.
std::int64_t RequiredSeconds(const Json::Value& body, const char* key);

} // namespace quorvex::services
