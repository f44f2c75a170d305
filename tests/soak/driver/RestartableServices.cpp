#include "RestartableServices.h"

#include <stdexcept>
#include <utility>

namespace quorvex::soak
{

namespace
{

// Sessions and presence shall end by what happens, not because a run takes long.
std::vector<std::string> WithLifetimes(std::vector<std::string> arguments)
{
    arguments.insert(arguments.end(), {"--session-lifetime", "86400", "--presence-lifetime", "86400"});
    return arguments;
}

} // namespace

RestartableServices::RestartableServices(std::filesystem::path data, const std::vector<std::string>& firstArguments)
    : m_data(std::move(data))
{
    m_process.emplace(m_data, WithLifetimes(firstArguments));
}

int RestartableServices::Port()
{
    const std::lock_guard lock(m_mutex);
    if (!m_process)
    {
        throw std::runtime_error("the services have not come back");
    }
    return m_process->Port();
}

void RestartableServices::Restart(int signal)
{
    const std::lock_guard lock(m_mutex);
    if (m_process)
    {
        m_process->End(signal);
    }
    m_process.emplace(m_data, WithLifetimes({}));
}

} // namespace quorvex::soak
