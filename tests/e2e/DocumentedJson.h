#pragma once

#include <string>

#include <json/value.h>

namespace quorvex::e2e
{

/// Compares an object that --json has printed with what the console's manual says of its command, or of failures.
/// @return what is different; empty when nothing is
std::string DifferenceFromManual(const Json::Value& object);

} // namespace quorvex::e2e
