#include "LockCounter.h"

#include "Imports.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <cstddef>

namespace quorvex::soak
{

namespace
{

std::atomic<std::uint32_t> count = 0;
std::array<std::atomic<bool>, 65536> isLock{};

// The thread library alone uses the narrow forms.
decltype(&::CreateEventA) originalCreateEvent;
decltype(&::CreateSemaphoreA) originalCreateSemaphore;
decltype(&::CloseHandle) originalClose;

std::atomic<bool>& IsLock(HANDLE handle)
{
    // The system's handles are multiples of four.
    return isLock[reinterpret_cast<std::size_t>(handle) / 4 % isLock.size()];
}

HANDLE Entered(HANDLE handle)
{
    if (handle != nullptr && !IsLock(handle).exchange(true))
    {
        ++count;
    }
    return handle;
}

HANDLE WINAPI CountingCreateEvent(LPSECURITY_ATTRIBUTES attributes, BOOL isManual, BOOL isSet, LPCSTR name)
{
    return Entered(originalCreateEvent(attributes, isManual, isSet, name));
}

HANDLE WINAPI CountingCreateSemaphore(LPSECURITY_ATTRIBUTES attributes, LONG initial, LONG most, LPCSTR name)
{
    return Entered(originalCreateSemaphore(attributes, initial, most, name));
}

BOOL WINAPI CountingClose(HANDLE handle)
{
    if (IsLock(handle).exchange(false))
    {
        --count;
    }
    return originalClose(handle);
}

} // namespace

void CountLockHandles()
{
    Replace(L"kernel32.dll", "CreateEventA", originalCreateEvent, CountingCreateEvent);
    Replace(L"kernel32.dll", "CreateSemaphoreA", originalCreateSemaphore, CountingCreateSemaphore);
    Replace(L"kernel32.dll", "CloseHandle", originalClose, CountingClose);
}

std::uint32_t LockHandlesNow()
{
    return count;
}

} // namespace quorvex::soak
