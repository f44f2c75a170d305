#include "DepotCommands.h"

#include "DepotListing.h"
#include "Download.h"
#include "Failure.h"
#include "Listings.h"
#include "Paths.h"
#include "Progress.h"
#include "RemoteFile.h"
#include "ReportValues.h"
#include "StorageGenerations.h"
#include "Table.h"
#include "Text.h"
#include "Times.h"
#include "Upload.h"

#include <vector>

namespace quorvex::console
{
namespace
{

std::vector<DepotEntry> ListDepot(Storage& storage)
{
    std::vector<LargeFileInfo> records;
    Check(storage.Run([&](const CFileStorage& depot) { return depot.LargeFileGetList(records); }),
          "cannot list the depot");
    std::vector<DepotEntry> entries;
    entries.reserve(records.size());
    for (const LargeFileInfo& record : records)
        entries.push_back(EntryOf(record));
    return entries;
}

/// The module gives spaces as floating-point numbers.
std::uint64_t Bytes(double space)
{
    constexpr double most = 9.0e18;
    return space > 0 && space < most ? static_cast<std::uint64_t>(space) : 0;
}

Report SpaceReport(Storage& storage)
{
    double total = 0;
    double used = 0;
    double left = 0;
    Check(storage.Run([&](const CFileStorage& depot) { return depot.LargeFileDepotInfo(total, used, left); }),
          "cannot read the depot's space");
    Report report;
    AddSize(report, "total", Bytes(total));
    AddSize(report, "used", Bytes(used));
    AddSize(report, "free", Bytes(left));
    return report;
}

Report FileReport(Storage& storage, const Options& options)
{
    const RemoteFile remote =
        AskAbout(storage, Wide(options.uid), Wide(options.key), "cannot ask about " + options.key);
    Report report;
    report.Add("key", options.key);
    report.Add("name", ToUtf8(remote.name));
    AddSize(report, "size", remote.size);
    AddDigest(report, remote.md5);
    return report;
}

} // namespace

Report PutInDepotCommand(const Options& options)
{
    const UploadResult upload = WithStorage(options, [&](auto& storage) { return Upload(ToDepot(storage), options); });
    Report report;
    report.Add("key", upload.key);
    report.Add("name", upload.name);
    AddSize(report, "size", upload.size);
    AddDigest(report, upload.md5);
    AddSize(report, "resumed_from", upload.resumedFrom);
    AddFlag(report, "verified", upload.verified);
    return report;
}

Report GetFromDepotCommand(const Options& options)
{
    const DownloadResult download = WithStorage(options, [&](auto& storage) {
        const DownloadSource source = FromDepot(storage, options.uid, options.key);
        return Download(source, TargetOf(options.out, source.remote.name), options);
    });
    Report report;
    report.Add("key", options.key);
    AddDownload(report, download);
    return report;
}

Report ListDepotCommand(const Options& options)
{
    Storage storage(options);
    const std::vector<DepotEntry> files = ListDepot(storage);
    Table table{"KEY", "SIZE>", "CREATED", "LEFT>", "STATE", "NAME"};
    for (const DepotEntry& each : files)
        table.Add({each.key, SizeText(each.size), each.created, RoughSpanText(each.minutesLeft),
                   each.finished ? "complete" : "arriving", each.name});
    Report report;
    report.AddData("files", ToJson(files));
    report.AddText(files.empty() ? "the depot is empty\n" : table.Text());
    return report;
}

Report RemoveFromDepotCommand(const Options& options)
{
    const std::wstring key = Wide(options.key);
    const auto remove = [&](auto&& storage) {
        return storage.Run([&](auto& depot) { return depot.LargeFileRemove(key.c_str()); });
    };
    Check(options.generation == 2 ? remove(Storage2(options)) : remove(Storage(options)),
          "cannot remove " + options.key, TransportOf(options));
    Report report;
    report.Add("removed", options.key);
    return report;
}

Report RenewInDepotCommand(const Options& options)
{
    Storage storage(options);
    const std::wstring key = Wide(options.key);
    Check(storage.Run([&](const CFileStorage& depot) { return depot.LargeFileRenewTime(key.c_str()); }),
          "cannot have " + options.key + " kept longer");
    Report report;
    report.Add("renewed", options.key);
    return report;
}

Report DepotInfoCommand(const Options& options)
{
    Storage storage(options);
    return options.key.empty() ? SpaceReport(storage) : FileReport(storage, options);
}

} // namespace quorvex::console
