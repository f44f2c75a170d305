#pragma once

#include "common/Accounts.h"
#include "common/AdminService.h"
#include "common/BlobStore.h"
#include "common/Clock.h"
#include "common/Database.h"
#include "common/FileHandle.h"
#include "common/HttpServer.h"
#include "common/PartialFiles.h"
#include "common/PasswordLogin.h"
#include "common/SessionService.h"
#include "common/Sessions.h"
#include "netdisk/FolderService.h"
#include "netdisk/Folders.h"
#include "netdisk/LargeFiles.h"
#include "netdisk/NetDiskService.h"
#include "netdisk/NetDiskStore.h"
#include "netdisk/PassportService.h"
#include "netdisk/RecycleBin.h"
#include "netdisk/ShareService.h"
#include "netdisk/Shares.h"
#include "search/OnlineUsers.h"
#include "search/SearchService.h"
#include "search/UserValues.h"
#include "storage/ApiService.h"
#include "storage/Depot.h"
#include "storage/DepotService.h"
#include "storage/NamedFiles.h"
#include "storage/Space.h"
#include "storage/StorageService.h"
#include "storage/TicketUploads.h"

#include <filesystem>

namespace quorvex::services
{

// All services, put together over one folder of state. Only one application at a time has the folder.
class Application
{
public:
    struct Options
    {
        std::filesystem::path dataFolder;
        HttpServer::Options http;
        Sessions::Lifetimes lifetimes;
        netdisk::Limits netDiskLimits;
        storage::Limits storageLimits;
        std::int64_t presenceLifetime = search::OnlineUsers::DefaultLifetime;
        int hashIterations = 120'000;
        bool hasAdmin = true;
        Clock clock = SystemClock();
    };

    // Puts in order what a killed process left behind.
    explicit Application(Options options);

    void Start() { server_.Start(); }
    void Stop() { server_.Stop(); }
    int Port() const { return server_.Port(); }
    Accounts& GetAccounts() { return accounts_; }

private:
    static Clock SystemClock();

    Options options_;
    FileHandle lock_;
    Database database_;
    Accounts accounts_;
    Sessions sessions_;
    PasswordLogin passwords_;
    BlobStore blobs_;
    PartialFiles partials_;
    netdisk::Folders folders_;
    netdisk::NetDiskStore netDiskStore_;
    netdisk::RecycleBin recycleBin_;
    netdisk::Shares shares_;
    netdisk::LargeFiles largeFiles_;
    storage::Space storageSpace_;
    storage::NamedFiles namedFiles_;
    storage::Depot depot_;
    BlockFiles depotBlocks_;
    storage::TicketUploads ticketUploads_;
    search::UserValues userValues_;
    search::OnlineUsers onlineUsers_;
    netdisk::PassportService passport_;
    netdisk::NetDiskService netDisk_;
    netdisk::FolderService folderService_;
    netdisk::ShareService shareService_;
    SessionService sessionService_;
    storage::StorageService storageService_;
    storage::DepotService depotService_;
    storage::ApiService apiService_;
    search::SearchService searchService_;
    AdminService admin_;
    HttpServer server_;
};

} // namespace quorvex::services
