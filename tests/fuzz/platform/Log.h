#pragma once

#include <cstddef>

namespace quorvex::fuzz
{

/// How many ERROR lines this thread has written. Every line is checked as it comes.
std::size_t ErrorLines();

} // namespace quorvex::fuzz
