#include "Application.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace quorvex::services
{

namespace
{

constexpr const char* LockName = "lock";
constexpr const char* DatabaseName = "services.db";

// The services remove what they do not know from their folder, so nobody else's must be taken for it.
void RequireOwnFolder(const std::filesystem::path& folder)
{
    if (std::filesystem::exists(folder / DatabaseName))
    {
        return;
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        // A first start that was cut off leaves the lock alone behind.
        if (entry.path().filename() != LockName)
        {
            throw std::runtime_error("the data folder " + folder.string() + " holds something else");
        }
    }
}

// What is stored belongs to the people who stored it, not to everybody on the machine.
FileHandle LockFolder(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    RequireOwnFolder(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    FileHandle lock(folder / LockName, FileHandle::Mode::OpenOrCreate);
    if (!lock.TryLock())
    {
        throw std::runtime_error("another process uses the data folder " + folder.string());
    }
    return lock;
}

} // namespace

Application::Application(Options options)
    : options_(std::move(options)),
      lock_(LockFolder(options_.dataFolder)),
      database_(options_.dataFolder / DatabaseName),
      accounts_(database_, options_.hashIterations),
      sessions_(database_, options_.clock, options_.lifetimes),
      passwords_(accounts_, options_.clock),
      blobs_(database_, options_.dataFolder),
      partials_(database_, options_.dataFolder),
      folders_(database_, options_.clock),
      netDiskStore_(database_, blobs_, partials_, folders_, options_.clock, options_.netDiskLimits),
      recycleBin_(database_, folders_, netDiskStore_, options_.clock),
      shares_(database_, folders_, netDiskStore_, options_.clock),
      largeFiles_(database_, blobs_, partials_, netDiskStore_),
      storageSpace_(database_, options_.storageLimits),
      namedFiles_(database_, blobs_, storageSpace_),
      depot_(database_, blobs_, partials_, storageSpace_, options_.clock, options_.storageLimits.keepingTime),
      depotBlocks_(database_, blobs_, partials_, depot_),
      ticketUploads_(depot_, depotBlocks_),
      userValues_(database_),
      onlineUsers_(database_, options_.clock, options_.presenceLifetime),
      passport_(sessions_, passwords_),
      netDisk_(sessions_, netDiskStore_, recycleBin_, largeFiles_, blobs_),
      folderService_(folders_, netDiskStore_, recycleBin_),
      shareService_(sessions_, shares_),
      sessionService_(sessions_, passwords_),
      storageService_(sessions_, storageSpace_, namedFiles_, depot_, blobs_),
      depotService_(sessions_, storageSpace_, depot_, depotBlocks_),
      apiService_(sessions_, storageSpace_, namedFiles_, depot_, ticketUploads_, blobs_),
      searchService_(accounts_, sessions_, userValues_, onlineUsers_),
      admin_(accounts_, sessions_),
      server_(options_.http)
{
    blobs_.Recover();
    partials_.Recover();
    depot_.Sweep();
    passport_.AddRoutes(server_);
    AccountRoutes routes(server_, sessions_);
    netDisk_.AddRoutes(routes, server_);
    folderService_.AddRoutes(routes);
    shareService_.AddRoutes(routes, server_);
    ResultRoutes resultRoutes(server_);
    sessionService_.AddRoutes(resultRoutes, "/storage");
    sessionService_.AddPasswordRoute(resultRoutes, "/storage");
    storageService_.AddRoutes(resultRoutes, server_);
    depotService_.AddRoutes(resultRoutes, server_);
    apiService_.AddRoutes(server_);
    sessionService_.AddRoutes(resultRoutes, "/search",
                              [this](std::int64_t account) { onlineUsers_.EndPresence(account); });
    searchService_.AddRoutes(resultRoutes);
    if (options_.hasAdmin)
    {
        admin_.AddRoutes(server_);
        shareService_.AddAdminRoutes(server_);
        depotService_.AddAdminRoutes(server_);
        searchService_.AddAdminRoutes(server_);
    }
}

Clock Application::SystemClock()
{
    return [] {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::seconds>(now).count();
    };
}

} // namespace quorvex::services
