#include "NetDiskCommands.h"

#include "Batch.h"
#include "Download.h"
#include "Failure.h"
#include "LocalFile.h"
#include "Paths.h"
#include "RemoteFile.h"
#include "ReportValues.h"
#include "Session.h"
#include "Text.h"
#include "Upload.h"

#include <array>

namespace quorvex::console
{
namespace
{

/// The protocol's uploads all go to the top of the disk.
void MoveInto(const netdisk::CNetDisk& disk, const std::string& key, const std::string& folder)
{
    const Outcome outcome{disk.FileModify(Wide(key).c_str(), Wide(folder).c_str(), L""), "FileModify"};
    if (outcome.result != 0)
        throw Failure("cannot move the file into the folder " + folder, outcome,
                      "it is uploaded, at the top of the disk, and has the key " + key);
}

Report Put(const netdisk::CNetDisk& disk, const std::string& file, const Options& options)
{
    const UploadResult upload = Upload(ToDisk(disk), file, options);
    if (!options.folder.empty())
        MoveInto(disk, upload.key, options.folder);
    Report report;
    report.Add("key", upload.key);
    report.Add("name", upload.name);
    if (options.folder.empty())
        report.AddData("folder", kTopFolder);
    else
        report.Add("folder", options.folder);
    AddSize(report, "size", upload.size);
    AddDigest(report, upload.md5);
    AddFlag(report, "instant", upload.instant);
    AddSize(report, "resumed_from", upload.resumedFrom);
    AddFlag(report, "verified", upload.verified);
    return report;
}

Outcome Remove(const netdisk::CNetDisk& disk, const std::wstring& id, const Options& options)
{
    if (options.isFolder)
        return options.forever ? Outcome(disk.FolderDel4ever(id.c_str()), "FolderDel4ever")
                               : Outcome(disk.FolderDel(id.c_str()), "FolderDel");
    return options.forever ? Outcome(disk.FileDelete4ever(id.c_str()), "FileDelete4ever")
                           : Outcome(disk.FileDelete(id.c_str()), "FileDelete");
}

/// What has been left as it was is null, and nothing for people.
void AddChange(Report& report, const std::string& name, const std::string& value)
{
    if (value.empty())
        report.AddData(name, Json::Value());
    else
        report.Add(name, value);
}

} // namespace

Report LoginCommand(const Options& options)
{
    LogIn(options);
    Report report;
    report.Add("server", options.server);
    report.Add("login", LoginMethod(options));
    return report;
}

Report LogoutCommand(const Options& options)
{
    Check({LogIn(options)->UserLogout(), "UserLogout"}, "cannot log out");
    Report report;
    report.Add("server", options.server);
    report.Add("login", LoginMethod(options));
    return report;
}

Report PutCommand(const Options& options)
{
    const auto disk = LogIn(options);
    return ForEach("files", options.files, options, [&](const std::string& file) { return Put(*disk, file, options); });
}

Report GetCommand(const Options& options)
{
    DownloadPlaces places(options.out, options.keys.size());
    const auto disk = LogIn(options);
    return ForEach("files", options.keys, options, [&](const std::string& key) {
        const DownloadSource source = FromDisk(*disk, key);
        Report report;
        report.Add("key", key);
        AddDownload(report, Download(source, places.For(source.remote.name), options));
        return report;
    });
}

Report InfoCommand(const Options& options)
{
    const auto disk = LogIn(options);
    return ForEach("files", options.keys, options, [&](const std::string& key) {
        const RemoteFile remote = AskAbout(*disk, Wide(key), "cannot ask about " + key);
        Report report;
        report.Add("key", key);
        report.Add("name", remote.stated);
        AddSize(report, "size", remote.size);
        AddDigest(report, remote.md5);
        return report;
    });
}

Report MoveCommand(const Options& options)
{
    const std::wstring id = Wide(options.key);
    const std::wstring folder = Wide(options.folder);
    const std::wstring name = JsonEscaped(options.name);
    CheckThatRequestHolds({id, folder, name}, options.isFolder ? kFolderChangeRoom : kRequestRoom);
    const auto disk = LogIn(options);
    Check(options.isFolder ? Outcome(disk->FolderModi(id.c_str(), name.c_str(), folder.c_str()), "FolderModi")
                           : Outcome(disk->FileModify(id.c_str(), folder.c_str(), name.c_str()), "FileModify"),
          "cannot change " + options.key);
    Report report;
    report.Add(options.isFolder ? "id" : "key", options.key);
    AddChange(report, "name", options.name);
    AddChange(report, "folder", options.folder);
    return report;
}

Report RemoveCommand(const Options& options)
{
    const auto disk = LogIn(options);
    return ForEach("items", options.keys, options, [&](const std::string& key) {
        Check(Remove(*disk, Wide(key), options), "cannot remove " + key);
        Report report;
        report.Add(options.isFolder ? "id" : "key", key);
        AddFlag(report, "forever", options.forever);
        return report;
    });
}

Report QuotaCommand(const Options& options)
{
    const auto disk = LogIn(options);
    unsigned long long total = 0;
    unsigned long long used = 0;
    unsigned long maxFileSize = 0;
    Check({disk->CapacityInfo(total, used, maxFileSize), "CapacityInfo"}, "cannot read the quota");
    Report report;
    AddSize(report, "total", total);
    AddSize(report, "used", used);
    AddSize(report, "free", used < total ? total - used : 0);
    AddSize(report, "max_file_size", maxFileSize);
    return report;
}

Report ChecksumCommand(const Options& options)
{
    const netdisk::CNetDisk disk;
    return ForEach("files", options.files, options, [&](const std::string& file) {
        const LocalPath local = SplitPath(Wide(file));
        const std::uint64_t size = TransferableSize(local.Whole());
        std::array<wchar_t, 33> md5{};
        unsigned long digestedSize = 0;
        Check({disk.FileGetChecksum(local.folder.c_str(), local.name.c_str(), digestedSize, md5.data()),
               "FileGetChecksum"},
              "cannot read " + ToUtf8(local.name));
        // The module has no digest for an empty file, and does not tell one apart from a file that it cannot read.
        const std::string digest = md5[0] != L'\0' ? ToUtf8(md5.data()) : DigestOf(local.Whole());
        Report report;
        report.Add("name", ToUtf8(local.name));
        AddSize(report, "size", size);
        AddDigest(report, digest);
        return report;
    });
}

} // namespace quorvex::console
