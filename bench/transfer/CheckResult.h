#pragma once

#include <stdexcept>
#include <string>

namespace quorvex::bench
{

/// Throws when an operation of the module gives another result than 0.
inline void CheckResult(int result, const char* operation)
{
    if (result != 0)
    {
        throw std::runtime_error(std::string(operation) + " gave result " + std::to_string(result));
    }
}

inline void CheckWholeBlock(bool isWhole)
{
    if (!isWhole)
    {
        throw std::runtime_error("a block is not whole");
    }
}

} // namespace quorvex::bench
