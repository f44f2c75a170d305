#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>
#include <sys/types.h>

namespace quorvex::e2e
{

/// One run of the console program. What it writes comes through two pipes.
class ConsoleProcess
{
public:
    explicit ConsoleProcess(const std::vector<std::string>& arguments);
    ConsoleProcess(const ConsoleProcess&) = delete;
    ConsoleProcess& operator=(const ConsoleProcess&) = delete;
    ~ConsoleProcess();

    /// Reads the error stream until a text has come.
    /// @return false when the program ended before
    bool WaitForError(std::string_view text);

    /// Has the program stand still until it shall go on.
    void Pause() const;
    void Resume() const;

    /// Presses Ctrl+C.
    void Interrupt() const;

    /// Ends the program at once, as a crash or a power cut would.
    void Kill();

    /// Reads what is left and waits for the end.
    /// @return the exit status
    int Finish();

    const std::string& Output() const { return m_output; }
    const std::string& Errors() const { return m_errors; }

private:
    pid_t m_process = -1;
    int m_outputPipe = -1;
    int m_errorPipe = -1;
    std::string m_output;
    std::string m_errors;
};

/// What a finished run has left.
struct ConsoleRun
{
    int exitStatus;
    std::string output;
    std::string errors;

    /// The object that --json prints, which has to be as the manual says.
    Json::Value Json() const;
};

ConsoleRun RunConsole(const std::vector<std::string>& arguments);

} // namespace quorvex::e2e
