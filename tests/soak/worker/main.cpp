// The worker of the soak test, a host like any other: performs operations of all classes, keeps book of what was
// acknowledged, and compares at the end. Started by the native program beside it, to which it talks in lines.

#include "LockCounter.h"
#include "Resources.h"
#include "Thread.h"

#include <ferrolink/log.h>

#include <cstdio>
#include <deque>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <thread>

namespace
{

using namespace quorvex::soak;

struct Plan
{
    std::wstring server;
    std::filesystem::path folder;
    std::uint64_t operations = 0;
    std::uint64_t checkpoint = 0;
    int threads = 0;
    std::uint64_t seed = 0;
    std::wstring log;
};

Plan ReadPlan(int argc, wchar_t** argv)
{
    if (argc < 7)
    {
        throw std::invalid_argument("arguments: PORT FOLDER OPERATIONS CHECKPOINT THREADS SEED [LOG]");
    }
    return {.server = std::wstring(L"http://127.0.0.1:") + argv[1],
            .folder = argv[2],
            .operations = std::stoull(argv[3]),
            .checkpoint = std::stoull(argv[4]),
            .threads = std::stoi(argv[5]),
            .seed = std::stoull(argv[6]),
            .log = argc > 7 ? argv[7] : L""};
}

std::vector<Account> ReadAccounts(const std::filesystem::path& file)
{
    std::ifstream lines(file);
    std::vector<Account> accounts;
    const auto wide = [](const std::string& text) { return std::wstring(text.begin(), text.end()); };
    std::string name, password, uid, session, blowfish, ticket;
    while (lines >> name >> password >> uid >> session >> blowfish >> ticket)
    {
        accounts.push_back({wide(name), wide(password), wide(uid), wide(session), wide(blowfish), wide(ticket)});
    }
    return accounts;
}

void DropLine(void* /*context*/, unsigned /*level*/, const wchar_t* /*line*/, size_t /*length*/)
{
}

/// Everything is logged, as in a host that looks for a fault, so that the lines' making is part of the test.
void StartLog(const std::wstring& file)
{
    if (file.empty())
    {
        frl_log_set_callback(DropLine, nullptr);
    }
    else
    {
        frl_log_set_file(file.c_str());
    }
    frl_log_set_level(FRL_LOG_TRACE | FRL_LOG_DEBUG | FRL_LOG_ERROR);
}

/// Asks for no more faults, and returns when it is so.
void AskForCalm()
{
    constexpr const char* wanted = "calm";
    Say(wanted);
    std::string answer;
    if (!std::getline(std::cin, answer) || answer != wanted)
    {
        throw std::runtime_error("no answer");
    }
}

/// Runs the same on all threads, each started for it.
void Together(std::deque<Thread>& threads, Tally& tally, const std::function<void(Thread&)>& run)
{
    std::vector<std::jthread> running;
    for (Thread& thread : threads)
    {
        running.emplace_back([&] {
            try
            {
                run(thread);
            }
            catch (const std::exception& error)
            {
                tally.Fail(std::string("a thread ended: ") + error.what());
            }
        });
    }
}

std::string Share(std::uint64_t part, std::uint64_t whole)
{
    return std::to_string(part) + " of " + std::to_string(whole);
}

void PrintVerdict(const Verdict& verdict)
{
    Say("\n| acknowledged | found at the end |\n|---|---:|");
    Say("| files, downloaded again and compared byte for byte | " + Share(verdict.filesVerified, verdict.files) + " |");
    Say("| their bytes | " + std::to_string(verdict.bytesVerified) + " |");
    Say("| deletions, and nothing came back | " + Share(verdict.deletionsVerified, verdict.deletions) + " |");
    Say("| places, digests, folders, bin items, share codes, presence | " +
        Share(verdict.othersVerified, verdict.others) + " |");
    Say("| uncertain, since an operation on it failed | " + std::to_string(verdict.uncertain) + " |");
}

/// What may differ between two looks. Pages: the system's heaps hold freed ones back for later, as many as happened to
/// be needed at once. Blocks: each of the three binaries has a thread library that keeps the records and locks of
/// as many threads as ever met in it at once. Its locks: each has a handle from its first contention on.
constexpr std::int64_t kMemoryAllowance = 1 << 20;
constexpr std::int64_t kBlocksPerThread = 3;
constexpr std::int64_t kLocks = 16;

void CheckResources(const Resources& first, const Resources& last, int threads, Tally& tally)
{
    const auto grown = [](std::uint64_t before, std::uint64_t after) {
        return static_cast<std::int64_t>(after) - static_cast<std::int64_t>(before);
    };
    if (first.handles == 0 || first.committed == 0)
    {
        tally.Fail("the system tells no figures");
    }
    if (first.handles != last.handles)
    {
        tally.Fail("the number of handles changed");
    }
    if (grown(first.lockHandles, last.lockHandles) > kLocks)
    {
        tally.Fail("locks were left behind");
    }
    if (last.blocks.count - first.blocks.count > kBlocksPerThread * threads)
    {
        tally.Fail("heap blocks were left behind");
    }
    if (grown(first.committed, last.committed) > kMemoryAllowance ||
        grown(first.resident, last.resident) > kMemoryAllowance)
    {
        tally.Fail("memory grew");
    }
}

void Run(const Plan& plan)
{
    StartLog(plan.log);
    Say("progress 0"); // what saying something takes is taken before memory is watched
    Tally tally(1000);
    Verdict verdict;
    const std::vector<Account> accounts = ReadAccounts(plan.folder / "accounts");
    std::deque<Thread> threads;
    for (int i = 0; i < plan.threads; ++i)
    {
        const std::filesystem::path folder = plan.folder / std::to_string(i);
        std::filesystem::create_directory(folder);
        const std::size_t mostFiles =
            static_cast<std::size_t>(plan.operations) / static_cast<std::size_t>(plan.threads) / 8 + 200;
        const auto at = static_cast<std::size_t>(i) * 2;
        threads.emplace_back(Setting{.number = i,
                                     .server = plan.server,
                                     .folder = folder,
                                     .mostFiles = mostFiles,
                                     .tally = tally,
                                     .verdict = verdict,
                                     .random = Random(plan.seed * 1000 + at)},
                             accounts.at(at), accounts.at(at + 1));
    }

    Together(threads, tally, [&](Thread& thread) { thread.Work(plan.checkpoint); });
    const Resources first = MeasureAtRest();
    Together(threads, tally, [&](Thread& thread) { thread.Work(plan.operations); });
    const Resources last = MeasureAtRest();

    AskForCalm();
    tally.SetCalm(true);
    Together(threads, tally, [](Thread& thread) { thread.Verify(); });

    tally.Print();
    PrintVerdict(verdict);
    Say(TableOf(first, last, "after " + std::to_string(plan.checkpoint)));
    CheckResources(first, last, plan.threads, tally);
    if (verdict.filesVerified == 0 || verdict.deletionsVerified == 0 || verdict.othersVerified == 0)
    {
        tally.Fail("nothing was there to be looked for");
    }
    if (tally.HasFailed())
    {
        throw std::runtime_error("not all held");
    }
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    try
    {
        CountBlocks();
        CountLockHandles();
        Run(ReadPlan(argc, argv));
        Say("held");
        return 0;
    }
    catch (const std::exception& error)
    {
        Say(std::string("FAILED: ") + error.what());
        return 1;
    }
}
