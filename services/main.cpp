#include "Application.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

namespace
{

using quorvex::services::Application;

constexpr const char* Description =
    "The web services that quorvex talks to, for development: accounts, the network disk, the shared file "
    "storage and the online-user search over HTTP.";

constexpr const char* Examples = R"(Examples:
  quorvex-services --data state --port 8080 --user alice:secret
      Serves http://127.0.0.1:8080/object/, /storage/ and /search/ with one account; state/ keeps everything.
  quorvex-services --data state --port 0
      Lets the system pick a free port and prints the address once it can be used.
  curl -H 'Content-Type: application/json' -d '{"account":"alice"}' http://127.0.0.1:8080/admin/tickets
      Issues a login ticket.

Prints "quorvex-services listening on http://HOST:PORT/" when it is ready, logs requests to
standard error, and ends on SIGTERM or Ctrl-C.)";

struct CommandLine
{
    Application::Options options;
    std::vector<std::pair<std::string, std::string>> users;
};

std::pair<std::string, std::string> SplitUser(const std::string& text)
{
    const std::size_t colon = text.find(':');
    if (colon == 0 || colon == std::string::npos || colon + 1 == text.size())
    {
        throw CLI::ValidationError("--user", "'" + text + "' is not of the form NAME:PASSWORD");
    }
    return {text.substr(0, colon), text.substr(colon + 1)};
}

void Define(CLI::App& app, CommandLine& line)
{
    Application::Options& options = line.options;
    app.footer(Examples);
    app.add_option("--data", options.dataFolder, "Folder that holds the state and nothing else; created if absent")
        ->required();
    app.add_option("--port", options.http.port, "Port to listen on; 0 lets the system pick one")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--host", options.http.host, "Address to listen on")->capture_default_str();
    app.add_option_function<std::vector<std::string>>(
           "--user",
           [&line](const std::vector<std::string>& users) {
               for (const std::string& user : users)
               {
                   line.users.push_back(SplitUser(user));
               }
           },
           "Account to have, or to give this password; may be repeated")
        ->type_name("NAME:PASSWORD")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--session-lifetime", options.lifetimes.service, "Seconds after which a login ends")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--centre-session-lifetime", options.lifetimes.centre,
                   "Seconds for which a user-centre session can log in")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--quota", options.netDiskLimits.quota, "Bytes that each disk may hold")->capture_default_str();
    app.add_option("--storage-quota", options.storageLimits.quota,
                   "Bytes that an account's pictures, emoticons and depot files may have together")
        ->capture_default_str();
    app.add_option("--keeping-time", options.storageLimits.keepingTime, "Seconds for which the depot keeps a file")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--max-file-size", options.netDiskLimits.maxFileSize, "Bytes that one file may have")
        ->check(CLI::Range(0ULL, 0xFFFFFFFFULL))
        ->capture_default_str();
    app.add_option("--presence-lifetime", options.presenceLifetime,
                   "Seconds after which a user who reports no status counts as offline")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--threads", options.http.threads, "Requests served at a time")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    app.add_flag("!--no-admin", options.hasAdmin, "Leave out /admin/, which answers programs on this machine");
    app.add_flag("--quiet", options.http.isQuiet, "Do not log requests");
}

// Blocked in all threads, so that only the wait below takes them.
sigset_t BlockStopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void Serve(const CommandLine& line)
{
    const sigset_t signals = BlockStopSignals();
    Application application(line.options);
    for (const auto& [name, password] : line.users)
    {
        application.GetAccounts().Ensure(name, password);
    }
    application.Start();
    std::printf("quorvex-services listening on http://%s:%d/\n", line.options.http.host.c_str(), application.Port());
    std::fflush(stdout);
    int signal = 0;
    sigwait(&signals, &signal);
    application.Stop();
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        CLI::App app(Description, "quorvex-services");
        CommandLine line;
        Define(app, line);
        CLI11_PARSE(app, argc, argv);
        line.options.storageLimits.maxFileSize = line.options.netDiskLimits.maxFileSize;
        Serve(line);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "quorvex-services: %s\n", error.what());
        return 1;
    }
}
