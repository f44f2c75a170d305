#include "SystemError.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace quorvex::bench
{

void ThrowSystemError(const char* call)
{
    const DWORD code = ::GetLastError();
    throw std::runtime_error(std::string(call) + " failed, system code " + std::to_string(code));
}

} // namespace quorvex::bench
