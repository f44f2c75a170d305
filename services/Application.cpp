#include "Application.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace quorvex::services
{

namespace
{

// What is stored belongs to the people who stored it, not to everybody on the machine.
FileHandle LockFolder(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    FileHandle lock(folder / "lock", FileHandle::Mode::OpenOrCreate);
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
      database_(options_.dataFolder / "services.db"),
      accounts_(database_, options_.hashIterations),
      sessions_(database_, options_.clock, options_.lifetimes),
      throttle_(options_.clock),
      blobs_(database_, options_.dataFolder),
      partials_(database_, options_.dataFolder),
      folders_(database_, options_.clock),
      netDiskStore_(database_, blobs_, partials_, folders_, options_.clock, options_.netDiskLimits),
      recycleBin_(database_, folders_, netDiskStore_, options_.clock),
      shares_(database_, folders_, netDiskStore_, options_.clock),
      largeFiles_(database_, blobs_, partials_, netDiskStore_),
      passport_(accounts_, sessions_, throttle_),
      netDisk_(sessions_, netDiskStore_, recycleBin_, largeFiles_, blobs_),
      folderService_(folders_, netDiskStore_, recycleBin_),
      shareService_(sessions_, shares_),
      admin_(accounts_, sessions_),
      server_(options_.http)
{
    blobs_.Recover();
    partials_.Recover();
    passport_.AddRoutes(server_);
    AccountRoutes routes(server_, sessions_);
    netDisk_.AddRoutes(routes, server_);
    folderService_.AddRoutes(routes);
    shareService_.AddRoutes(routes, server_);
    if (options_.hasAdmin)
    {
        admin_.AddRoutes(server_);
        shareService_.AddAdminRoutes(server_);
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
