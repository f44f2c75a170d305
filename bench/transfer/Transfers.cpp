#include "Transfers.h"

#include "BareClient.h"
#include "LoopbackServer.h"
#include "NetDiskClient.h"
#include "Pairs.h"
#include "StorageClient.h"
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
constexpr std::uint32_t kBlockSize = 1U << 20;
constexpr std::uint32_t kBlockPosition = 100 * kBlockSize;

template <class Client>
Pair Uploads(const char* name, LoopbackServer& server, const Client& module, const BareClient& bare,
             const fs::path& source)
{
    return {.name = name,
            .first = [&module, source] { module.Upload(source); },
            .second = [&bare, source] { bare.Upload(source); },
            .prepare = [&server] { server.SetFileSize(kFileSize); }};
}

template <class Client>
Pair Downloads(const char* name, LoopbackServer& server, const Client& module, const BareClient& bare,
               const fs::path& target)
{
    return {.name = name,
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
                },
            .prepare = [&server] { server.SetFileSize(kFileSize); }};
}

template <class Client>
Pair BlockUploads(const char* name, int blocks, LoopbackServer& server, const Client& module, const BareClient& bare,
                  std::vector<char>& block)
{
    return {.name = name,
            .first = [&] { module.UploadBlock(block, kBlockPosition); },
            .second = [&] { bare.UploadBlock(block, kBlockPosition); },
            .repetitions = blocks,
            // The network disk's client compares the answer with the block that it sent.
            .prepare = [&server] { server.SetFileSize(kBlockSize); }};
}

template <class Client>
Pair BlockDownloads(const char* name, int blocks, LoopbackServer& server, const Client& module, const BareClient& bare,
                    std::vector<char>& block)
{
    return {.name = name,
            .first = [&] { module.DownloadBlock(block, kBlockPosition); },
            .second = [&] { bare.DownloadBlock(block, kBlockPosition); },
            .repetitions = blocks,
            .prepare = [&server] { server.SetFileSize(kFileSize); }};
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

} // namespace

void BenchTransfers(const fs::path& folder, int runs, const std::string& rows)
{
    LoopbackServer server;
    const NetDiskClient disk(server.Port());
    const BareClient bareDisk(server.Port(), kBareNetDisk);
    const StorageClient storage(server.Port());
    const BareClient bareStorage(server.Port(), kBareStorage);
    const fs::path source = folder / "data.bin";
    const fs::path target = folder / "received.bin";
    MakeSparseFile(source, kFileSize);
    std::vector<char> block(kBlockSize, 'x');

    std::vector<Pair> pairs{
        Uploads("FileUpload, 256 MiB", server, disk, bareDisk, source),
        Downloads("FileDownload, 256 MiB", server, disk, bareDisk, target),
        SmallGets(disk, bareDisk),
        SmallPosts(disk, bareDisk),
        BlockDownloads("LargeFileDownload, 64 blocks of 1 MiB", 64, server, disk, bareDisk, block),
        BlockUploads("LargeFileUpload, 64 blocks of 1 MiB", 64, server, disk, bareDisk, block),
        Uploads("storage:FileUpload, 256 MiB", server, storage, bareStorage, source),
        Downloads("storage:FileDownload, 256 MiB", server, storage, bareStorage, target),
        BlockDownloads("depot:LargeFileDownload, 256 blocks of 1 MiB", 256, server, storage, bareStorage, block),
        BlockUploads("depot:LargeFileUpload, 256 blocks of 1 MiB", 256, server, storage, bareStorage, block),
    };
    std::erase_if(pairs, [&rows](const Pair& pair) { return pair.name.find(rows) == std::string::npos; });
    CompareAndPrint({"operation", "module", "bare loop", "module's share of the bare loop's speed"},
                    {Target::Bound::AtLeast, 0.97}, pairs, runs);
}

} // namespace quorvex::bench
