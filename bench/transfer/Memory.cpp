#include "Memory.h"

#include "ChildProcess.h"
#include "FileDigests.h"
#include "LoopbackServer.h"
#include "NetDiskClient.h"
#include "StorageClient.h"
#include "SystemError.h"
#include "WorkFolder.h"

#include <windows.h>
// Needs windows.h.
#include <psapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <iomanip>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <vector>

namespace quorvex::bench
{

namespace
{

namespace fs = std::filesystem;

constexpr double kTargetMiB = 2;
constexpr std::size_t kBlockSize = 1U << 20;

struct FileSize
{
    const wchar_t* name;
    std::uint64_t bytes;
};

constexpr FileSize kSmall{L"1MiB", 1ULL << 20};
// One byte less than 2 GiB: WinHTTP does not get beyond it on every system, nor does the size in an upload's answer.
constexpr FileSize kLarge{L"2GiB", (2ULL << 30) - 1};

struct Operation
{
    std::string_view name;
    void (*run)(const Probe& probe);
};

void GetChecksum(const Probe& probe)
{
    const netdisk::CNetDisk disk;
    unsigned long size = 0;
    wchar_t md5[66] = {};
    CheckResult(disk.FileGetChecksum(probe.file.parent_path().c_str(), probe.file.filename().c_str(), size, md5),
                "FileGetChecksum");
    if (md5[0] == L'\0')
    {
        throw std::runtime_error("FileGetChecksum cannot read its file");
    }
}

template <class Client>
void Upload(const Probe& probe)
{
    Client(probe.port).Upload(probe.file);
}

template <class Client>
void Download(const Probe& probe)
{
    fs::path target = probe.file;
    target += L".received";
    Client(probe.port).Download(target);
    if (fs::file_size(target) != fs::file_size(probe.file))
    {
        throw std::runtime_error("a download is not whole");
    }
    fs::remove(target);
}

/// Gives every block of a file to an operation.
void ForEachBlock(const Probe& probe, const std::function<void(std::span<char> block, std::uint32_t position)>& run)
{
    const std::uint64_t size = fs::file_size(probe.file);
    std::vector<char> block(kBlockSize);
    for (std::uint64_t position = 0; position < size; position += kBlockSize)
    {
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(kBlockSize, size - position));
        run(std::span(block).first(length), static_cast<std::uint32_t>(position));
    }
}

void UploadToDepot(const Probe& probe)
{
    const StorageClient client(probe.port);
    ForEachBlock(probe,
                 [&client](std::span<char> block, std::uint32_t position) { client.UploadBlock(block, position); });
}

void DownloadFromDepot(const Probe& probe)
{
    const StorageClient client(probe.port);
    ForEachBlock(probe,
                 [&client](std::span<char> block, std::uint32_t position) { client.DownloadBlock(block, position); });
}

constexpr std::array kOperations = {
    Operation{"FileUpload", Upload<NetDiskClient>},
    Operation{"FileDownload", Download<NetDiskClient>},
    Operation{"storage:FileUpload", Upload<StorageClient>},
    Operation{"storage:FileDownload", Download<StorageClient>},
    Operation{"depot:LargeFileUpload", UploadToDepot},
    Operation{"depot:LargeFileDownload", DownloadFromDepot},
    Operation{"FileGetChecksum", GetChecksum},
    Operation{"FileMd5AndSha1", [](const Probe& probe) { DigestMd5AndSha1(probe.file); }},
};

/// The most that this process has had so far. Where the system keeps no such record, what it has now.
std::size_t PrivateMemory()
{
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    Check(::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters), "GetProcessMemoryInfo");
    return std::max(counters.PeakPagefileUsage, counters.PagefileUsage);
}

/// Looks at this process's memory again and again as long as something runs.
std::size_t PeakDuring(const std::function<void()>& run)
{
    std::size_t peak = PrivateMemory();
    std::jthread watcher([&peak](const std::stop_token& stop) {
        while (!stop.stop_requested())
        {
            peak = std::max(peak, PrivateMemory());
            ::Sleep(1);
        }
    });
    run();
    watcher.request_stop();
    watcher.join();
    return std::max(peak, PrivateMemory());
}

double MeasureMiB(LoopbackServer& server, const Operation& operation, const fs::path& folder, const FileSize& size)
{
    server.SetFileSize(size.bytes);
    const std::wstring name(operation.name.begin(), operation.name.end());
    const std::string bytes = RunSelf(L"--probe " + name + L" --port " + std::to_wstring(server.Port()) +
                                      L" --file \"" + (folder / size.name).wstring() + L"\"");
    return std::stod(bytes) / (1 << 20);
}

} // namespace

void BenchMemory(const fs::path& folder, const std::string& rows)
{
    LoopbackServer server;
    for (const FileSize& size : {kSmall, kLarge})
    {
        MakeSparseFile(folder / size.name, size.bytes);
    }
    std::cout << "| operation | peak for 1 MiB | peak for 2 GiB less 1 byte | difference | target | met |\n"
              << "|---|---:|---:|---:|---|---|\n"
              << std::fixed << std::setprecision(2);
    for (const Operation& operation : kOperations)
    {
        if (operation.name.find(rows) == std::string_view::npos)
        {
            continue;
        }
        const double small = MeasureMiB(server, operation, folder, kSmall);
        const double large = MeasureMiB(server, operation, folder, kLarge);
        std::cout << "| " << operation.name << " | " << small << " MiB | " << large << " MiB | **" << large - small
                  << " MiB** | at most " << kTargetMiB << " MiB | " << (large - small <= kTargetMiB ? "yes" : "no")
                  << " |" << std::endl;
    }
}

void RunProbe(const Probe& probe)
{
    const auto* const operation = std::ranges::find(kOperations, probe.operation, &Operation::name);
    if (operation == kOperations.end())
    {
        throw std::runtime_error("there is no operation " + probe.operation + " to measure");
    }
    std::cout << PeakDuring([&] { operation->run(probe); });
}

} // namespace quorvex::bench
