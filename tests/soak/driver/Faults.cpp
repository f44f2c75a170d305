#include "Faults.h"

#include <numeric>

namespace quorvex::soak
{

namespace
{

struct Kind
{
    std::string_view name;
    int perThousand;
};

// In the order of Fault.
constexpr std::array<Kind, kFaultCount> kKinds = {{
    {"none", 0},
    {"delayed", 30},
    {"answered 403 in the services' place", 12},
    {"answered 404 in the services' place", 8},
    {"answered 500 in the services' place", 10},
    {"answered 500 after the services acted", 6},
    {"reset while the request was sent", 6},
    {"reset before the services saw the request", 6},
    {"reset after the services acted", 8},
    {"reset within the answer", 8},
    {"answer cut short", 8},
    {"services killed (SIGKILL) with the request", 4},
    {"services restarted (SIGTERM) with the request", 2},
}};

} // namespace

std::string_view NameOf(Fault fault)
{
    return kKinds[static_cast<std::size_t>(fault)].name;
}

Fault Faults::Choose()
{
    std::size_t chosen = 0;
    if (m_isEnabled)
    {
        auto chance = static_cast<int>(Below(1000));
        for (std::size_t i = 1; i < kFaultCount && chosen == 0; ++i)
        {
            chance -= kKinds[i].perThousand;
            chosen = chance < 0 ? i : 0;
        }
    }
    ++m_met[chosen];
    return static_cast<Fault>(chosen);
}

std::size_t Faults::Below(std::size_t limit)
{
    const std::lock_guard lock(m_mutex);
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random);
}

std::uint64_t Faults::Requests() const
{
    return std::accumulate(m_met.begin(), m_met.end(), std::uint64_t{0});
}

} // namespace quorvex::soak
