#include "StorageCommands.h"

#include "Batch.h"
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

#include <array>
#include <functional>

namespace quorvex::console
{
namespace
{

constexpr const char* kSha1OfNothing = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

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
LocalPath FileToSend(const std::string& file)
{
    LocalPath local = SplitPath(Wide(file));
    TransferableSize(local.Whole());
    return local;
}

/// An upload under a name of its own.
struct NamedUpload
{
    int (CFileStorage::*send)(const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName) const;
    const char* operation;
};

/// Uploads under the name that the options give, or the file's own.
Report Put(const CFileStorage& storage, const std::string& file, const Options& options, const NamedUpload& upload)
{
    const LocalPath local = FileToSend(file);
    const std::wstring name = options.name.empty() ? local.name : Wide(options.name);
    if (const std::string complaint = ComplaintAboutName(ToUtf8(name)); !complaint.empty())
        throw Failure(complaint);
    CheckThatNameIsSent(name, "--name gives it another one");
    Check({(storage.*upload.send)(local.folder.c_str(), local.name.c_str(), name.c_str()), upload.operation},
          "cannot upload " + ToUtf8(name));
    return Sent(name, local);
}

template <class AnyStorage>
Report PutPicture(AnyStorage& storage, const std::string& file, Transport transport)
{
    const LocalPath local = FileToSend(file);
    if (const std::string complaint = ComplaintAboutName(ToUtf8(local.name)); !complaint.empty())
        throw Failure(complaint);
    const Outcome outcome = SendPicture(storage, local);
    if (outcome.result != 0)
        throw Failure("cannot upload " + ToUtf8(local.name), outcome,
                      outcome.result == Result::NameMismatch ? WhyNamedOtherwise(local.name) : "", transport);
    return Sent(local.name, local);
}

/// Downloads what the options name.
/// @param fetch brings one of them into a file
Report Get(const Options& options, const std::function<Outcome(const std::string& name, const LocalPath& local)>& fetch,
           Transport transport = Transport::Module)
{
    DownloadPlaces places(options.out, options.names.size());
    return ForEach("files", options.names, options, [&](const std::string& name) {
        const std::filesystem::path path = places.For(SafeName(Wide(name), L"file"));
        FetchInto(
            path, [&](const LocalPath& local) { return fetch(name, local); }, "cannot download " + name, transport);
        Report report;
        report.Add("name", name);
        report.Add("path", ToUtf8(path.wstring()));
        AddLocalFile(report, path);
        return report;
    });
}

Report LoginReport(const Options& options)
{
    Report report;
    report.Add("server", options.server);
    report.Add("login", LoginMethod(options));
    return report;
}

/// The later generations close their session of the host's service as well.
template <class Client>
Outcome LogOutAndClose(Client& client)
{
    const int result = client.UserLogout();
    client.exit();
    return {result, "UserLogout"};
}

Outcome LogOut(const Options& options)
{
    if (options.generation == 2)
        return LogOutAndClose(*Storage2(options).operator->());
    if (options.generation == 3)
        return LogOutAndClose(*Storage3(options).operator->());
    return {Storage(options).LogOut(), "UserLogout"};
}

} // namespace

Report StorageLoginCommand(const Options& options)
{
    WithStorage(options, [](const auto&) {});
    return LoginReport(options);
}

Report StorageLogoutCommand(const Options& options)
{
    Check(LogOut(options), "cannot log out", TransportOf(options));
    return LoginReport(options);
}

Report PutPictureCommand(const Options& options)
{
    return WithStorage(options, [&](auto& storage) {
        return ForEach("files", options.files, options,
                       [&](const std::string& file) { return PutPicture(storage, file, TransportOf(options)); });
    });
}

Report GetPictureCommand(const Options& options)
{
    return WithStorage(options, [&](auto& storage) {
        return Get(
            options,
            [&](const std::string& name, const LocalPath& local) { return FetchPicture(storage, name, local); },
            TransportOf(options));
    });
}

Report PutPhotoCommand(const Options& options)
{
    const Storage storage(options);
    return Put(*storage, options.file, options, {&CFileStorage::UserPhotoUpload, "UserPhotoUpload"});
}

Report GetPhotoCommand(const Options& options)
{
    const Storage storage(options);
    return Get(options, [&](const std::string& name, const LocalPath& local) -> Outcome {
        return {storage->UserPhotoDownload(local.folder.c_str(), QueryEscaped(name).c_str(), local.name.c_str()),
                "UserPhotoDownload"};
    });
}

Report PutEmoticonCommand(const Options& options)
{
    const Storage storage(options);
    return ForEach("files", options.files, options, [&](const std::string& file) {
        return Put(*storage, file, options, {&CFileStorage::EmoticonUpload, "EmoticonUpload"});
    });
}

Report GetEmoticonCommand(const Options& options)
{
    const Storage storage(options);
    return Get(options, [&, uid = Wide(options.uid)](const std::string& name, const LocalPath& local) -> Outcome {
        return {storage->EmoticonDownload(uid.c_str(), local.folder.c_str(), QueryEscaped(name).c_str(),
                                          local.name.c_str()),
                "EmoticonDownload"};
    });
}

Report RemoveEmoticonCommand(const Options& options)
{
    const Storage storage(options);
    return ForEach("items", options.names, options, [&](const std::string& name) {
        Check({storage->EmoticonRemove(QueryEscaped(name).c_str()), "EmoticonRemove"}, "cannot remove " + name);
        Report report;
        report.Add("removed", name);
        return report;
    });
}

Report ListEmoticonsCommand(const Options& options)
{
    const Storage storage(options);
    unsigned int count = 0;
    Check({storage->EmoticonGetList(nullptr, 0, count), "EmoticonGetList"}, "cannot list the emoticons");
    Report report;
    report.AddData("emoticons", Json::Value());
    report.AddText("The server has sent the list, but the module does not hand it out: how many emoticons there are\n"
                   "stands in its log alone, which --log trace shows.\n");
    return report;
}

Report StorageChecksumCommand(const Options& options)
{
    const CFileStorage storage(nullptr, nullptr);
    return ForEach("files", options.files, options, [&](const std::string& file) {
        const LocalPath local = SplitPath(Wide(file));
        const std::uint64_t size = TransferableSize(local.Whole());
        std::array<wchar_t, 33> md5{};
        std::array<wchar_t, 41> sha1{};
        unsigned long digestedSize = 0;
        Check({storage.FileGetChecksum(local.folder.c_str(), local.name.c_str(), digestedSize, md5.data(), sha1.data()),
               "FileGetChecksum"},
              "cannot read " + ToUtf8(local.name));
        // The module has no digests for an empty file, and does not tell one apart from a file that it cannot read.
        if (size != 0 && sha1[0] == L'\0')
            throw Failure("cannot read " + ToUtf8(local.name), Result::LocalFileFailed);
        Report report;
        report.Add("name", ToUtf8(local.name));
        AddSize(report, "size", size);
        AddDigest(report, size != 0 ? ToUtf8(md5.data()) : DigestOf(local.Whole()));
        report.Add("sha1", size != 0 ? ToUtf8(sha1.data()) : kSha1OfNothing);
        return report;
    });
}

} // namespace quorvex::console
