#include "Event.h"

#include <windows.h>

namespace quorvex::Platform
{

Event::Event() : m_handle(::CreateEventW(nullptr, FALSE, FALSE, nullptr))
{
}

Event::~Event()
{
    if (m_handle != nullptr)
    {
        ::CloseHandle(m_handle);
    }
}

void Event::Set() const
{
    ::SetEvent(m_handle);
}

void Event::Wait() const
{
    ::WaitForSingleObject(m_handle, INFINITE);
}

} // namespace quorvex::Platform
