#include "StorageCommands.h"

#include "Failure.h"
#include "LocalFile.h"
#include "Paths.h"
#include "Pictures.h"
#include "ReportValues.h"
#include "Session.h"
#include "StorageGenerations.h"
#include "StorageNames.h"
#include "Text.h"

#include <quorvex/Results.h>

#include <functional>

namespace quorvex::console
{
namespace
{

using UploadNamed = int (CFileStorage::*)(const wchar_t* folder, const wchar_t* fileName,
                                          const wchar_t* serverName) const;

void AddLocalFile(Report& report, const std::filesystem::path& path)
{
    AddSize(report, "size", std::filesystem::file_size(path));
    AddDigest(report, DigestOf(path));
}

Report Sent(const std::wstring& name, const LocalPath& local)
{
    Report report;
    report.Add("name", ToUtf8(name));
    AddLocalFile(report, local.Whole());
    return report;
}

/// What is to be uploaded, which has to be a file that the protocol can carry.
LocalPath FileToSend(const Options& options)
{
    LocalPath local = SplitPath(Wide(options.file));
    TransferableSize(local.Whole());
    return local;
}

/// Uploads under the name that the options give, or the file's own.
Report Put(const Options& options, UploadNamed upload)
{
    const LocalPath local = FileToSend(options);
    const std::wstring name = options.name.empty() ? local.name : Wide(options.name);
    if (const std::string complaint = ComplaintAboutName(ToUtf8(name)); !complaint.empty())
        throw Failure(complaint);
    CheckThatNameIsSent(name, "--name gives it another one");
    const Storage storage(options);
    Check(((*storage).*upload)(local.folder.c_str(), local.name.c_str(), name.c_str()),
          "cannot upload " + ToUtf8(name));
    return Sent(name, local);
}

/// @param fetch writes the file that the options name
Report Get(const Options& options, const std::function<int(const LocalPath&)>& fetch,
           Transport transport = Transport::Module)
{
    const std::filesystem::path path = TargetOf(options.out, SafeName(Wide(options.key), L"file"));
    FetchInto(path, fetch, "cannot download " + options.key, transport);
    Report report;
    report.Add("name", options.key);
    report.Add("path", ToUtf8(path.wstring()));
    AddLocalFile(report, path);
    return report;
}

} // namespace

Report StorageLoginCommand(const Options& options)
{
    WithStorage(options, [](const auto&) {});
    Report report;
    report.Add("server", options.server);
    report.Add("login", LoginMethod(options));
    return report;
}

Report PutPictureCommand(const Options& options)
{
    const LocalPath local = FileToSend(options);
    if (const std::string complaint = ComplaintAboutName(ToUtf8(local.name)); !complaint.empty())
        throw Failure(complaint);
    const int result = WithStorage(options, [&](auto& storage) { return SendPicture(storage, local); });
    if (result != 0)
        throw Failure("cannot upload " + ToUtf8(local.name), result,
                      result == Result::NameMismatch ? WhyNamedOtherwise(local.name) : "", TransportOf(options));
    return Sent(local.name, local);
}

Report GetPictureCommand(const Options& options)
{
    return WithStorage(options, [&](auto& storage) {
        return Get(
            options, [&](const LocalPath& local) { return FetchPicture(storage, options.key, local); },
            TransportOf(options));
    });
}

Report PutPhotoCommand(const Options& options)
{
    return Put(options, &CFileStorage::UserPhotoUpload);
}

Report GetPhotoCommand(const Options& options)
{
    const Storage storage(options);
    return Get(options, [&, key = QueryEscaped(options.key)](const LocalPath& local) {
        return storage->UserPhotoDownload(local.folder.c_str(), key.c_str(), local.name.c_str());
    });
}

Report PutEmoticonCommand(const Options& options)
{
    return Put(options, &CFileStorage::EmoticonUpload);
}

Report GetEmoticonCommand(const Options& options)
{
    const Storage storage(options);
    return Get(options, [&, uid = Wide(options.uid), key = QueryEscaped(options.key)](const LocalPath& local) {
        return storage->EmoticonDownload(uid.c_str(), local.folder.c_str(), key.c_str(), local.name.c_str());
    });
}

Report RemoveEmoticonCommand(const Options& options)
{
    const Storage storage(options);
    Check(storage->EmoticonRemove(QueryEscaped(options.key).c_str()), "cannot remove " + options.key);
    Report report;
    report.Add("removed", options.key);
    return report;
}

Report ListEmoticonsCommand(const Options& options)
{
    const Storage storage(options);
    unsigned int count = 0;
    Check(storage->EmoticonGetList(nullptr, 0, count), "cannot list the emoticons");
    Report report;
    report.AddData("emoticons", Json::Value());
    report.AddText("The server has sent the list, but the module does not hand it out: how many emoticons there are\n"
                   "stands in its log alone, which --log trace shows.\n");
    return report;
}

} // namespace quorvex::console
