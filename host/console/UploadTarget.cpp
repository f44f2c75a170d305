#include "UploadTarget.h"

#include "Text.h"
#include "UploadKey.h"

#include <array>

namespace quorvex::console
{

UploadTarget ToDisk(const netdisk::CNetDisk& disk)
{
    UploadTarget target;
    target.sendWhole = [&disk](const LocalPath& local, std::string& key) {
        UploadKey room;
        const int result =
            disk.FileUpload(local.folder.c_str(), local.name.c_str(), room.Room(), UploadKey::kStatedSize);
        key = room.Text();
        return result;
    };
    target.create = [&disk](const LocalPath& local, std::string& key, bool& isComplete) {
        UploadKey room;
        int complete = 0;
        const int result = disk.LargeFileCreate(local.folder.c_str(), local.name.c_str(), room.Room(),
                                                UploadKey::kStatedSize, complete);
        key = room.Text();
        isComplete = complete != 0;
        return result;
    };
    target.sendBlock = [&disk](const std::wstring& key, void* data, unsigned long size, unsigned long position) {
        return disk.LargeFileUpload(key.c_str(), data, size, position);
    };
    target.finish = [&disk](const std::wstring& key) { return disk.LargeFileFinish(key.c_str()); };
    target.askAbout = [&disk](const std::wstring& key, const std::string& what) { return AskAbout(disk, key, what); };
    return target;
}

UploadTarget ToDepot(Storage& storage)
{
    UploadTarget target;
    target.create = [&storage](const LocalPath& local, std::string& key, bool& isComplete) {
        std::array<wchar_t, 65> room{};
        const int result = storage->LargeFileCreate(local.folder.c_str(), local.name.c_str(), room.data(),
                                                    static_cast<unsigned long>(room.size()));
        key = ToUtf8(room.data());
        isComplete = false;
        return result;
    };
    target.sendBlock = [&storage](const std::wstring& key, void* data, unsigned long size, unsigned long position) {
        return storage.Run(
            [&](const CFileStorage& depot) { return depot.LargeFileUpload(key.c_str(), data, size, position); });
    };
    target.finish = [&storage](const std::wstring& key) {
        return storage.Run([&](const CFileStorage& depot) { return depot.LargeFileUploadFinish(key.c_str()); });
    };
    target.askAbout = [&storage](const std::wstring& key, const std::string& what) {
        return AskAbout(storage, L"", key, what);
    };
    return target;
}

} // namespace quorvex::console
