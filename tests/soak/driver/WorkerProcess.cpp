#include "WorkerProcess.h"

#include <array>
#include <csignal>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::soak
{

namespace
{

std::array<int, 2> OpenPipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    return ends;
}

} // namespace

WorkerProcess::WorkerProcess(const std::vector<std::string>& commandLine)
{
    std::vector<std::string> arguments = commandLine;
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
    {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);

    const std::array<int, 2> input = OpenPipe();
    const std::array<int, 2> output = OpenPipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    const int failure = ::posix_spawn(&m_process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    m_input = input[1];
    m_output = output[0];
    if (failure != 0)
    {
        m_process = -1;
        throw std::runtime_error("cannot start " + commandLine.front());
    }
}

WorkerProcess::~WorkerProcess()
{
    Kill();
    ::close(m_input);
    ::close(m_output);
}

std::optional<std::string> WorkerProcess::ReadLine(std::chrono::milliseconds patience)
{
    std::size_t end = 0;
    while ((end = m_read.find('\n')) == std::string::npos)
    {
        pollfd entry{m_output, POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>(patience.count())) == 0)
        {
            throw std::runtime_error("the worker says nothing any more: it hangs");
        }
        char piece[4096];
        const ssize_t count = ::read(m_output, piece, sizeof piece);
        if (count <= 0)
        {
            return std::nullopt;
        }
        m_read.append(piece, static_cast<std::size_t>(count));
    }
    std::string line = m_read.substr(0, end);
    m_read.erase(0, end + 1);
    if (line.ends_with('\r'))
    {
        line.pop_back();
    }
    return line;
}

void WorkerProcess::WriteLine(std::string line) const
{
    line += '\n';
    if (::write(m_input, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
    {
        throw std::runtime_error("the worker does not listen");
    }
}

std::string WorkerProcess::Finish()
{
    int status = 0;
    ::waitpid(std::exchange(m_process, -1), &status, 0);
    if (WIFSIGNALED(status))
    {
        return "ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0 ? std::string() : "ended with status " + std::to_string(WEXITSTATUS(status));
}

void WorkerProcess::Kill()
{
    if (m_process > 0)
    {
        ::kill(m_process, SIGKILL);
        ::waitpid(std::exchange(m_process, -1), nullptr, 0);
    }
}

} // namespace quorvex::soak
