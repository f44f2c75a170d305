#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace quorvex::soak
{

/// The Windows program that performs the operations, running under Wine. Talks in lines.
class WorkerProcess
{
public:
    explicit WorkerProcess(const std::vector<std::string>& commandLine);
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    ~WorkerProcess();

    pid_t Id() const { return m_process; }

    /// @return the next line, nothing when the program has ended
    /// @throws std::runtime_error when none comes for a very long time
    std::optional<std::string> ReadLine(std::chrono::milliseconds patience);

    void WriteLine(std::string line) const;

    /// Waits for the end.
    /// @return what it ended with, in words; empty when it ended well
    std::string Finish();

    /// Ends the program at once.
    void Kill();

private:
    pid_t m_process = -1;
    int m_input = -1;
    int m_output = -1;
    std::string m_read;
};

} // namespace quorvex::soak
