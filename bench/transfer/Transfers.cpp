#include "Transfers.h"

#include "BareClient.h"
#include "LoopbackServer.h"
#include "NetDiskClient.h"
#include "Pairs.h"
#include "WorkFolder.h"

#include <stdexcept>
#include <vector>

namespace quorvex::bench
{

namespace
{

namespace fs = std::filesystem;

constexpr std::uint64_t kFileSize = 256ULL << 20;
constexpr int kRequests = 500;
constexpr unsigned long kBlockSize = 1UL << 20;
constexpr unsigned long kBlockPosition = 100 * kBlockSize;
constexpr int kBlocks = 64;

Pair Uploads(const NetDiskClient& module, const BareClient& bare, const fs::path& source)
{
    return {.name = "FileUpload, 256 MiB",
            .first = [&module, source] { module.Upload(source); },
            .second = [&bare, source] { bare.Upload(source); }};
}

Pair Downloads(const NetDiskClient& module, const BareClient& bare, const fs::path& target)
{
    return {.name = "FileDownload, 256 MiB",
            .first = [&module, target] { module.Download(target); },
            .second = [&bare, target] { bare.Download(target); },
            // Both have to make the file anew, and neither is measured by what the other has left.
            .cleanUp =
                [target] {
                    if (fs::file_size(target) != kFileSize)
                    {
                        throw std::runtime_error("a download is not whole");
                    }
                    fs::remove(target);
                }};
}

Pair SmallGets(const NetDiskClient& module, const BareClient& bare)
{
    return {.name = "CapacityInfo, 500 requests",
            .first =
                [&module] {
                    unsigned long long total = 0;
                    unsigned long long used = 0;
                    unsigned long maximum = 0;
                    CheckResult(module->CapacityInfo(total, used, maximum), "CapacityInfo");
                },
            .second = [&bare] { bare.Get(L"/capacity/info"); },
            .repetitions = kRequests};
}

Pair SmallPosts(const NetDiskClient& module, const BareClient& bare)
{
    return {.name = "FileDelete, 500 requests",
            .first = [&module] { CheckResult(module->FileDelete(L"k"), "FileDelete"); },
            .second = [&bare] { bare.Post(L"/file/del", R"({"fkey":"k"})"); },
            .repetitions = kRequests};
}

Pair BlockUploads(LoopbackServer& server, const NetDiskClient& module, const BareClient& bare, std::vector<char>& block)
{
    return {.name = "LargeFileUpload, 64 blocks of 1 MiB",
            .first =
                [&] {
                    CheckResult(module->LargeFileUpload(L"k", block.data(), kBlockSize, kBlockPosition),
                                "LargeFileUpload");
                },
            .second = [&] { bare.UploadBlock(block, kBlockPosition); },
            .repetitions = kBlocks,
            // The module compares the answer with the block that it sent.
            .prepare = [&server] { server.SetFileSize(kBlockSize); }};
}

Pair BlockDownloads(const NetDiskClient& module, const BareClient& bare, std::vector<char>& block)
{
    return {.name = "LargeFileDownload, 64 blocks of 1 MiB",
            .first =
                [&] {
                    unsigned long size = kBlockSize;
                    CheckResult(module->LargeFileDownload(L"k", kBlockPosition, block.data(), size),
                                "LargeFileDownload");
                    if (size != kBlockSize)
                    {
                        throw std::runtime_error("a block is not whole");
                    }
                },
            .second = [&] { bare.DownloadBlock(block, kBlockPosition); },
            .repetitions = kBlocks};
}

} // namespace

void BenchTransfers(const fs::path& folder, int runs)
{
    LoopbackServer server;
    const NetDiskClient module(server.Port());
    const BareClient bare(server.Port());
    const fs::path source = folder / "data.bin";
    MakeSparseFile(source, kFileSize);
    std::vector<char> block(kBlockSize, 'x');

    const Columns columns{"operation", "module", "bare loop", "module's share of the bare loop's speed"};
    const Target target{Target::Bound::AtLeast, 0.97};

    server.SetFileSize(kFileSize);
    CompareAndPrint(columns, target,
                    {Uploads(module, bare, source), Downloads(module, bare, folder / "received.bin"),
                     SmallGets(module, bare), SmallPosts(module, bare), BlockDownloads(module, bare, block),
                     BlockUploads(server, module, bare, block)},
                    runs);
}

} // namespace quorvex::bench
