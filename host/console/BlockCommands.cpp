#include "DepotCommands.h"
#include "NetDiskCommands.h"

#include "Download.h"
#include "Failure.h"
#include "LocalFile.h"
#include "Paths.h"
#include "ReportValues.h"
#include "Session.h"
#include "StorageGenerations.h"
#include "Text.h"
#include "UploadTarget.h"

#include <algorithm>
#include <fstream>
#include <vector>

namespace quorvex::console
{
namespace
{

/// The steps of a transfer one by one, for whoever wants to put one together by hand.

Report Create(const UploadTarget& target, const Options& options)
{
    const LocalPath local = SplitPath(Wide(options.file));
    const std::uint64_t size = TransferableSize(local.Whole());
    std::string key;
    bool isComplete = false;
    Check(target.create(local, key, isComplete), "cannot announce " + ToUtf8(local.name), target.transport);
    Report report;
    report.Add("key", key);
    report.Add("name", ToUtf8(local.name));
    AddSize(report, "size", size);
    AddFlag(report, "complete", isComplete);
    return report;
}

std::vector<char> PieceOf(const LocalPath& local, const Options& options)
{
    const std::uint64_t size = TransferableSize(local.Whole());
    if (options.offset > size)
        throw Failure(ToUtf8(local.name) + " has only " + std::to_string(size) + " bytes");
    std::vector<char> piece(static_cast<std::size_t>(std::min(options.length, size - options.offset)));
    std::ifstream file(local.Whole(), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(options.offset));
    if (!file.read(piece.data(), static_cast<std::streamsize>(piece.size())))
        throw Failure("cannot read " + ToUtf8(local.name), Result::LocalFileFailed);
    return piece;
}

Report PieceReport(const Options& options, std::uint64_t length)
{
    Report report;
    report.Add("key", options.key);
    AddSize(report, "offset", options.offset);
    AddSize(report, "length", length);
    return report;
}

Report Send(const UploadTarget& target, const Options& options)
{
    const LocalPath local = SplitPath(Wide(options.file));
    std::vector<char> piece = PieceOf(local, options);
    UploadIds ids{options.key, {}};
    const Block block{piece.data(), static_cast<unsigned long>(piece.size()),
                      static_cast<unsigned long>(options.offset), false};
    Check(target.sendBlock(local, ids, block), "cannot send the block", target.transport);
    return PieceReport(options, piece.size());
}

Report Finish(const UploadTarget& target, const Options& options)
{
    Check(target.finish(Wide(options.key)), "cannot finish " + options.key, target.transport);
    Report report;
    report.Add("key", options.key);
    return report;
}

Report Read(const DownloadSource& source, const Options& options)
{
    std::vector<char> piece(static_cast<std::size_t>(options.length));
    auto length = static_cast<unsigned long>(piece.size());
    Check(source.fetchRange(static_cast<unsigned long>(options.offset), piece.data(), length), "cannot read the block",
          source.transport);
    const std::filesystem::path path = SplitPath(Wide(options.out)).Whole();
    std::ofstream file(path, std::ios::binary);
    file.write(piece.data(), static_cast<std::streamsize>(length));
    file.close();
    if (!file)
        throw Failure("cannot write " + NameOf(path), Result::LocalFileFailed);
    Report report = PieceReport(options, length);
    report.Add("path", ToUtf8(path.wstring()));
    return report;
}

/// In the generations of the depot in which files are announced.
template <class Use>
Report WithAnnouncedFiles(const Options& options, const Use& use)
{
    if (options.generation == 2)
    {
        Storage2 storage(options);
        return use(ToDepot(storage), options);
    }
    Storage storage(options);
    return use(ToDepot(storage), options);
}

} // namespace

Report CreateBlocksCommand(const Options& options)
{
    return Create(ToDisk(*LogIn(options)), options);
}

Report SendBlockCommand(const Options& options)
{
    return Send(ToDisk(*LogIn(options)), options);
}

Report FinishBlocksCommand(const Options& options)
{
    return Finish(ToDisk(*LogIn(options)), options);
}

Report ReadBlockCommand(const Options& options)
{
    return Read(FromDisk(*LogIn(options), options.key), options);
}

Report CreateBlocksInDepotCommand(const Options& options)
{
    return WithAnnouncedFiles(options, Create);
}

Report SendBlockToDepotCommand(const Options& options)
{
    return WithAnnouncedFiles(options, Send);
}

Report FinishBlocksInDepotCommand(const Options& options)
{
    return WithAnnouncedFiles(options, Finish);
}

Report ReadBlockFromDepotCommand(const Options& options)
{
    return WithStorage(options,
                       [&](auto& storage) { return Read(FromDepot(storage, options.uid, options.key), options); });
}

} // namespace quorvex::console
