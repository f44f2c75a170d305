#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>

/// What the services' reply parsers share. Like the JSON library itself, the readers throw for a value of the wrong
/// type; a parser turns that into its own failure.
namespace quorvex
{

/// @return whether the body is JSON
bool ParseJson(const std::string& body, Json::Value& root);

/// What Require throws; its line is in the log already.
struct MissingKey
{
};

/// A key that a reply must have: missing or null, it ends the parse.
/// @param message goes into the log then
const Json::Value& Require(const Json::Value& root, const char* key, const wchar_t* message);

/// A number that may exceed 32 bits. It is read as a double and truncated toward zero; beyond 64 bits it becomes
/// the nearest value that there is.
std::int64_t ReadInt64(const Json::Value& value);

} // namespace quorvex
