// Has the Windows module perform thousands of operations against the real services while requests are refused, reset,
// cut short and delayed and the services are killed, and reports what was acknowledged and what became of it.

#include "Accounts.h"
#include "FaultProxy.h"
#include "Faults.h"
#include "RestartableServices.h"
#include "WorkerProcess.h"

#include "support/TemporaryFolder.h"
#include "support/WindowsProgram.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <exception>
#include <iomanip>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace
{

using namespace quorvex::soak;
using Clock = std::chrono::steady_clock;

// No operation takes nearly as long, whatever happens to it.
constexpr std::chrono::minutes kPatience{3};

struct Options
{
    int operations = 20000;
    int checkpoint = 1000;
    int threads = 4;
    std::uint64_t seed = 0;
    std::string log;
};

void ReadOptions(CLI::App& app, Options& options)
{
    app.add_option("--operations", options.operations, "Operations to perform")
        ->check(CLI::Range(1000, 10000000))
        ->capture_default_str();
    app.add_option("--checkpoint", options.checkpoint,
                   "Operations after which handles and memory are what they shall be at the end")
        ->check(CLI::Range(500, 1000000))
        ->capture_default_str();
    app.add_option("--threads", options.threads, "Threads, each with clients and accounts of its own")
        ->check(CLI::Range(1, 16))
        ->capture_default_str();
    app.add_option("--seed", options.seed, "What the choices are made from; another one each time by default");
    app.add_option("--log", options.log, "File for the module's whole log");
}

std::vector<std::string> WorkerCommand(const Options& options, int port, const std::filesystem::path& folder)
{
    std::vector<std::string> line = {QUORVEX_WINE,
                                     quorvex::services::test::WindowsProgram(QUORVEX_SOAK_WORKER),
                                     std::to_string(port),
                                     "Z:" + folder.string(),
                                     std::to_string(options.operations),
                                     std::to_string(options.checkpoint),
                                     std::to_string(options.threads),
                                     std::to_string(options.seed)};
    if (!options.log.empty())
    {
        line.push_back("Z:" + std::filesystem::absolute(options.log).string());
    }
    return line;
}

/// @return whether it ended well
bool RunWorker(const Options& options, WorkerProcess& worker, Faults& faults)
{
    const auto start = Clock::now();
    const auto seconds = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    bool hasHeld = false;
    try
    {
        while (const std::optional<std::string> line = worker.ReadLine(kPatience))
        {
            if (line->starts_with("progress "))
            {
                std::cout << "  " << std::setw(6) << line->substr(9) << " of " << options.operations << " operations, "
                          << faults.Injected() << " faults, " << std::fixed << std::setprecision(0) << seconds() << " s"
                          << std::endl;
            }
            else if (line->starts_with("verifying "))
            {
                std::cout << "  " << std::setw(6) << line->substr(10) << " operations to verify, " << seconds() << " s"
                          << std::endl;
            }
            else if (*line == "held")
            {
                hasHeld = true;
            }
            else if (*line == "calm")
            {
                faults.Enable(false);
                worker.WriteLine(*line);
            }
            else
            {
                std::cout << *line << std::endl;
            }
        }
        const std::string end = worker.Finish();
        // A program that crashes may end with any status.
        if (!end.empty() || !hasHeld)
        {
            std::cout << "FAILED: the worker " << (end.empty() ? "ended early" : end) << '\n';
        }
        std::cout << "\nduration " << std::fixed << std::setprecision(0) << seconds() << " s\n";
        return end.empty() && hasHeld;
    }
    catch (const std::exception& error)
    {
        std::cout << "FAILED: " << error.what() << "; process " << worker.Id() << " is ended\n";
        worker.Kill();
        return false;
    }
}

void PrintFaults(const Faults& faults)
{
    std::cout << "\n| requests and their faults | number |\n|---|---:|\n| requests in all | " << faults.Requests()
              << " |\n";
    for (std::size_t i = 1; i < kFaultCount; ++i)
    {
        const auto fault = static_cast<Fault>(i);
        std::cout << "| " << NameOf(fault) << " | " << faults.Met(fault) << " |\n";
    }
}

/// A run without faults would show nothing.
bool HasMetAny(const Faults& faults)
{
    for (std::size_t i = 1; i < kFaultCount; ++i)
    {
        if (faults.Met(static_cast<Fault>(i)) != 0)
        {
            return true;
        }
    }
    std::cout << "FAILED: no request met a fault\n";
    return false;
}

int Run(const Options& options)
{
    const quorvex::services::test::TemporaryFolder folder;
    RestartableServices services(folder.Path() / "state", AccountOptions(options.threads));
    const std::filesystem::path work = folder.Path() / "work";
    std::filesystem::create_directory(work);
    WriteAccounts(services.Port(), options.threads, work / "accounts");

    Faults faults(options.seed);
    FaultProxy proxy(services, faults);
    std::cout << options.operations << " operations in " << options.threads << " threads, seed " << options.seed
              << std::endl;
    WorkerProcess worker(WorkerCommand(options, proxy.Port(), work));
    const bool isWell = RunWorker(options, worker, faults) && !proxy.HasFailed() && HasMetAny(faults);
    PrintFaults(faults);
    std::cout << '\n' << (isWell ? "all held" : "FAILED") << ", seed " << options.seed << std::endl;
    return isWell ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Performs operations of all the module's classes under faults, and checks what was acknowledged.",
                 "soak");
    Options options;
    options.seed = std::random_device()();
    ReadOptions(app, options);
    CLI11_PARSE(app, argc, argv);
    // Whoever talks to a worker that has ended is told so.
    std::signal(SIGPIPE, SIG_IGN);
    try
    {
        return Run(options);
    }
    catch (const std::exception& error)
    {
        std::cerr << "soak: " << error.what() << '\n';
        return 1;
    }
}
