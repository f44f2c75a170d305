#include "DepotCommands.h"

#include "Batch.h"
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
    Check({storage.Run([&](const CFileStorage& depot) { return depot.LargeFileGetList(records); }), "LargeFileGetList"},
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
    Check({storage.Run([&](const CFileStorage& depot) { return depot.LargeFileDepotInfo(total, used, left); }),
           "LargeFileDepotInfo"},
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
    report.Add("name", remote.stated);
    AddSize(report, "size", remote.size);
    AddDigest(report, remote.md5);
    return report;
}

} // namespace

Report PutInDepotCommand(const Options& options)
{
    return WithStorage(options, [&](auto& storage) {
        return ForEach("files", options.files, options, [&](const std::string& file) {
            const UploadResult upload = Upload(ToDepot(storage), file, options);
            Report report;
            report.Add("key", upload.key);
            report.Add("name", upload.name);
            AddSize(report, "size", upload.size);
            AddDigest(report, upload.md5);
            AddSize(report, "resumed_from", upload.resumedFrom);
            AddFlag(report, "verified", upload.verified);
            return report;
        });
    });
}

Report GetFromDepotCommand(const Options& options)
{
    DownloadPlaces places(options.out, options.keys.size());
    return WithStorage(options, [&](auto& storage) {
        return ForEach("files", options.keys, options, [&](const std::string& key) {
            const DownloadSource source = FromDepot(storage, options.uid, key);
            Report report;
            report.Add("key", key);
            AddDownload(report, Download(source, places.For(source.remote.name), options));
            return report;
        });
    });
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
    const auto removeFrom = [&](auto&& storage) {
        return ForEach("items", options.keys, options, [&](const std::string& key) {
            const std::wstring wideKey = Wide(key);
            const int result = storage.Run([&](auto& depot) { return depot.LargeFileRemove(wideKey.c_str()); });
            Check({result, "LargeFileRemove"}, "cannot remove " + key, TransportOf(options));
            Report report;
            report.Add("removed", key);
            return report;
        });
    };
    return options.generation == 2 ? removeFrom(Storage2(options)) : removeFrom(Storage(options));
}

Report RenewInDepotCommand(const Options& options)
{
    Storage storage(options);
    return ForEach("items", options.keys, options, [&](const std::string& key) {
        const std::wstring wideKey = Wide(key);
        const int result =
            storage.Run([&](const CFileStorage& depot) { return depot.LargeFileRenewTime(wideKey.c_str()); });
        Check({result, "LargeFileRenewTime"}, "cannot have " + key + " kept longer");
        Report report;
        report.Add("renewed", key);
        return report;
    });
}

Report DepotInfoCommand(const Options& options)
{
    Storage storage(options);
    return options.key.empty() ? SpaceReport(storage) : FileReport(storage, options);
}

} // namespace quorvex::console
