#pragma once

#include <string>

namespace quorvex::console
{

/// @return the variable's text in UTF-8; empty when there is none
std::string FromEnvironment(const wchar_t* name);

} // namespace quorvex::console
