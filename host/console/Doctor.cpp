#include "LocalCommands.h"

#include "AccountSession.h"
#include "Checkup.h"
#include "Download.h"
#include "Environment.h"
#include "Failure.h"
#include "HostStorage.h"
#include "HttpExchange.h"
#include "LocalFile.h"
#include "Progress.h"
#include "SearchCommands.h"
#include "Services.h"
#include "Session.h"
#include "StorageSession.h"
#include "Text.h"
#include "Upload.h"

#include <quorvex/OnlineUserSearch.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <optional>

#include <windows.h>

namespace quorvex::console
{
namespace
{

constexpr int kPatience = 10'000; ///< milliseconds that a server has for each step

/// The options of a check: of another service, and without a transfer's progress.
Options For(const Options& options, const std::string& server)
{
    Options changed = options;
    changed.server = server;
    changed.quiet = true;
    if (changed.accounts.empty())
        changed.accounts = options.server;
    return changed;
}

/// A file of a few bytes in a folder of its own, which both are gone with it.
class Sample
{
public:
    Sample()
        : m_folder(std::filesystem::temp_directory_path() / ("quorvex-doctor-" + std::to_string(GetCurrentProcessId())))
    {
        std::filesystem::create_directories(m_folder);
        std::ofstream(Sent(), std::ios::binary) << "quorvex doctor, " << GetTickCount64() << '\n';
    }

    ~Sample()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    Sample(const Sample&) = delete;
    Sample& operator=(const Sample&) = delete;

    std::filesystem::path Sent() const { return m_folder / "quorvex-doctor.txt"; }
    std::filesystem::path Fetched() const { return m_folder / "fetched.txt"; }

private:
    std::filesystem::path m_folder;
};

/// How far one can get to a service without any login.
class Way
{
public:
    explicit Way(std::string server) : m_server(std::move(server)) {}

    void CheckBy(ServiceCheck& check)
    {
        check.Try("address", [this] { return Split(); });
        check.Try("resolve", [this] { return Reach(), Past(HttpStage::Resolve); });
        check.Try("connect", [this] { return Past(HttpStage::Connect); });
        check.Try("answer", [this] { return Past(HttpStage::Answer); });
    }

private:
    std::string Split()
    {
        const auto address = SplitAddress(m_server);
        if (!address)
            throw Failure("the address " + m_server + " is not of the form http://HOST[:PORT][/PATH]");
        m_host = ToUtf8(address->host);
        m_port = std::to_string(address->port);
        return "host " + m_host + ", port " + m_port;
    }

    /// One request tells of all stages that it has passed.
    void Reach()
    {
        try
        {
            m_status = Exchange(m_server, {}, kPatience).status;
        }
        catch (const HttpError& error)
        {
            m_stopped = error.Stage();
            m_error = error.what();
        }
    }

    std::string Past(HttpStage stage) const
    {
        if (m_stopped == stage)
            throw Failure(Complaint(stage) + " (" + m_error + ')');
        if (stage == HttpStage::Resolve)
            return m_host + " is known";
        if (stage == HttpStage::Connect)
            return "port " + m_port + " is open";
        return "HTTP status " + std::to_string(m_status);
    }

    std::string Complaint(HttpStage stage) const
    {
        if (stage == HttpStage::Resolve)
            return "no machine is known as " + m_host + ": is the name right, and is there a network";
        if (stage == HttpStage::Connect)
            return "nothing takes a connection at " + m_host + ", port " + m_port +
                   ": is the service running, and is the port right and not closed by a firewall";
        return "what listens at " + m_host + ", port " + m_port + " does not answer as an HTTP server does";
    }

    std::string m_server;
    std::string m_host;
    std::string m_port;
    int m_status = 0;
    std::optional<HttpStage> m_stopped;
    std::string m_error;
};

/// Explains a login that was refused by something else than the service.
template <class LogIn>
std::string ExplainedLogin(const Options& options, const LogIn& logIn)
{
    constexpr int kNotFound = 404;
    try
    {
        logIn();
    }
    catch (const Failure& failure)
    {
        if (failure.Code() == kNotFound || failure.Code() == Result::BadAnswer)
            throw failure.Told(std::string(failure.what()) +
                               "; an HTTP server answers there that is not this service: is the path right");
        throw;
    }
    return "with a " + LoginMethod(options);
}

void SkipAll(ServiceCheck& check, std::initializer_list<const char*> steps)
{
    for (const char* const step : steps)
        check.Skip(step, "needs login");
}

/// Uploads, downloads and removes a few bytes.
void TryTransfer(ServiceCheck& check, const UploadTarget& target, const Options& options,
                 const std::function<DownloadSource(const std::string& key)>& sourceOf,
                 const std::function<Outcome(const std::string& key)>& remove)
{
    std::optional<Sample> sample;
    std::string key;
    check.Try("upload", [&] {
        sample.emplace();
        const UploadResult upload = Upload(target, ToUtf8(sample->Sent().wstring()), options);
        key = upload.key;
        return SizeText(upload.size) + ", key " + key;
    });
    check.Try("download", [&] {
        Download(sourceOf(key), sample->Fetched(), options);
        if (DigestOf(sample->Fetched()) != DigestOf(sample->Sent()))
            throw Failure("what has come back is not what was sent");
        return std::string("unchanged");
    });
    const auto removal = [&] {
        Check(remove(key), "cannot remove the file again, which has the key " + key);
        return std::string("nothing is left");
    };
    // What was uploaded is removed also when it could not be downloaded.
    if (key.empty())
        check.Try("remove", removal);
    else
        check.TryAnyway("remove", removal);
}

ServiceCheck CheckNetDisk(const Options& given)
{
    const Options options = For(given, given.server);
    ServiceCheck check("netdisk", options.server);
    Way(options.server).CheckBy(check);
    if (LoginMethod(options).empty())
    {
        check.Skip("login", "no login is given");
        return check;
    }
    std::unique_ptr<netdisk::CNetDisk> disk;
    check.Try("login", [&] { return ExplainedLogin(options, [&] { disk = LogIn(options); }); });
    check.Try("quota", [&] {
        unsigned long long total = 0;
        unsigned long long used = 0;
        unsigned long maxFileSize = 0;
        Check({disk->CapacityInfo(total, used, maxFileSize), "CapacityInfo"}, "cannot read the quota");
        return SizeText(used) + " of " + SizeText(total) + " used";
    });
    check.Try("listing", [&] {
        const Folder folder = ListFolder(*disk, kTopFolder);
        return std::to_string(folder.folders.size()) + " folders and " + std::to_string(folder.files.size()) +
               " files at the top";
    });
    if (disk == nullptr)
    {
        SkipAll(check, {"upload", "download", "remove"});
        return check;
    }
    TryTransfer(
        check, ToDisk(*disk), options, [&](const std::string& key) { return FromDisk(*disk, key); },
        [&](const std::string& key) -> Outcome {
            return {disk->FileDelete4ever(Wide(key).c_str()), "FileDelete4ever"};
        });
    return check;
}

/// The first generation's depot, and whether the others take the session.
void CheckStorageWithLogin(ServiceCheck& check, const Options& options)
{
    std::unique_ptr<Storage> storage;
    check.Try("login", [&] { return ExplainedLogin(options, [&] { storage = std::make_unique<Storage>(options); }); });
    check.Try("space", [&] {
        double total = 0;
        double used = 0;
        double left = 0;
        Check({(*storage)->LargeFileDepotInfo(total, used, left), "LargeFileDepotInfo"},
              "cannot read the depot's space");
        return SizeText(static_cast<std::uint64_t>(left)) + " left";
    });
    if (storage == nullptr)
        return SkipAll(check, {"upload", "download", "remove", "second generation", "third generation"});
    TryTransfer(
        check, ToDepot(*storage), options, [&](const std::string& key) { return FromDepot(*storage, {}, key); },
        [&](const std::string& key) -> Outcome {
            return {(*storage)->LargeFileRemove(Wide(key).c_str()), "LargeFileRemove"};
        });
    check.TryAnyway("second generation", [&] {
        const Storage2 second(options);
        return std::string("takes the session");
    });
    check.TryAnyway("third generation", [&] {
        // This one has no login: only a request tells what it thinks of the session.
        constexpr int kNoSuchFile = 404;
        Storage3 third(options);
        char byte = 0;
        unsigned long length = 1;
        const int result = third->Bufferdownload(L"0", L"quorvex-doctor", 0, &byte, length);
        Check({result == kNoSuchFile ? 0 : result, "Bufferdownload"}, "cannot ask for a file", Transport::Host);
        return std::string("answers that a file is not there, as would a server without it");
    });
}

ServiceCheck CheckStorage(const Options& given, const std::string& server)
{
    const Options options = For(given, server);
    ServiceCheck check("storage", server);
    Way(server).CheckBy(check);
    if (LoginMethod(options).empty())
        check.Skip("login", "no login is given");
    else if (!options.ticket.empty())
        check.Skip("login", "the file storage takes no tickets");
    else
        CheckStorageWithLogin(check, options);
    return check;
}

ServiceCheck CheckSearch(const Options& given, const std::string& server)
{
    const Options options = For(given, server);
    ServiceCheck check("search", server);
    Way(server).CheckBy(check);
    if (LoginMethod(options).empty())
    {
        check.Skip("login", "no login is given");
        return check;
    }
    std::unique_ptr<COnlineUserSearch> search;
    check.Try("login", [&] { return ExplainedLogin(options, [&] { search = LogInToSearch(options); }); });
    check.Try("count", [&] {
        int count = 0;
        Check({search->QueryCountByConditionVector("quorvex-doctor", {}, count), "QueryCountByConditionVector"},
              "cannot count users");
        return std::string("is answered");
    });
    return check;
}

std::string AddressOf(const Service& service, const std::string& given, const Options& options)
{
    if (!given.empty())
        return given;
    const std::string fromEnvironment = FromEnvironment(service.variable);
    return fromEnvironment.empty() ? Beside(options.server, service) : fromEnvironment;
}

} // namespace

Report DoctorCommand(const Options& options)
{
    const std::vector<ServiceCheck> checks{CheckNetDisk(options),
                                           CheckStorage(options, AddressOf(kStorage, options.storage, options)),
                                           CheckSearch(options, AddressOf(kSearch, options.search, options))};
    Report report;
    Json::Value services(Json::arrayValue);
    for (const ServiceCheck& each : checks)
    {
        services.append(each.ToJson());
        report.AddText(each.Text());
    }
    report.AddData("services", services);
    if (const auto failure = FailureOf(checks))
        report.SetFailure(*failure);
    else
        report.AddText(LoginMethod(options).empty()
                           ? "the servers answer; give a login to have the services themselves tried\n"
                           : "all is well\n");
    return report;
}

} // namespace quorvex::console
