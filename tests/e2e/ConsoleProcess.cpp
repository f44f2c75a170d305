#include "ConsoleProcess.h"

#include "DocumentedJson.h"

#include "support/WindowsProgram.h"

#include <csignal>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <json/reader.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::e2e
{

namespace
{

struct Pipe
{
    int readEnd;
    int writeEnd;
};

Pipe OpenPipe()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    return {ends[0], ends[1]};
}

/// @return false at the pipe's end
bool ReadSome(int pipe, std::string& text)
{
    char piece[4096];
    const ssize_t count = ::read(pipe, piece, sizeof piece);
    if (count > 0)
    {
        text.append(piece, static_cast<std::size_t>(count));
    }
    return count > 0;
}

void ClosePipe(int& pipe)
{
    if (pipe >= 0)
    {
        ::close(std::exchange(pipe, -1));
    }
}

} // namespace

ConsoleProcess::ConsoleProcess(const std::vector<std::string>& arguments)
{
    std::vector<std::string> line = {QUORVEX_WINE, services::test::WindowsProgram(QUORVEX_CONSOLE)};
    line.insert(line.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : line)
    {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);

    Pipe output = OpenPipe();
    Pipe errors = OpenPipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output.writeEnd, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.writeEnd, STDERR_FILENO);
    const int failure = ::posix_spawn(&m_process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ClosePipe(output.writeEnd);
    ClosePipe(errors.writeEnd);
    m_outputPipe = output.readEnd;
    m_errorPipe = errors.readEnd;
    if (failure != 0)
    {
        throw std::runtime_error("cannot start the console");
    }
}

ConsoleProcess::~ConsoleProcess()
{
    Kill();
    ClosePipe(m_outputPipe);
    ClosePipe(m_errorPipe);
}

bool ConsoleProcess::WaitForError(std::string_view text)
{
    while (m_errors.find(text) == std::string::npos)
    {
        if (!ReadSome(m_errorPipe, m_errors))
        {
            return false;
        }
    }
    return true;
}

void ConsoleProcess::Pause() const
{
    ::kill(m_process, SIGSTOP);
    // The signal takes a while to arrive.
    ::waitpid(m_process, nullptr, WUNTRACED);
}

void ConsoleProcess::Resume() const
{
    ::kill(m_process, SIGCONT);
}

void ConsoleProcess::Interrupt() const
{
    ::kill(m_process, SIGINT);
}

void ConsoleProcess::Kill()
{
    if (m_process > 0)
    {
        ::kill(m_process, SIGKILL);
        ::waitpid(std::exchange(m_process, -1), nullptr, 0);
    }
}

int ConsoleProcess::Finish()
{
    while (m_outputPipe >= 0 || m_errorPipe >= 0)
    {
        pollfd pipes[] = {{m_outputPipe, POLLIN, 0}, {m_errorPipe, POLLIN, 0}};
        ::poll(pipes, 2, -1);
        if (pipes[0].revents != 0 && !ReadSome(m_outputPipe, m_output))
        {
            ClosePipe(m_outputPipe);
        }
        if (pipes[1].revents != 0 && !ReadSome(m_errorPipe, m_errors))
        {
            ClosePipe(m_errorPipe);
        }
    }
    int status = 0;
    ::waitpid(std::exchange(m_process, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Json::Value ConsoleRun::Json() const
{
    Json::Value value;
    std::istringstream stream(output);
    stream >> value;
    EXPECT_EQ(DifferenceFromManual(value), "") << output;
    return value;
}

ConsoleRun RunConsole(const std::vector<std::string>& arguments)
{
    ConsoleProcess process(arguments);
    const int exitStatus = process.Finish();
    return {exitStatus, process.Output(), process.Errors()};
}

} // namespace quorvex::e2e
