#include "NetDiskCommands.h"

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
    const int result = disk.FileModify(Wide(key).c_str(), Wide(folder).c_str(), L"");
    if (result != 0)
        throw Failure("cannot move the file into the folder " + folder, result,
                      "it is uploaded, at the top of the disk, and has the key " + key);
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

Report PutCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const UploadResult upload = Upload(ToDisk(*disk), options);
    if (!options.folder.empty())
        MoveInto(*disk, upload.key, options.folder);
    Report report;
    report.Add("key", upload.key);
    report.Add("name", upload.name);
    if (!options.folder.empty())
        report.Add("folder", options.folder);
    AddSize(report, "size", upload.size);
    AddDigest(report, upload.md5);
    AddFlag(report, "instant", upload.instant);
    AddSize(report, "resumed_from", upload.resumedFrom);
    AddFlag(report, "verified", upload.verified);
    return report;
}

Report GetCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const DownloadSource source = FromDisk(*disk, options.key);
    const DownloadResult download = Download(source, TargetOf(options.out, source.remote.name), options);
    Report report;
    report.Add("key", options.key);
    AddDownload(report, download);
    return report;
}

Report InfoCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const RemoteFile remote = AskAbout(*disk, Wide(options.key), "cannot ask about " + options.key);
    Report report;
    report.Add("key", options.key);
    report.Add("name", ToUtf8(remote.name));
    AddSize(report, "size", remote.size);
    AddDigest(report, remote.md5);
    return report;
}

Report MoveCommand(const Options& options)
{
    const std::wstring id = Wide(options.key);
    const std::wstring folder = Wide(options.folder);
    const std::wstring name = JsonEscaped(options.name);
    CheckThatRequestHolds({id, folder, name}, options.isFolder ? kFolderChangeRoom : kRequestRoom);
    const auto disk = LogIn(options);
    Check(options.isFolder ? disk->FolderModi(id.c_str(), name.c_str(), folder.c_str())
                           : disk->FileModify(id.c_str(), folder.c_str(), name.c_str()),
          "cannot change " + options.key);
    Report report;
    report.Add(options.isFolder ? "id" : "key", options.key);
    if (!options.name.empty())
        report.Add("name", options.name);
    if (!options.folder.empty())
        report.Add("folder", options.folder);
    return report;
}

Report RemoveCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const std::wstring id = Wide(options.key);
    const auto remove = options.isFolder
                            ? (options.forever ? &netdisk::CNetDisk::FolderDel4ever : &netdisk::CNetDisk::FolderDel)
                            : (options.forever ? &netdisk::CNetDisk::FileDelete4ever : &netdisk::CNetDisk::FileDelete);
    Check(((*disk).*remove)(id.c_str()), "cannot remove " + options.key);
    Report report;
    report.Add(options.isFolder ? "id" : "key", options.key);
    AddFlag(report, "forever", options.forever);
    return report;
}

Report QuotaCommand(const Options& options)
{
    const auto disk = LogIn(options);
    unsigned long long total = 0;
    unsigned long long used = 0;
    unsigned long maxFileSize = 0;
    Check(disk->CapacityInfo(total, used, maxFileSize), "cannot read the quota");
    Report report;
    AddSize(report, "total", total);
    AddSize(report, "used", used);
    AddSize(report, "free", used < total ? total - used : 0);
    AddSize(report, "max_file_size", maxFileSize);
    return report;
}

Report ChecksumCommand(const Options& options)
{
    const LocalPath local = SplitPath(Wide(options.file));
    const std::uint64_t size = TransferableSize(local.Whole());
    std::array<wchar_t, 33> md5{};
    unsigned long digestedSize = 0;
    const netdisk::CNetDisk disk;
    Check(disk.FileGetChecksum(local.folder.c_str(), local.name.c_str(), digestedSize, md5.data()),
          "cannot read " + ToUtf8(local.name));
    // The module has no digest for an empty file; and it does not tell one apart from a file that it cannot read.
    const std::string digest = md5[0] != L'\0' ? ToUtf8(md5.data()) : DigestOf(local.Whole());
    Report report;
    report.Add("name", ToUtf8(local.name));
    AddSize(report, "size", size);
    AddDigest(report, digest);
    return report;
}

} // namespace quorvex::console
