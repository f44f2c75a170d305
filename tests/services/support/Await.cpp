#include "support/Await.h"

#include <chrono>
#include <thread>

namespace quorvex::services::test
{

namespace
{

constexpr std::chrono::seconds Patience{30};

} // namespace

bool Await(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + Patience;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
        {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

} // namespace quorvex::services::test
