#pragma once

#include "SystemError.h"

#include <windows.h>

#include <memory>

namespace quorvex::bench
{

struct HandleCloser
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};

/// An owned handle of the system.
using Handle = std::unique_ptr<void, HandleCloser>;

/// Owns what CreateFileW returned, or throws.
inline Handle CheckedFile(HANDLE file)
{
    if (file == INVALID_HANDLE_VALUE)
    {
        ThrowSystemError("CreateFileW");
    }
    return Handle(file);
}

} // namespace quorvex::bench
