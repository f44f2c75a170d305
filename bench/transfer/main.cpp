#include "FileDigests.h"
#include "Memory.h"
#include "Transfers.h"
#include "WorkFolder.h"

#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace
{

namespace fs = std::filesystem;
using namespace quorvex::bench;

struct Options
{
    bool transfers = false;
    bool digests = false;
    bool memory = false;
    int runs = 11;
    std::string rows;
    std::string folder;
    Probe probe;
    std::string probeFile;
};

std::string ToUtf8(const fs::path& text)
{
    const std::u8string bytes = text.u8string();
    return {bytes.begin(), bytes.end()};
}

fs::path FromUtf8(const std::string& text)
{
    return std::u8string(text.begin(), text.end());
}

void AddOptions(CLI::App& app, Options& options)
{
    app.allow_windows_style_options(false);
    app.add_flag("--transfers", options.transfers, "The module's requests against a bare loop over the same calls");
    app.add_flag("--digests", options.digests, "Both digests of a file against MD5 alone");
    app.add_flag("--memory", options.memory, "Peak private memory for a small and a large file");
    app.add_option("--runs", options.runs, "Counted runs of each side of a comparison")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--rows", options.rows, "Of transfers and memory only the rows whose names have this text");
    app.add_option("--folder", options.folder, "Where files are made; it needs 3 GiB (default: the temporary folder)");
    app.footer("Without a choice of the three, all are run. Tables are Markdown.");

    // For the processes that --memory starts.
    app.add_option("--probe", options.probe.operation)->group("");
    app.add_option("--port", options.probe.port)->group("");
    app.add_option("--file", options.probeFile)->group("");
}

void Bench(const Options& options)
{
    const WorkFolder folder(options.folder.empty() ? fs::temp_directory_path() : FromUtf8(options.folder));
    const bool isAll = !options.transfers && !options.digests && !options.memory;
    if (isAll || options.transfers)
    {
        BenchTransfers(folder.Path(), options.runs, options.rows);
        std::cout << '\n';
    }
    if (isAll || options.digests)
    {
        BenchFileDigests(folder.Path(), options.runs);
        std::cout << '\n';
    }
    if (isAll || options.memory)
    {
        BenchMemory(folder.Path(), options.rows);
    }
}

void Run(Options& options)
{
    if (options.probe.operation.empty())
    {
        Bench(options);
        return;
    }
    options.probe.file = FromUtf8(options.probeFile);
    RunProbe(options.probe);
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    CLI::App app("Measures the module against the system calls that it is made of.");
    try
    {
        Options options;
        AddOptions(app, options);
        // The parser takes them from the back.
        std::vector<std::string> arguments;
        for (int i = argc - 1; i > 0; --i)
        {
            arguments.push_back(ToUtf8(argv[i]));
        }
        app.parse(std::move(arguments));
        Run(options);
        return 0;
    }
    catch (const CLI::Error& error)
    {
        return app.exit(error);
    }
    catch (const std::exception& error)
    {
        std::cerr << "quorvex-bench: " << error.what() << '\n';
        return 1;
    }
}
