// The code pieces of the integration guide (docs/guide.md), which stand between lines with their names.
#include <ferrolink/log.h>
#include <quorvex/quorvex.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// [log]
void ToOwnLog(void* context, unsigned level, const wchar_t* line, std::size_t length)
{
    // As it is, in UTF-16: names in any script come here, and a narrow stream would stop at the first of them.
    auto& file = *static_cast<std::ofstream*>(context);
    if (level == FRL_LOG_ERROR)
        file.write(reinterpret_cast<const char*>(L"! "), 2 * sizeof(wchar_t));
    file.write(reinterpret_cast<const char*>(line), static_cast<std::streamsize>(length * sizeof(wchar_t)));
}

void StartLog(std::ofstream& file) // opened with std::ios::binary
{
    frl_log_set_callback(ToOwnLog, &file);
    frl_log_set_level(FRL_LOG_DEBUG | FRL_LOG_ERROR);
}
// [log]

// [advice]
enum class Advice
{
    GoOn,
    TryLater,
    LogIn,
    TellUser,
    Report
};

Advice AdviceFor(int result)
{
    using namespace quorvex;
    switch (result)
    {
    case Result::Ok:
        return Advice::GoOn;
    case Result::TransferFailed:
    case Result::UploadSendFailed:
    case Result::PostSendFailed:
    case Result::ReceiveFailed:
    case Result::RequestRefused: // CFileStorage2, CFileStorage3: also their service's failure, -2 a time-out
    case -2:
    case 500:
    case 502:
    case 503:
    case 504:
        return Advice::TryLater;
    case 401:
    case 403:
        return Advice::LogIn;
    case Result::LocalFileFailed:
    case Result::DownloadRefused:
    case 404:
    case 413:
    case 507:
        return Advice::TellUser;
    default:
        return Advice::Report;
    }
}
// [advice]

// [login]
int LogIn(quorvex::netdisk::CNetDisk& disk, const wchar_t* session)
{
    if (!disk.IsConnected())
        return quorvex::Result::NotConnected; // the base URL cannot be used: construct another object
    return disk.UserLogin(session);           // remembered from here on, for logins after a 403
}
// [login]

// [blocks]
int UploadInBlocks(quorvex::netdisk::CNetDisk& disk, const std::wstring& folder, const std::wstring& name,
                   std::ifstream& file)
{
    constexpr std::size_t kBlockSize = 1024 * 1024;
    constexpr int kAttempts = 3;

    wchar_t key[34] = {}; // room for twice 17 characters
    int complete = 0;
    int result = disk.LargeFileCreate(folder.c_str(), name.c_str(), key, 17, complete);
    if (result != quorvex::Result::Ok || complete != 0)
        return result; // failed, or the server holds the content already

    std::vector<char> block(kBlockSize);
    unsigned long position = 0;
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())), file.gcount() > 0)
    {
        const auto size = static_cast<unsigned long>(file.gcount());
        result = disk.LargeFileUpload(key, block.data(), size, position);
        for (int attempt = 1; AdviceFor(result) == Advice::TryLater && attempt < kAttempts; ++attempt)
            result = disk.LargeFileUpload(key, block.data(), size, position);
        if (result != quorvex::Result::Ok)
            return result; // announce it again later: what was confirmed is there still
        position += size;
    }
    return disk.LargeFileFinish(key);
}
// [blocks]

// [listing]
struct DeleteFiles
{
    using Files = std::vector<quorvex::netdisk::_FileInfo>;
    void operator()(Files* files) const { quorvex::netdisk::CNetDisk::DeleteFileInfoVector(files); }
};

struct DeleteFolders
{
    using Folders = std::vector<quorvex::netdisk::_FolderInfo>;
    void operator()(Folders* folders) const { quorvex::netdisk::CNetDisk::DeleteFolderInfoVector(folders); }
};

int PrintFolder(const quorvex::netdisk::CNetDisk& disk, const wchar_t* folderId)
{
    const std::unique_ptr<DeleteFiles::Files, DeleteFiles> files(quorvex::netdisk::CNetDisk::NewFileInfoVector());
    const std::unique_ptr<DeleteFolders::Folders, DeleteFolders> folders(
        quorvex::netdisk::CNetDisk::NewFolderInfoVector());
    if (files == nullptr || folders == nullptr)
        return quorvex::Result::BadAnswer;

    const int result = disk.FolderList(folderId, *files, *folders);
    for (const auto& file : *files)
        std::wprintf(L"%.65ls  %u bytes\n", file.name, file.size);
    return result;
}
// [listing]

// [picture]
int SavePicture(const quorvex::CFileStorage3& storage, const wchar_t* name, std::ofstream& file)
{
    void* picture = nullptr;
    unsigned long size = 0;
    const int result = storage.PictureDownload(L"0", name, &picture, &size);
    if (picture == nullptr)
        return result != quorvex::Result::Ok ? result : 404; // an answer came, but no picture

    file.write(static_cast<const char*>(picture), static_cast<std::streamsize>(size));
    storage.releaseBuffer(&picture);
    return result;
}
// [picture]

// [cancel]
int DownloadUntil(quorvex::CFileStorage2& storage, const wchar_t* folder, const wchar_t* name, void (*waitForCancel)())
{
    int result = 0;
    std::thread worker([&] { result = storage.PictureDownload(folder, name); });
    waitForCancel();
    storage.exit(); // from here on, the object answers -1
    worker.join();
    return result;
}
// [cancel]

// [search]
std::vector<unsigned int> WhoIsOnline(const quorvex::COnlineUserSearch& search, int& result)
{
    constexpr unsigned int kPage = 100;
    std::vector<unsigned int> all;
    unsigned int page[kPage];
    unsigned int count = 0;
    do
    {
        const auto skip = static_cast<int>(all.size());
        result = search.QueryByAppCondition("im", {"sex", "1", "age", "20-30"}, skip, page, kPage, count);
        all.insert(all.end(), page, page + count);
    } while (result == quorvex::Result::Ok && count != 0);
    return all;
}
// [search]
