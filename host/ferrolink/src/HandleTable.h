#ifndef FERROLINK_HANDLETABLE_H
#define FERROLINK_HANDLETABLE_H

#include <ferrolink/http_session.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace ferrolink
{

/// Objects that callers know by a handle. A handle is a number that is not used again, so that one which has become
/// invalid is recognised.
template <typename Object>
class HandleTable
{
public:
    __frl_stru_handle__* Insert(std::shared_ptr<Object> object)
    {
        const std::lock_guard lock(m_mutex);
        m_objects.emplace(m_next, std::move(object));
        return reinterpret_cast<__frl_stru_handle__*>(m_next++);
    }

    /// @return the object, or null when the handle is not valid
    std::shared_ptr<Object> Find(__frl_stru_handle__* handle) noexcept
    {
        const std::lock_guard lock(m_mutex);
        const auto place = m_objects.find(reinterpret_cast<std::size_t>(handle));
        return place == m_objects.end() ? nullptr : place->second;
    }

    /// Makes the handle invalid.
    /// @return the object, or null when the handle was not valid
    std::shared_ptr<Object> Take(__frl_stru_handle__* handle) noexcept
    {
        const std::lock_guard lock(m_mutex);
        const auto node = m_objects.extract(reinterpret_cast<std::size_t>(handle));
        return node.empty() ? nullptr : std::move(node.mapped());
    }

    /// Makes the handles of those objects invalid for which the condition holds, which is asked for each of them.
    template <typename Condition>
    void EraseIf(Condition condition) noexcept
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_objects, [&](const auto& entry) { return condition(*entry.second); });
    }

private:
    std::mutex m_mutex;
    std::unordered_map<std::size_t, std::shared_ptr<Object>> m_objects;
    std::size_t m_next = 1;
};

} // namespace ferrolink

#endif
