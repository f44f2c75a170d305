// The sweep fails what the module calls; this holds it to the module's whole import table.

#include "support/ImportTable.h"
#include "support/SystemCalls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace
{

/// Nothing of these can fail that the module could answer: they have no result, or only state a fact.
constexpr std::array<std::string_view, 8> cannotFail{
    "EnterCriticalSection", "LeaveCriticalSection", "DeleteCriticalSection",
    "GetLastError",         "SetLastError",         "frl_http_request_get_status_code",
    "frl_log_get_level",    "frl_log_write",
};

/// What the compiler's runtime and the thread library call, in and around the module's own code.
constexpr std::array<std::string_view, 48> ofTheRuntime{
    "AddVectoredExceptionHandler",
    "CreateEventA",
    "CreateSemaphoreA",
    "DisableThreadLibraryCalls",
    "DuplicateHandle",
    "FormatMessageA",
    "FreeLibrary",
    "GetCurrentProcess",
    "GetCurrentProcessId",
    "GetCurrentThread",
    "GetCurrentThreadId",
    "GetHandleInformation",
    "GetModuleHandleA",
    "GetModuleHandleW",
    "GetProcAddress",
    "GetProcessAffinityMask",
    "GetSystemTimeAsFileTime",
    "GetThreadContext",
    "GetThreadPriority",
    "GetTickCount64",
    "InitializeCriticalSection",
    "IsDBCSLeadByteEx",
    "IsDebuggerPresent",
    "LoadLibraryA",
    "LoadLibraryW",
    "OpenProcess",
    "OutputDebugStringA",
    "RaiseException",
    "ReleaseSemaphore",
    "RemoveVectoredExceptionHandler",
    "ResetEvent",
    "ResumeThread",
    "RtlCaptureContext",
    "RtlLookupFunctionEntry",
    "RtlUnwindEx",
    "RtlVirtualUnwind",
    "SetProcessAffinityMask",
    "SetThreadContext",
    "SetThreadPriority",
    "Sleep",
    "SuspendThread",
    "TlsAlloc",
    "TlsGetValue",
    "TlsSetValue",
    "TryEnterCriticalSection",
    "VirtualProtect",
    "VirtualQuery",
    "WaitForMultipleObjects",
};

bool contains(const auto& names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

/// The C library's functions bear no capital, but for what some compilers call with two underscores.
bool isOfTheCLibrary(std::string_view name)
{
    return !name.starts_with("frl_") && (name.front() == '_' || (name.front() >= 'a' && name.front() <= 'z'));
}

TEST(Imports, AreSweptOrCannotFail)
{
    const std::vector<std::string> swept = support::SystemCalls().functions();
    for (const std::string& name : support::ImportTable(GetModuleHandleW(L"quorvex.dll")).functions())
        EXPECT_TRUE(isOfTheCLibrary(name) || contains(swept, name) || contains(cannotFail, name) ||
                    contains(ofTheRuntime, name))
            << name;
}

TEST(Imports, OfTheCLibraryThatTakeMemoryAreSwept)
{
    const std::vector<std::string> swept = support::SystemCalls().functions();
    for (const std::string_view name : {"malloc", "calloc", "realloc"})
        EXPECT_TRUE(contains(swept, name)) << name;
}

} // namespace
