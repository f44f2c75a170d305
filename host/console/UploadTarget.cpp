#include "UploadTarget.h"

#include "Text.h"
#include "UploadKey.h"

#include <array>

namespace quorvex::console
{
namespace
{

/// Room for a key or a ticket of the depot.
using KeyRoom = std::array<wchar_t, 65>;

/// What the first two generations of the depot have in common.
template <class AnyStorage>
UploadTarget ToAnnouncedFile(AnyStorage& storage)
{
    UploadTarget target;
    target.create = [&storage](const LocalPath& local, std::string& key, bool& isComplete) -> Outcome {
        KeyRoom room{};
        const int result = storage->LargeFileCreate(local.folder.c_str(), local.name.c_str(), room.data(),
                                                    static_cast<unsigned long>(room.size()));
        key = ToUtf8(room.data());
        isComplete = false;
        return {result, "LargeFileCreate"};
    };
    target.sendBlock = [&storage](const LocalPath&, const UploadIds& ids, const Block& block) -> Outcome {
        const std::wstring key = Wide(ids.key);
        const int result = storage.Run(
            [&](auto& depot) { return depot.LargeFileUpload(key.c_str(), block.data, block.size, block.position); });
        return {result, "LargeFileUpload"};
    };
    target.finish = [&storage](const std::wstring& key) -> Outcome {
        return {storage.Run([&](auto& depot) { return depot.LargeFileUploadFinish(key.c_str()); }),
                "LargeFileUploadFinish"};
    };
    return target;
}

} // namespace

UploadTarget ToDisk(const netdisk::CNetDisk& disk)
{
    UploadTarget target;
    target.sendWhole = [&disk](const LocalPath& local, std::string& key) -> Outcome {
        UploadKey room;
        const int result =
            disk.FileUpload(local.folder.c_str(), local.name.c_str(), room.Room(), UploadKey::kStatedSize);
        key = room.Text();
        return {result, "FileUpload"};
    };
    target.create = [&disk](const LocalPath& local, std::string& key, bool& isComplete) -> Outcome {
        UploadKey room;
        int complete = 0;
        const int result = disk.LargeFileCreate(local.folder.c_str(), local.name.c_str(), room.Room(),
                                                UploadKey::kStatedSize, complete);
        key = room.Text();
        isComplete = complete != 0;
        return {result, "LargeFileCreate"};
    };
    target.sendBlock = [&disk](const LocalPath&, const UploadIds& ids, const Block& block) -> Outcome {
        return {disk.LargeFileUpload(Wide(ids.key).c_str(), block.data, block.size, block.position), "LargeFileUpload"};
    };
    target.finish = [&disk](const std::wstring& key) -> Outcome {
        return {disk.LargeFileFinish(key.c_str()), "LargeFileFinish"};
    };
    target.askAbout = [&disk](const std::wstring& key, const std::string& what) { return AskAbout(disk, key, what); };
    return target;
}

UploadTarget ToDepot(Storage& storage)
{
    UploadTarget target = ToAnnouncedFile(storage);
    target.askAbout = [&storage](const std::wstring& key, const std::string& what) {
        return AskAbout(storage, L"", key, what);
    };
    return target;
}

UploadTarget ToDepot(Storage2& storage)
{
    UploadTarget target = ToAnnouncedFile(storage);
    target.transport = Transport::Host;
    return target;
}

UploadTarget ToDepot(Storage3& storage)
{
    UploadTarget target;
    target.transport = Transport::Host;
    target.sendBlock = [&storage](const LocalPath& local, UploadIds& ids, const Block& block) -> Outcome {
        KeyRoom key{};
        KeyRoom ticket{};
        Wide(ids.ticket).copy(ticket.data(), ticket.size() - 1);
        const int result = storage.Run([&](CFileStorage3& depot) {
            return depot.BufferUpload(key.data(), block.data, block.size, block.position, local.name.c_str(),
                                      ticket.data(), block.isLast ? 1 : 0);
        });
        if (result == 0)
            ids = {ToUtf8(key.data()), ToUtf8(ticket.data())};
        return {result, "BufferUpload"};
    };
    return target;
}

} // namespace quorvex::console
