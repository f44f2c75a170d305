#include <ferrolink/log.h>

#include "Immortal.h"
#include "LineFile.h"

#include <atomic>
#include <mutex>

namespace
{

std::atomic<unsigned> enabledLevels{0};

/// Where lines go, under one lock. The lock is recursive because a callback may log or send lines elsewhere.
class Destination
{
public:
    void Write(unsigned level, const wchar_t* line, size_t length) noexcept
    {
        const std::lock_guard lock(m_mutex);
        if (m_inCallback)
            return;
        if (!m_toCallback)
            return m_file.Write(line, length);
        if (m_callback == nullptr)
            return;
        m_inCallback = true;
        m_callback(m_context, level, line, length);
        m_inCallback = false;
    }

    void UseStandardError() noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_file.UseStandardError();
        m_toCallback = false;
    }

    int UseFile(const wchar_t* path) noexcept
    {
        const std::lock_guard lock(m_mutex);
        const int error = m_file.Open(path);
        if (error == 0)
            m_toCallback = false;
        return error;
    }

    void UseCallback(frl_log_callback callback, void* context) noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_file.UseStandardError();
        m_callback = callback;
        m_context = context;
        m_toCallback = true;
    }

private:
    std::recursive_mutex m_mutex;
    ferrolink::LineFile m_file;
    frl_log_callback m_callback = nullptr;
    void* m_context = nullptr;
    bool m_toCallback = false;
    bool m_inCallback = false;
};

Destination& TheDestination() noexcept
{
    return ferrolink::Immortal<Destination>();
}

} // namespace

extern "C"
{

    unsigned frl_log_get_level(void)
    {
        return enabledLevels.load(std::memory_order_relaxed);
    }

    void frl_log_set_level(unsigned levels)
    {
        enabledLevels.store(levels, std::memory_order_relaxed);
    }

    void frl_log_write(unsigned level, const wchar_t* line, size_t length)
    {
        const ferrolink::LastErrorKeeper keeper;
        if (line != nullptr)
            TheDestination().Write(level, line, length);
    }

    void frl_log_set_stderr(void)
    {
        const ferrolink::LastErrorKeeper keeper;
        TheDestination().UseStandardError();
    }

    int frl_log_set_file(const wchar_t* path)
    {
        const ferrolink::LastErrorKeeper keeper;
        return TheDestination().UseFile(path);
    }

    void frl_log_set_callback(frl_log_callback callback, void* context)
    {
        const ferrolink::LastErrorKeeper keeper;
        TheDestination().UseCallback(callback, context);
    }

} // extern "C"
