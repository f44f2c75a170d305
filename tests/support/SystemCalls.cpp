#include "support/SystemCalls.h"

#include <winhttp.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace support
{
namespace
{

struct Import
{
    std::string_view name;
    void* replacement = nullptr;
    std::uintptr_t failure = 0;   ///< what the function returns when it fails
    bool callsEvenToFail = false; ///< for what releases: a made failure must not leak
    void* original = nullptr;     ///< null when the module does not import the function
    unsigned calls = 0;
    unsigned failFrom = 0;
    unsigned failCount = 0;
    DWORD error = 0;

    bool isToFail() const { return failCount != 0 && calls >= failFrom && calls - failFrom < failCount; }
};

std::function<void(const SystemCall&)> watcher;

template <typename T>
std::uintptr_t asWord(T value)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<std::uintptr_t>(value);
    else
        return static_cast<std::uintptr_t>(value);
}

template <typename T>
T fromWord(std::uintptr_t word)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(word);
    else
        return static_cast<T>(word);
}

template <typename First, typename... Others>
std::uintptr_t firstOf(First first, Others...)
{
    return asWord(first);
}

template <typename Result, typename Function, typename... Arguments>
Result intercept(Import& import, Arguments... arguments)
{
    ++import.calls;
    const bool made = import.isToFail();
    auto result = fromWord<Result>(import.failure);
    if (!made || import.callsEvenToFail)
        result = reinterpret_cast<Function>(import.original)(arguments...);
    if (made)
        result = fromWord<Result>(import.failure);
    const DWORD error = made ? import.error : GetLastError();
    const bool failed = result == fromWord<Result>(import.failure);
    if (watcher)
        watcher({import.name, firstOf(arguments...), asWord(result), failed});
    SetLastError(error);
    return result;
}

/// Makes every function of the list below a type, and so a replacement, of its own.
template <std::size_t Size>
struct Name
{
    // A plain literal is to name a function.
    // NOLINTNEXTLINE(google-explicit-constructor)
    consteval Name(const char (&text)[Size]) { std::copy_n(text, Size, value); }
    char value[Size];
};

template <Name name, typename Function>
struct Interceptor;

template <Name name, typename Result, typename... Arguments>
struct Interceptor<name, Result(WINAPI*)(Arguments...)>
{
    static inline Import import;
    static Result WINAPI call(Arguments... arguments)
    {
        return intercept<Result, Result(WINAPI*)(Arguments...)>(import, arguments...);
    }
};

#if !defined(_WIN64)
template <Name name, typename Result, typename... Arguments>
struct Interceptor<name, Result(__cdecl*)(Arguments...)>
{
    static inline Import import;
    static Result __cdecl call(Arguments... arguments)
    {
        return intercept<Result, Result(__cdecl*)(Arguments...)>(import, arguments...);
    }
};
#endif

template <Name name, typename Function>
Import* importOf(std::uintptr_t failure = 0, bool callsEvenToFail = false)
{
    using Type = Interceptor<name, Function>;
    Type::import.name = name.value;
    Type::import.replacement = reinterpret_cast<void*>(&Type::call);
    Type::import.failure = failure;
    Type::import.callsEvenToFail = callsEvenToFail;
    return &Type::import;
}

constexpr auto noHandle = static_cast<std::uintptr_t>(-1);
constexpr bool releases = true;

std::span<Import* const> imports()
{
    static const std::array all{
        importOf<"WinHttpOpen", decltype(&WinHttpOpen)>(),
        importOf<"WinHttpCrackUrl", decltype(&WinHttpCrackUrl)>(),
        importOf<"WinHttpConnect", decltype(&WinHttpConnect)>(),
        importOf<"WinHttpOpenRequest", decltype(&WinHttpOpenRequest)>(),
        importOf<"WinHttpAddRequestHeaders", decltype(&WinHttpAddRequestHeaders)>(),
        importOf<"WinHttpSendRequest", decltype(&WinHttpSendRequest)>(),
        importOf<"WinHttpWriteData", decltype(&WinHttpWriteData)>(),
        importOf<"WinHttpReceiveResponse", decltype(&WinHttpReceiveResponse)>(),
        importOf<"WinHttpQueryHeaders", decltype(&WinHttpQueryHeaders)>(),
        importOf<"WinHttpReadData", decltype(&WinHttpReadData)>(),
        importOf<"WinHttpCloseHandle", decltype(&WinHttpCloseHandle)>(0, releases),
        importOf<"CreateFileW", decltype(&CreateFileW)>(noHandle),
        importOf<"ReadFile", decltype(&ReadFile)>(),
        importOf<"WriteFile", decltype(&WriteFile)>(),
        importOf<"GetFileSize", decltype(&GetFileSize)>(INVALID_FILE_SIZE),
        importOf<"GetFileSizeEx", decltype(&GetFileSizeEx)>(),
        importOf<"CreateFileMappingW", decltype(&CreateFileMappingW)>(),
        importOf<"MapViewOfFile", decltype(&MapViewOfFile)>(),
        importOf<"UnmapViewOfFile", decltype(&UnmapViewOfFile)>(0, releases),
        importOf<"CloseHandle", decltype(&CloseHandle)>(0, releases),
        importOf<"FormatMessageW", decltype(&FormatMessageW)>(),
        importOf<"LocalFree", decltype(&LocalFree)>(1, releases),
        importOf<"MultiByteToWideChar", decltype(&MultiByteToWideChar)>(),
        importOf<"WideCharToMultiByte", decltype(&WideCharToMultiByte)>(),
        importOf<"malloc", decltype(&std::malloc)>(),
    };
    return all;
}

Import& find(std::string_view function)
{
    for (Import* const each : imports())
        if (each->name == function && each->original != nullptr)
            return *each;
    throw std::invalid_argument("the module does not import " + std::string(function));
}

} // namespace

SystemCalls::SystemCalls(const wchar_t* module)
{
    const HMODULE handle = GetModuleHandleW(module);
    if (handle == nullptr)
        throw std::invalid_argument("the module is not loaded");
    const ImportTable table(handle);
    for (Import* const each : imports())
    {
        void** const entry = table.entry(each->name);
        each->original = entry == nullptr ? nullptr : *entry;
        each->calls = 0;
        each->failCount = 0;
        if (entry != nullptr)
            m_patches.emplace_back(entry, each->replacement);
    }
}

SystemCalls::~SystemCalls()
{
    watcher = nullptr;
}

void SystemCalls::fail(std::string_view function, unsigned call, DWORD error, unsigned howMany)
{
    Import& import = find(function);
    import.failFrom = import.calls + call;
    import.failCount = howMany;
    import.error = error;
}

unsigned SystemCalls::calls(std::string_view function) const
{
    return find(function).calls;
}

std::vector<std::string> SystemCalls::functions() const
{
    std::vector<std::string> names;
    for (const Import* const each : imports())
        if (each->original != nullptr)
            names.emplace_back(each->name);
    return names;
}

void SystemCalls::watch(std::function<void(const SystemCall&)> newWatcher)
{
    watcher = std::move(newWatcher);
}

} // namespace support
