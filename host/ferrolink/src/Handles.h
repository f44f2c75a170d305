#ifndef FERROLINK_HANDLES_H
#define FERROLINK_HANDLES_H

#include <memory>

#include <windows.h>
#include <winhttp.h>

namespace ferrolink
{

struct KernelCloser
{
    void operator()(void* handle) const noexcept { CloseHandle(handle); }
};

struct InternetCloser
{
    void operator()(void* handle) const noexcept { WinHttpCloseHandle(handle); }
};

/// An owned handle of the system; none is null.
using KernelHandle = std::unique_ptr<void, KernelCloser>;

/// An owned handle of WinHTTP; none is null.
using InternetHandle = std::unique_ptr<void, InternetCloser>;

} // namespace ferrolink

#endif
