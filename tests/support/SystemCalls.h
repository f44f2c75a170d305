#pragma once

#include "support/ImportTable.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

/// One call that the module has made.
struct SystemCall
{
    std::string_view function;
    std::uintptr_t firstArgument;
    std::uintptr_t result;
    bool failed;
};

/// Stands between a loaded module and the system while it lives: counts, watches and fails the module's calls.
/// One object at a time.
class SystemCalls
{
public:
    explicit SystemCalls(const wchar_t* module = L"quorvex.dll");
    ~SystemCalls();

    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    /// Makes the call-th next call of a function fail with a system error; later ones succeed again unless there
    /// are to be several. A call that releases something releases it even when it is made to fail.
    void fail(std::string_view function, unsigned call, DWORD error, unsigned howMany = 1);

    unsigned calls(std::string_view function) const;

    /// The functions that the module imports, of those that can be watched.
    std::vector<std::string> functions() const;

    void watch(std::function<void(const SystemCall&)> watcher);

private:
    std::deque<ImportPatch> m_patches;
};

} // namespace support
