#pragma once

#include <thread>
#include <vector>

namespace quorvex::services::test
{

// Runs the work once for each number below `count`, all at the same time.
template <class Work>
void Together(int count, Work work)
{
    std::vector<std::jthread> threads;
    for (int i = 0; i < count; ++i)
    {
        threads.emplace_back([i, &work] { work(i); });
    }
}

} // namespace quorvex::services::test
