#include "Platform/LastError.h"

namespace quorvex::Platform
{

namespace
{

thread_local unsigned long lastError = 0;

} // namespace

unsigned long LastError()
{
    return lastError;
}

void SetLastError(unsigned long code)
{
    lastError = code;
}

SystemErrorText::SystemErrorText(unsigned long /*code*/)
{
}

SystemErrorText::~SystemErrorText() = default;

} // namespace quorvex::Platform
