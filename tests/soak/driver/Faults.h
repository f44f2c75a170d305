#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <random>
#include <string_view>

namespace quorvex::soak
{

/// What can happen to one request between the client and the services.
enum class Fault : std::size_t
{
    None,
    Delayed,          ///< held until another request comes, or a moment has passed
    Forbidden,        ///< 403, and the services never see the request
    NotFound,         ///< 404, the same
    ServerError,      ///< 500, the same
    ServerErrorAfter, ///< 500 although the services have acted
    ResetInRequest,   ///< reset while the request is on its way
    ResetBefore,      ///< reset when it has come, and the services never see it
    ResetAfter,       ///< reset although the services have acted
    ResetInAnswer,    ///< reset in the middle of the answer
    CutAnswer,        ///< the answer ends early, in good order
    Kill,             ///< kill -9 of the services while they have the request
    Restart,          ///< the same with SIGTERM, which lets them finish
    Count
};

inline constexpr std::size_t kFaultCount = static_cast<std::size_t>(Fault::Count);

std::string_view NameOf(Fault fault);

/// Chooses faults by chance from a seed, and counts them.
class Faults
{
public:
    explicit Faults(std::uint64_t seed) : m_random(seed) {}

    void Enable(bool isEnabled) { m_isEnabled = isEnabled; }

    /// @return what shall happen to the next request
    Fault Choose();

    /// A number below the limit.
    std::size_t Below(std::size_t limit);

    std::uint64_t Met(Fault fault) const { return m_met[static_cast<std::size_t>(fault)]; }
    std::uint64_t Requests() const;
    std::uint64_t Injected() const { return Requests() - Met(Fault::None); }

private:
    std::atomic<bool> m_isEnabled = true;
    std::mutex m_mutex;
    std::mt19937_64 m_random;
    std::array<std::atomic<std::uint64_t>, kFaultCount> m_met{};
};

} // namespace quorvex::soak
