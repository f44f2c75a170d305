#pragma once

#include <memory>

namespace quorvex::Platform
{

/// A lock that spins for a moment before it sleeps. It is locked and unlocked like a standard mutex.
class CriticalSection
{
public:
    explicit CriticalSection(unsigned long spinCount);
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void lock();
    void unlock();

private:
    struct Section;
    std::unique_ptr<Section> m_section;
};

} // namespace quorvex::Platform
