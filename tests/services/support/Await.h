#pragma once

#include <functional>

namespace quorvex::services::test
{

// Waits until the condition holds; false when that does not happen for a very long time.
bool Await(const std::function<bool()>& condition);

} // namespace quorvex::services::test
