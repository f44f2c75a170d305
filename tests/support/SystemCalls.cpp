#include "support/SystemCalls.h"

#include <ferrolink/event.h>
#include <ferrolink/http_session.h>

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
    bool callsEvenToFail = false; ///< for what releases or waits: a made failure must not leak, nor outrun anything
    void* original = nullptr;     ///< null when the module does not import the function
    unsigned calls = 0;
    unsigned failFrom = 0;
    unsigned failCount = 0;
    DWORD error = 0;

    bool isToFail() const { return failCount != 0 && calls >= failFrom && calls - failFrom < failCount; }
};

/// The module also calls from the host's event thread. Recursive: where a program watches itself, the watcher's own
/// calls are watched, too.
class Lock
{
public:
    Lock() { EnterCriticalSection(&s_section.data); }
    ~Lock() { LeaveCriticalSection(&s_section.data); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    struct Section
    {
        Section() { InitializeCriticalSection(&data); }
        ~Section() { DeleteCriticalSection(&data); }
        Section(const Section&) = delete;
        Section& operator=(const Section&) = delete;

        CRITICAL_SECTION data{};
    };
    static inline Section s_section;
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

std::uintptr_t firstOf()
{
    return 0;
}

template <typename First, typename... Others>
std::uintptr_t firstOf(First first, Others...)
{
    return asWord(first);
}

template <typename Result, typename Function, typename... Arguments>
std::uintptr_t callOriginal(const Import& import, Arguments... arguments)
{
    const auto original = reinterpret_cast<Function>(import.original);
    if constexpr (std::is_void_v<Result>)
    {
        original(arguments...);
        return 0;
    }
    else
        return asWord(original(arguments...));
}

/// @return whether this call is to fail
bool count(Import& import)
{
    const Lock lock;
    ++import.calls;
    return import.isToFail();
}

void tellWatcher(const SystemCall& call)
{
    const Lock lock;
    if (watcher)
        watcher(call);
}

template <typename Result, typename Function, typename... Arguments>
Result intercept(Import& import, Arguments... arguments)
{
    const bool made = count(import);
    std::uintptr_t result = import.failure;
    if (!made || import.callsEvenToFail)
        result = callOriginal<Result, Function>(import, arguments...);
    const DWORD error = made ? import.error : GetLastError();
    if (made)
        result = import.failure;
    tellWatcher({import.name, firstOf(arguments...), result, result == import.failure});
    SetLastError(error);
    return fromWord<Result>(result);
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
constexpr auto notSent = static_cast<std::uintptr_t>(FRL_HTTP_FAILED);
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
        importOf<"GetFileAttributesExW", decltype(&GetFileAttributesExW)>(),
        importOf<"CreateFileMappingW", decltype(&CreateFileMappingW)>(),
        importOf<"MapViewOfFile", decltype(&MapViewOfFile)>(),
        importOf<"UnmapViewOfFile", decltype(&UnmapViewOfFile)>(0, releases),
        importOf<"CloseHandle", decltype(&CloseHandle)>(0, releases),
        importOf<"FormatMessageW", decltype(&FormatMessageW)>(),
        importOf<"LocalFree", decltype(&LocalFree)>(1, releases),
        importOf<"MultiByteToWideChar", decltype(&MultiByteToWideChar)>(),
        importOf<"WideCharToMultiByte", decltype(&WideCharToMultiByte)>(),
        importOf<"CreateEventW", decltype(&CreateEventW)>(),
        importOf<"SetEvent", decltype(&SetEvent)>(0, releases),
        importOf<"WaitForSingleObject", decltype(&WaitForSingleObject)>(WAIT_FAILED, releases),
        importOf<"InitializeCriticalSectionAndSpinCount", decltype(&InitializeCriticalSectionAndSpinCount)>(0,
                                                                                                            releases),
        importOf<"malloc", decltype(&std::malloc)>(),
        importOf<"calloc", decltype(&std::calloc)>(),
        importOf<"realloc", decltype(&std::realloc)>(),
        importOf<"frl_event_add_win32_event", decltype(&frl_event_add_win32_event)>(ERROR_NOT_ENOUGH_MEMORY),
        importOf<"frl_event_remove_win32_event", decltype(&frl_event_remove_win32_event)>(ERROR_NOT_FOUND, releases),
        importOf<"frl_http_session_create", decltype(&frl_http_session_create)>(),
        importOf<"frl_http_session_close", decltype(&frl_http_session_close)>(1, releases),
        importOf<"frl_http_request_open", decltype(&frl_http_request_open)>(),
        importOf<"frl_http_request_add_cookie", decltype(&frl_http_request_add_cookie)>(notSent),
        importOf<"frl_http_request_set_timeouts", decltype(&frl_http_request_set_timeouts)>(notSent),
        importOf<"frl_http_request_perform", decltype(&frl_http_request_perform)>(notSent),
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
    const Lock lock;
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
    const Lock lock;
    watcher = nullptr;
}

void SystemCalls::fail(std::string_view function, unsigned call, DWORD error, unsigned howMany)
{
    const Lock lock;
    Import& import = find(function);
    import.failFrom = import.calls + call;
    import.failCount = howMany;
    import.error = error;
}

unsigned SystemCalls::calls(std::string_view function) const
{
    const Lock lock;
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
    const Lock lock;
    watcher = std::move(newWatcher);
}

} // namespace support
