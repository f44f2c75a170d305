#pragma once

#include "common/Accounts.h"
#include "common/AdminService.h"
#include "common/BlobStore.h"
#include "common/Clock.h"
#include "common/Database.h"
#include "common/FileHandle.h"
#include "common/HttpServer.h"
#include "common/LoginThrottle.h"
#include "common/PartialFiles.h"
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
    LoginThrottle throttle_;
    BlobStore blobs_;
    PartialFiles partials_;
    netdisk::Folders folders_;
    netdisk::NetDiskStore netDiskStore_;
    netdisk::RecycleBin recycleBin_;
    netdisk::Shares shares_;
    netdisk::LargeFiles largeFiles_;
    netdisk::PassportService passport_;
    netdisk::NetDiskService netDisk_;
    netdisk::FolderService folderService_;
    netdisk::ShareService shareService_;
    AdminService admin_;
    HttpServer server_;
};

} // namespace quorvex::services
