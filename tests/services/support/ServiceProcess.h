#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace quorvex::services::test
{

// The real program as a process of its own. Killed at the end if it still runs.
class ServiceProcess
{
public:
    explicit ServiceProcess(const std::filesystem::path& data, std::vector<std::string> arguments = {}, int port = 0);
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;
    ~ServiceProcess();

    int Port() const { return port_; }
    const std::string& ReadyLine() const { return readyLine_; }

    // Sends the signal and waits for the end; returns the wait status.
    int End(int signal);

private:
    pid_t process_ = -1;
    int output_ = -1;
    std::string readyLine_;
    int port_ = 0;
};

} // namespace quorvex::services::test
