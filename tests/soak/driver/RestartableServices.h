#pragma once

#include "support/ServiceProcess.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::soak
{

/// The services on one folder of state, which outlives every end of theirs.
class RestartableServices
{
public:
    /// @param firstArguments arguments of the first start only
    RestartableServices(std::filesystem::path data, const std::vector<std::string>& firstArguments);

    /// The port that they listen on at present; waits while they start.
    int Port();

    /// Ends them with a signal and starts them anew, on another port.
    void Restart(int signal);

private:
    std::mutex m_mutex;
    std::filesystem::path m_data;
    std::optional<services::test::ServiceProcess> m_process;
};

} // namespace quorvex::soak
