#include "Platform/CriticalSection.h"

#include <mutex>

namespace quorvex::Platform
{

struct CriticalSection::Section
{
    std::mutex mutex;
};

CriticalSection::CriticalSection(unsigned long /*spinCount*/) : m_section(std::make_unique<Section>())
{
}

CriticalSection::~CriticalSection() = default;

void CriticalSection::lock()
{
    m_section->mutex.lock();
}

void CriticalSection::unlock()
{
    m_section->mutex.unlock();
}

} // namespace quorvex::Platform
