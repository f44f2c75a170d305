#include "NetDiskCommands.h"

#include "Batch.h"
#include "Download.h"
#include "Failure.h"
#include "Listings.h"
#include "LocalFile.h"
#include "Output.h"
#include "Paths.h"
#include "Progress.h"
#include "ReportValues.h"
#include "Session.h"
#include "Table.h"
#include "Text.h"
#include "Times.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quorvex::console
{
namespace
{

/// As the server numbers them.
unsigned long NumberOf(const std::string& shareType)
{
    if (shareType == "alive")
        return 1;
    return shareType == "expired" ? 2 : 0;
}

Json::Value Texts(const std::vector<std::string>& texts)
{
    Json::Value array(Json::arrayValue);
    for (const std::string& each : texts)
        array.append(each);
    return array;
}

/// All files of the share code, or the one that the options name.
std::vector<FileEntry> ChosenFiles(const netdisk::CNetDisk& disk, const Options& options)
{
    std::vector<FileEntry> files = ListShared(disk, options.pcode);
    if (!options.fileId.empty())
        std::erase_if(files, [&](const FileEntry& each) { return each.key != options.fileId; });
    return files;
}

void RequireFiles(const std::vector<FileEntry>& files, const Options& options)
{
    if (files.empty())
        throw Failure("the share code " + options.pcode +
                      (options.fileId.empty() ? " has no files" : " has no file " + options.fileId));
}

DownloadResult Fetch(const netdisk::CNetDisk& disk, const FileEntry& file, DownloadPlaces& places,
                     const Options& options)
{
    DownloadSource source = FromShare(disk, options.pcode, file);
    std::optional<FolderForAWhile> folder;
    bool isNameWhole = !IsNameCut(file);
    if (!isNameWhole && file.size <= options.largeFrom)
    {
        folder.emplace(places.Beside(SafeName(Wide(file.key), L"") + L".quorvex-part"));
        isNameWhole = FetchByWholeName(source, folder->Path());
    }
    if (!isNameWhole)
        WriteError("note: of the name " + Printable(file.name) +
                   " there may be more on the server; --out gives the file another\n");
    return Download(source, places.For(source.remote.name), options);
}

Report SharedReport(const std::string& pcode, const std::vector<FileEntry>& files)
{
    Table table{"FID", "SIZE>", "NAME"};
    Json::Value array(Json::arrayValue);
    for (const FileEntry& each : files)
    {
        table.Add({each.key, SizeText(each.size), each.name});
        Json::Value object;
        object["fid"] = each.key;
        object["name"] = each.name;
        object["size"] = Json::UInt64{each.size};
        object["md5"] = each.md5;
        array.append(object);
    }
    Report report;
    report.AddData("pcode", pcode);
    report.AddData("files", array);
    report.AddText(table.Text());
    return report;
}

} // namespace

Report ShareCommand(const Options& options)
{
    std::vector<netdisk::_FileInfo> files(options.keys.size());
    for (std::size_t i = 0; i < files.size(); ++i)
        SetField(files[i].fkey, Wide(options.keys[i]));
    const auto disk = LogIn(options);
    std::array<wchar_t, 64> pcode{};
    Check(
        {disk->PcodeCreate(files, options.span, pcode.data(), static_cast<unsigned long>(pcode.size())), "PcodeCreate"},
        "cannot share " + (files.size() == 1 ? options.keys.front() : std::to_string(files.size()) + " files"));
    Report report;
    report.Add("pcode", ToUtf8(pcode.data()));
    report.Add("files", Json::UInt64{files.size()}, std::to_string(files.size()));
    AddSpan(report, "lives_for", options.span);
    return report;
}

Report SharesCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const std::vector<ShareEntry> shares = ListShares(*disk, NumberOf(options.shareType));
    Table table{"PCODE", "CREATED", "ENDS", "DOWNLOADS>"};
    for (const ShareEntry& each : shares)
        table.Add(
            {each.pcode, LocalTimeText(each.created), LocalTimeText(each.deadline), std::to_string(each.downloads)});
    Report report;
    report.AddData("pcodes", ToJson(shares));
    report.AddText(shares.empty() ? "there are none\n" : table.Text());
    return report;
}

Report UnshareCommand(const Options& options)
{
    std::vector<netdisk::_PcodeInfo> pcodes(options.pcodes.size());
    for (std::size_t i = 0; i < pcodes.size(); ++i)
        SetField(pcodes[i].pcode, Wide(options.pcodes[i]));
    const auto disk = LogIn(options);
    Check({disk->PcodeDelete(pcodes), "PcodeDelete"},
          "cannot end " + (pcodes.size() == 1 ? "the share code " + options.pcodes.front()
                                              : std::to_string(pcodes.size()) + " share codes"));
    Report report;
    report.AddData("pcodes", Texts(options.pcodes));
    for (const std::string& each : options.pcodes)
        report.AddText("ended  " + each + '\n');
    return report;
}

Report ExtendCommand(const Options& options)
{
    const auto disk = LogIn(options);
    Check({disk->PcodeDefer(Wide(options.pcode).c_str(), options.span), "PcodeDefer"},
          "cannot extend the share code " + options.pcode);
    Report report;
    report.Add("pcode", options.pcode);
    AddSpan(report, "extended_by", options.span);
    return report;
}

Report SaveCommand(const Options& options)
{
    const auto disk = LogIn(options);
    // The answer to the saving itself tells no number.
    const std::vector<FileEntry> files = ChosenFiles(*disk, options);
    RequireFiles(files, options);
    Check({disk->PcodeSave(Wide(options.pcode).c_str(), Wide(options.inFolder).c_str()), "PcodeSave"},
          "cannot save the files of the share code " + options.pcode);
    Report report;
    report.Add("pcode", options.pcode);
    report.Add("folder", options.inFolder);
    report.Add("files", Json::UInt64{files.size()}, std::to_string(files.size()));
    return report;
}

Report FetchCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const std::vector<FileEntry> files = ChosenFiles(*disk, options);
    if (options.listOnly)
        return SharedReport(options.pcode, files);
    RequireFiles(files, options);
    DownloadPlaces places(options.out, files.size());

    std::vector<std::string> ids;
    ids.reserve(files.size());
    for (const FileEntry& file : files)
        ids.push_back(file.key);
    auto next = files.begin();
    Report report = ForEach("files", ids, options, [&](const std::string& id) {
        Report each;
        each.Add("fid", id);
        AddDownload(each, Fetch(*disk, *next++, places, options));
        return each;
    });
    report.AddData("pcode", options.pcode);
    return report;
}

} // namespace quorvex::console
