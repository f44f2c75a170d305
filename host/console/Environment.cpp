#include "Environment.h"

#include "Text.h"

#include <cstdlib>

namespace quorvex::console
{

std::string FromEnvironment(const wchar_t* name)
{
    const wchar_t* const value = _wgetenv(name);
    return value != nullptr ? ToUtf8(value) : std::string();
}

} // namespace quorvex::console
