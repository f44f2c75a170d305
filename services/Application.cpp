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
      netDiskStore_(database_, blobs_, partials_, options_.clock, options_.netDiskLimits),
      largeFiles_(database_, blobs_, partials_, netDiskStore_),
      passport_(accounts_, sessions_, throttle_),
      netDisk_(sessions_, netDiskStore_, largeFiles_, blobs_),
      admin_(accounts_, sessions_),
      server_(options_.http)
{
    blobs_.Recover();
    partials_.Recover();
    passport_.AddRoutes(server_);
    netDisk_.AddRoutes(server_);
    if (options_.hasAdmin)
    {
        admin_.AddRoutes(server_);
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
