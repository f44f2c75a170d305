#pragma once

#include <string>

namespace quorvex::console
{

/// What a result of the module means, as a part of a sentence.
std::string MeaningOf(int result);

} // namespace quorvex::console
