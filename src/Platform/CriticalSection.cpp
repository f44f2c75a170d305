#include "CriticalSection.h"

#include <windows.h>

namespace quorvex::Platform
{

struct CriticalSection::Section
{
    CRITICAL_SECTION section;
};

CriticalSection::CriticalSection(unsigned long spinCount) : m_section(std::make_unique<Section>())
{
    // It has not failed since Windows Vista.
    ::InitializeCriticalSectionAndSpinCount(&m_section->section, spinCount);
}

CriticalSection::~CriticalSection()
{
    ::DeleteCriticalSection(&m_section->section);
}

void CriticalSection::lock()
{
    ::EnterCriticalSection(&m_section->section);
}

void CriticalSection::unlock()
{
    ::LeaveCriticalSection(&m_section->section);
}

} // namespace quorvex::Platform
