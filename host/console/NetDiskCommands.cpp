#include "NetDiskCommands.h"

#include "Download.h"
#include "Failure.h"
#include "LocalFile.h"
#include "Paths.h"
#include "Progress.h"
#include "RemoteFile.h"
#include "Session.h"
#include "Text.h"
#include "Upload.h"

#include <array>

namespace quorvex::console
{
namespace
{

void AddSize(Report& report, const std::string& name, std::uint64_t bytes)
{
    report.Add(name, Json::UInt64{bytes}, ExactSizeText(bytes));
}

void AddFlag(Report& report, const std::string& name, bool value)
{
    report.Add(name, value, value ? "yes" : "no");
}

void AddDigest(Report& report, const std::string& md5)
{
    report.Add("md5", md5.empty() ? Json::Value() : Json::Value(md5), md5.empty() ? "not told by the server" : md5);
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
    const UploadResult upload = Upload(*disk, options);
    Report report;
    report.Add("key", upload.key);
    report.Add("name", upload.name);
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
    const DownloadResult download = Download(*disk, options);
    Report report;
    report.Add("key", options.key);
    report.Add("name", ToUtf8(download.remote.name));
    report.Add("path", ToUtf8(download.path.wstring()));
    AddSize(report, "size", download.remote.size);
    AddDigest(report, download.remote.md5);
    AddSize(report, "resumed_from", download.resumedFrom);
    AddFlag(report, "verified", download.verified);
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
    const std::wstring key = Wide(options.key);
    const std::wstring folder = JsonEscaped(options.folder);
    const std::wstring name = JsonEscaped(options.name);
    CheckThatRequestHolds({key, folder, name});
    const auto disk = LogIn(options);
    Check(disk->FileModify(key.c_str(), folder.c_str(), name.c_str()), "cannot change " + options.key);
    Report report;
    report.Add("key", options.key);
    if (!options.name.empty())
        report.Add("name", options.name);
    if (!options.folder.empty())
        report.Add("folder", options.folder);
    return report;
}

Report RemoveCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const std::wstring key = Wide(options.key);
    Check(options.forever ? disk->FileDelete4ever(key.c_str()) : disk->FileDelete(key.c_str()),
          "cannot remove " + options.key);
    Report report;
    report.Add("key", options.key);
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
