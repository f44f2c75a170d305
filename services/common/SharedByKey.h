#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace quorvex::services
{

// One object for each key, the same one for all who hold it at a time.
template <class T>
class SharedByKey
{
public:
    std::shared_ptr<T> Get(const std::string& key)
    {
        const std::lock_guard guard(mutex_);
        std::erase_if(objects_, [](const auto& entry) { return entry.second.expired(); });
        std::weak_ptr<T>& slot = objects_[key];
        std::shared_ptr<T> object = slot.lock();
        if (!object)
        {
            object = std::make_shared<T>();
            slot = object;
        }
        return object;
    }

private:
    std::mutex mutex_;
    std::map<std::string, std::weak_ptr<T>> objects_;
};

} // namespace quorvex::services
