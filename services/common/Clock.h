#pragma once

#include <cstdint>
#include <functional>

namespace quorvex::services
{

// Seconds since 1970-01-01 UTC.
using Clock = std::function<std::int64_t()>;

} // namespace quorvex::services
