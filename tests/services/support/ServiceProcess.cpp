#include "support/ServiceProcess.h"

#include <algorithm>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::services::test
{

namespace
{

std::string ReadLine(int descriptor)
{
    std::string line;
    char letter = 0;
    while (::read(descriptor, &letter, 1) == 1 && letter != '\n')
    {
        line += letter;
    }
    return line;
}

pid_t Spawn(std::vector<std::string>& arguments, int output)
{
    std::vector<char*> pointers;
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(pointers),
                   [](std::string& argument) { return argument.data(); });
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t process = -1;
    const int error = ::posix_spawn(&process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
    {
        throw std::runtime_error("cannot start " + arguments[0]);
    }
    return process;
}

} // namespace

ServiceProcess::ServiceProcess(const std::filesystem::path& data, std::vector<std::string> arguments, int port)
{
    arguments.insert(arguments.begin(),
                     {QUORVEX_SERVICES_PROGRAM, "--data", data.string(), "--port", std::to_string(port), "--quiet"});
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    output_ = ends[0];
    process_ = Spawn(arguments, ends[1]);
    ::close(ends[1]);
    readyLine_ = ReadLine(output_);
    const std::size_t colon = readyLine_.rfind(':');
    if (colon == std::string::npos)
    {
        throw std::runtime_error("the program did not get ready: " + readyLine_);
    }
    port_ = std::stoi(readyLine_.substr(colon + 1));
}

ServiceProcess::~ServiceProcess()
{
    if (process_ > 0)
    {
        End(SIGKILL);
    }
    ::close(output_);
}

int ServiceProcess::End(int signal)
{
    int status = 0;
    ::kill(process_, signal);
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return status;
}

} // namespace quorvex::services::test
