#include "fault/Operations.h"

#include "wire/Compression.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <utility>

namespace operations
{

using namespace quorvex::netdisk;
using quorvex::CFileStorage;
using quorvex::CFileStorage2;
using quorvex::CFileStorage3;
using quorvex::COnlineUserSearch;

namespace
{

/// The answer comes before the body is read, so that a request that breaks off is answered, too.
support::Exchange answered(const std::string& head, std::string_view body)
{
    support::Exchange exchange;
    exchange.bodyBytesBeforeReply = 0;
    exchange.pieces = {"HTTP/1.1 " + head + "\r\nContent-Range: bytes 0-0/5\r\n" +
                       "Content-Disposition: attachment;filename=\"d.txt;md5=0\r\nConnection: close\r\n\r\n" +
                       std::string(body)};
    return exchange;
}

support::Exchange goodAnswer(std::string_view body)
{
    return answered("200 OK\r\nContent-Length: " + std::to_string(body.size()), body);
}

template <typename Client, typename Call>
Results runTwice(Client& client, const Call& call, const Stages& stages)
{
    stages.made();
    const int first = call(client);
    stages.calledOnce();
    return {first, call(client)};
}

} // namespace

std::string Rooms::contents() const
{
    std::string all = values;
    const auto add = [&](const auto& room) {
        all.append(reinterpret_cast<const char*>(room.get()), room.size() * sizeof(*room));
    };
    add(key);
    add(name);
    add(second);
    add(third);
    add(md5);
    add(sha1);
    add(block);
    add(ids);
    add(longKey);
    add(ticket);
    return all;
}

void Rooms::prepare() const
{
    values.clear();
    const auto empty = [](const auto& room) { std::fill_n(room.get(), room.size(), 0); };
    empty(key);
    empty(name);
    empty(second);
    empty(third);
    empty(md5);
    empty(sha1);
    empty(block);
    empty(ids);
    empty(longKey);
    empty(ticket);
    std::copy_n("hello", input.size(), input.get());
}

Operation::Operation(const char* operation, const char* body, OfNetDisk call)
    : name(operation),
      content(body),
      answer(goodAnswer(body)),
      run([=](const wchar_t* url, const wchar_t* folder, const Rooms& out, const Stages& stages) {
          CNetDisk disk(url, nullptr);
          return runTwice(
              disk, [&](CNetDisk& client) { return call(client, folder, out); }, stages);
      })
{
}

Operation::Operation(const char* operation, const char* body, OfStorage call)
    : name(operation),
      content(body),
      answer(goodAnswer(body)),
      run([=](const wchar_t* url, const wchar_t* folder, const Rooms& out, const Stages& stages) {
          CFileStorage storage(url, nullptr);
          return runTwice(
              storage, [&](CFileStorage& client) { return call(client, folder, out); }, stages);
      })
{
}

Operation::Operation(const char* operation, const char* body, OfStorage2 call)
    : name(operation),
      content(body),
      answer(goodAnswer(body)),
      run([=](const wchar_t* url, const wchar_t* folder, const Rooms& out, const Stages& stages) {
          CFileStorage2 storage(url, nullptr, 0, 0, 0, 0);
          return runTwice(
              storage, [&](CFileStorage2& client) { return call(client, folder, out); }, stages);
      })
{
}

Operation::Operation(const char* operation, const char* body, OfStorage3 call, int success)
    : name(operation),
      content(body),
      answer(goodAnswer(body)),
      good(success),
      run([=](const wchar_t* url, const wchar_t*, const Rooms& out, const Stages& stages) {
          const CFileStorage3 storage((url + std::wstring(L"/")).c_str(), L"sid=5", 0, 0, 0, 0);
          return runTwice(
              storage, [&](const CFileStorage3& client) { return call(client, out); }, stages);
      })
{
}

Operation::Operation(const char* operation, const char* body, OfSearch call)
    : name(operation),
      content(body),
      answer(goodAnswer(body)),
      run([=](const wchar_t* url, const wchar_t*, const Rooms& out, const Stages& stages) {
          COnlineUserSearch search(url);
          return runTwice(
              search, [&](COnlineUserSearch& client) { return call(client, out); }, stages);
      })
{
}

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

std::function<support::Exchange(const std::string&)> answersOf(const Operation& operation)
{
    return [&operation, isRefused = false](const std::string& head) mutable {
        if (!operation.login.empty() && head.find("/check") < head.find("\r\n"))
            return goodAnswer(operation.login);
        if (operation.refusal && !std::exchange(isRefused, true))
            return *operation.refusal;
        return operation.answer;
    };
}

namespace
{

/// The same with compressed answers.
Operation compressed(Operation operation, const char* lineWithoutMemory)
{
    operation.answer =
        answered("200 OK\r\nContent-Encoding: gzip", wire::compress(operation.content, wire::Encoding::Gzip));
    operation.isCompressed = true;
    operation.lineWithoutMemory = lineWithoutMemory;
    return operation;
}

/// The same with a server that refuses, and says why in a compressed body.
Operation refused(Operation operation, int result)
{
    operation.answer =
        answered("404 Not Found\r\nContent-Encoding: gzip", wire::compress("no such file", wire::Encoding::Gzip));
    operation.good = result;
    operation.isCompressed = true;
    operation.readsForTheLog = true;
    return operation;
}

/// The same with a session that has expired: the operation logs in first.
Operation expired(Operation operation, std::string_view login, const support::Exchange& refusal)
{
    operation.login = login;
    operation.refusal = refusal;
    return operation;
}

Operation expired(Operation operation, std::string_view login)
{
    return expired(std::move(operation), login, answered("403 Forbidden\r\nContent-Length: 4", "who?"));
}

constexpr const char* folderListing =
    "{\"files\":[{\"fkey\":\"k\"},{\"fkey\":\"l\"}],\"folders\":[{\"fo_id\":\"d\"},{\"fo_id\":\"e\"}]}";
constexpr const char* binListing = "{\"data\":[{\"rs_id\":\"r\"},{\"rs_id\":\"s\"}]}";

} // namespace

const std::vector<Operation>& netDiskOperations()
{
    static const std::vector<Operation> all{
        {"UserLoginSession", "{\"uap_uid\":7}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.UserLogin(L"S"); }},
        {"UserLoginPassword", "{\"uap_uid\":7,\"uap_sid\":\"s\"}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.UserLogin(L"u", L"p"); }},
        {"PassportLoginTicket", "{\"uap_uid\":7,\"uap_sid\":\"s\"}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.PassportLoginTicket(L"b", L"t"); }},
        {"UserLogout", "{}", [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.UserLogout(); }},
        {"FileUpload", "{\"fkey\":\"K\",\"fsize\":5,\"cflag\":1}",
         [](CNetDisk& disk, const wchar_t* folder, const Rooms& out) {
             return disk.FileUpload(folder, L"a.txt", out.key.get(), 20);
         }},
        {"FileDownload", "hello",
         [](CNetDisk& disk, const wchar_t* folder, const Rooms&) { return disk.FileDownload(L"K", folder, nullptr); }},
        {"FileModify", "{}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.FileModify(L"K", L"F", L"n"); }},
        {"FileDelete", "{}", [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.FileDelete(L"K"); }},
        {"FileDelete4ever", "{}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.FileDelete4ever(L"K"); }},
        {"LargeFileCreate", "{\"fkey\":\"K\",\"fsize\":0,\"cflag\":0}",
         [](CNetDisk& disk, const wchar_t* folder, const Rooms& out) {
             int complete = 0;
             return out.handed(disk.LargeFileCreate(folder, L"a.txt", out.key.get(), 20, complete), complete);
         }},
        {"LargeFileUpload", "{\"fkey\":\"K\",\"fsize\":5}",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             return disk.LargeFileUpload(L"K", out.input.get(), 5, 0);
         }},
        {"LargeFileFinish", "{\"fkey\":\"K\",\"fsize\":5}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.LargeFileFinish(L"K"); }},
        {"LargeFileGetInfo", "h",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             unsigned long size = 0;
             return out.handed(disk.LargeFileGetInfo(L"K", out.name.get(), 20, size, out.second.get()), size);
         }},
        {"LargeFileDownload", "hello",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             unsigned long size = 5;
             return out.handed(disk.LargeFileDownload(L"K", 0, out.block.get(), size), size);
         }},
        {"CapacityInfo", "{\"total_space\":100,\"used_space\":7,\"max_file_size\":50}",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             unsigned long long total = 0;
             unsigned long long used = 0;
             unsigned long most = 0;
             return out.handed(disk.CapacityInfo(total, used, most), total, used, most);
         }},
        {"FileGetChecksum", "",
         [](CNetDisk& disk, const wchar_t* folder, const Rooms& out) {
             unsigned long size = 0;
             return out.handed(disk.FileGetChecksum(folder, L"a.txt", size, out.md5.get()), size);
         }},
        {"FolderAdd", "{\"fo_id\":\"F\"}",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             return disk.FolderAdd(L"n", L"P", out.key.get(), 40);
         }},
        {"FolderModi", "{}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.FolderModi(L"F", L"n", L"P"); }},
        {"FolderDel", "{}", [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.FolderDel(L"F"); }},
        {"FolderDel4ever", "{}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.FolderDel4ever(L"F"); }},
        {"FolderList", folderListing,
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             std::vector<_FileInfo> files;
             std::vector<_FolderInfo> folders;
             return out.handed(disk.FolderList(L"F", files, folders), files, folders);
         }},
        {"FolderListUtf8", folderListing,
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             std::vector<_FileInfoUTF8> files;
             std::vector<_FolderInfoUTF8> folders;
             return out.handed(disk.FolderList(L"F", files, folders), files, folders);
         }},
        {"PcodeCreate", "{\"pcode\":\"c\"}",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             std::vector<_FileInfo> files(2);
             return disk.PcodeCreate(files, 60, out.key.get(), 40);
         }},
        {"PcodeDelete", "{}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) {
             std::vector<_PcodeInfo> pcodes(2);
             return disk.PcodeDelete(pcodes);
         }},
        {"PcodeList", "{\"pcodes\":[{\"pcode\":\"c\"},{\"pcode\":\"d\"}]}",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             std::vector<_PcodeInfo> pcodes;
             return out.handed(disk.PcodeList(3, pcodes), pcodes);
         }},
        {"PcodeInfo", "{\"files\":[{\"fid\":\"i\"},{\"fid\":\"j\"}]}",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             std::vector<_FileInfo> files;
             return out.handed(disk.PcodeInfo(L"c", files), files);
         }},
        {"PcodeDefer", "{}", [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.PcodeDefer(L"c", 60); }},
        {"PcodeSave", "{}", [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.PcodeSave(L"c", L"F"); }},
        {"PcodeDown", "hello",
         [](CNetDisk& disk, const wchar_t* folder, const Rooms&) {
             return disk.PcodeDown(L"c", L"i", folder, nullptr);
         }},
        {"LargePcodeDown", "hello",
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             unsigned long size = 5;
             return out.handed(disk.LargePcodeDown(L"c", L"i", 0, out.block.get(), size), size);
         }},
        {"RecyclebinList", binListing,
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             std::vector<_RItemInfo> items;
             return out.handed(disk.RecyclebinList(items), items);
         }},
        {"RecyclebinListUtf8", binListing,
         [](CNetDisk& disk, const wchar_t*, const Rooms& out) {
             std::vector<_RItemInfoUTF8> items;
             return out.handed(disk.RecyclebinList(items), items);
         }},
        {"RecyclebinRecover", "{}",
         [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.RecyclebinRecover(L"r"); }},
        {"RecyclebinDel", "{}", [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.RecyclebinDel(L"r"); }},
    };
    return all;
}

namespace
{

constexpr const char* storageLogin = "{\"result\":200,\"uid\":\"7\",\"sid\":\"s\",\"errorinfo\":\"\"}";
constexpr const char* storageDone = "{\"result\":200,\"errorinfo\":\"\"}";
constexpr const char* storageUploaded = "{\"result\":200,\"fkey\":\"a.txt\",\"fsize\":5,\"errorinfo\":\"\"}";
constexpr const char* emoticonList =
    "{\"result\":200,\"errorinfo\":\"\",\"files\":[{\"fkey\":\"k\",\"fname\":\"n\",\"fsize\":1},"
    "{\"fkey\":\"l\",\"fname\":\"m\",\"fsize\":2}]}";
constexpr const char* largeFileList =
    "{\"result\":200,\"errorinfo\":\"\",\"files\":[{\"fkey\":\"k\",\"fname\":\"n\",\"fsize\":1,\"fmd5\":\"m\","
    "\"fsha1\":\"s\",\"createtime\":\"2010-01-02 03:04:05\",\"finish\":1,\"leftminute\":7}]}";
constexpr const char* depotSpace = "{\"result\":200,\"uid\":\"7\",\"totalspace\":10,\"totalsize\":4,\"freespace\":6,"
                                   "\"errorinfo\":\"\"}";

} // namespace

const std::vector<Operation>& storageOperations()
{
    static const std::vector<Operation> all{
        {"UserLoginSession", storageLogin,
         [](CFileStorage& storage, const wchar_t*, const Rooms&) { return storage.UserLogin(L"S"); }},
        {"UserLoginPassword", storageLogin,
         [](CFileStorage& storage, const wchar_t*, const Rooms&) { return storage.UserLogin(L"u", L"p"); }},
        {"UserLogout", storageLogin,
         [](CFileStorage& storage, const wchar_t*, const Rooms&) { return storage.UserLogout(); }},
        {"PictureUpload", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
             return storage.PictureUpload(folder, L"a.txt");
         }},
        {"PictureDownload", "hello",
         [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
             return storage.PictureDownload(folder, L"d.txt");
         }},
        {"UserPhotoUpload", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
             return storage.UserPhotoUpload(folder, L"a.txt", L"n");
         }},
        {"UserPhotoDownload", "hello",
         [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
             return storage.UserPhotoDownload(folder, L"K", L"d.txt");
         }},
        {"EmoticonUpload", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
             return storage.EmoticonUpload(folder, L"a.txt", L"n");
         }},
        {"EmoticonDownload", "hello",
         [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
             return storage.EmoticonDownload(L"7", folder, L"K", L"d.txt");
         }},
        {"EmoticonRemove", storageDone,
         [](CFileStorage& storage, const wchar_t*, const Rooms&) { return storage.EmoticonRemove(L"K"); }},
        {"EmoticonGetList", emoticonList,
         [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
             unsigned count = 0;
             return out.handed(storage.EmoticonGetList(nullptr, 0, count), count);
         }},
        {"FileGetChecksum", "",
         [](CFileStorage& storage, const wchar_t* folder, const Rooms& out) {
             unsigned long size = 0;
             return out.handed(storage.FileGetChecksum(folder, L"a.txt", size, out.md5.get(), out.sha1.get()), size);
         }},
        {"LargeFileCreate", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, const Rooms& out) {
             return storage.LargeFileCreate(folder, L"a.txt", out.key.get(), 40);
         }},
        {"LargeFileUpload", storageDone,
         [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
             return storage.LargeFileUpload(L"K", out.input.get(), 5, 0);
         }},
        {"LargeFileUploadFinish", storageDone,
         [](CFileStorage& storage, const wchar_t*, const Rooms&) { return storage.LargeFileUploadFinish(L"K"); }},
        {"LargeFileGetInfo", "h",
         [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
             unsigned long size = 0;
             return out.handed(
                 storage.LargeFileGetInfo(L"7", L"K", out.name.get(), 20, size, out.second.get(), out.third.get()),
                 size);
         }},
        {"LargeFileDownload", "hello",
         [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
             unsigned long size = 5;
             return out.handed(storage.LargeFileDownload(L"7", L"K", 0, out.block.get(), size), size);
         }},
        {"LargeFileRenewTime", storageDone,
         [](CFileStorage& storage, const wchar_t*, const Rooms&) { return storage.LargeFileRenewTime(L"K"); }},
        {"LargeFileRemove", storageDone,
         [](CFileStorage& storage, const wchar_t*, const Rooms&) { return storage.LargeFileRemove(L"K"); }},
        {"LargeFileGetList", largeFileList,
         [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
             std::vector<quorvex::LargeFileInfo> files;
             return out.handed(storage.LargeFileGetList(files), files);
         }},
        {"LargeFileDepotInfo", depotSpace,
         [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
             double total = 0;
             double used = 0;
             double left = 0;
             return out.handed(storage.LargeFileDepotInfo(total, used, left), total, used, left);
         }},
    };
    return all;
}

const std::vector<Operation>& storage2Operations()
{
    static const std::vector<Operation> all{
        {"UserLogin", storageLogin,
         [](CFileStorage2& storage, const wchar_t*, const Rooms&) { return storage.UserLogin(L"S"); }},
        {"UserLogout", storageLogin,
         [](CFileStorage2& storage, const wchar_t*, const Rooms&) { return storage.UserLogout(); }},
        {"PictureUpload", storageUploaded,
         [](CFileStorage2& storage, const wchar_t* folder, const Rooms&) {
             return storage.PictureUpload(folder, L"a.txt");
         }},
        {"PictureDownload", "hello",
         [](CFileStorage2& storage, const wchar_t* folder, const Rooms&) {
             return storage.PictureDownload(folder, L"d.txt");
         }},
        {"LargeFileCreate", storageUploaded,
         [](CFileStorage2& storage, const wchar_t* folder, const Rooms& out) {
             return storage.LargeFileCreate(folder, L"a.txt", out.key.get(), 40);
         }},
        {"LargeFileUpload", storageDone,
         [](CFileStorage2& storage, const wchar_t*, const Rooms& out) {
             return storage.LargeFileUpload(L"K", out.input.get(), 5, 0);
         }},
        {"LargeFileUploadFinish", storageDone,
         [](CFileStorage2& storage, const wchar_t*, const Rooms&) { return storage.LargeFileUploadFinish(L"K"); }},
        {"LargeFileDownload", "hello",
         [](CFileStorage2& storage, const wchar_t*, const Rooms& out) {
             unsigned long size = 5;
             return out.handed(storage.LargeFileDownload(L"7", L"K", 0, out.block.get(), size), size);
         }},
        {"LargeFileRemove", storageDone,
         [](CFileStorage2& storage, const wchar_t*, const Rooms&) { return storage.LargeFileRemove(L"K"); }},
        {"exit", "",
         [](CFileStorage2& storage, const wchar_t*, const Rooms&) {
             storage.exit();
             return 0;
         }},
    };
    return all;
}

namespace
{

constexpr const char* apiDone = "{\"code\":200,\"fkey\":\"K\",\"ticket\":\"T\",\"fsize\":5,\"msg\":\"\"}";

} // namespace

const std::vector<Operation>& storage3Operations()
{
    static const std::vector<Operation> all{
        {"PictureUpload", apiDone,
         [](const CFileStorage3& storage, const Rooms& out) {
             return storage.PictureUpload(L"p", out.input.get(), 5);
         }},
        {"PictureDownload", "hello",
         [](const CFileStorage3& storage, const Rooms&) {
             void* picture = nullptr;
             unsigned long size = 0;
             const int result = storage.PictureDownload(L"f", L"p", &picture, &size);
             EXPECT_EQ(picture != nullptr, result == 0);
             EXPECT_EQ(size, result == 0 ? 5u : 0u);
             storage.releaseBuffer(&picture);
             return result;
         }},
        {"BufferUpload", apiDone,
         [](const CFileStorage3& storage, const Rooms& out) {
             return storage.BufferUpload(out.longKey.get(), out.input.get(), 5, 0, L"n", out.ticket.get(), 0);
         }},
        {"Bufferdownload", "hello",
         [](const CFileStorage3& storage, const Rooms& out) {
             unsigned long size = 5;
             return out.handed(storage.Bufferdownload(L"7", L"K", 0, out.block.get(), size), size);
         },
         200},
        {"getBuffer", "",
         [](const CFileStorage3& storage, const Rooms&) {
             void* buffer = nullptr;
             const int result = storage.getBuffer(&buffer, 100);
             EXPECT_EQ(buffer != nullptr, result == 0);
             storage.releaseBuffer(&buffer);
             return result;
         }},
    };
    return all;
}

namespace
{

constexpr const char* searchLogin = "{\"result\":200,\"errorinfo\":\"\",\"uid\":\"7\",\"sid\":\"s\"}";
constexpr const char* searchDone = "{\"result\":200,\"errorinfo\":\"\"}";
constexpr const char* searchIds = "{\"result\":200,\"errorinfo\":\"\",\"users\":[\"1\",\"2\",\"3\"]}";
constexpr const char* searchTotal = "{\"result\":200,\"errorinfo\":\"\",\"total\":3}";

} // namespace

const std::vector<Operation>& searchOperations()
{
    static const std::vector<std::string> pairs{"name", "a value that takes some room", "other", "20-30"};
    static const std::vector<Operation> all{
        {"ClientLogin", searchLogin, [](COnlineUserSearch& search, const Rooms&) { return search.ClientLogin(L"S"); }},
        {"ClientLogout", searchLogin, [](COnlineUserSearch& search, const Rooms&) { return search.ClientLogout(); }},
        {"UserReportStatus", searchDone,
         [](COnlineUserSearch& search, const Rooms&) { return search.UserReportStatus("im", 2); }},
        {"UserUpdateAppInfo", searchDone,
         [](COnlineUserSearch& search, const Rooms&) { return search.UserUpdateAppInfo("im", pairs); }},
        {"UserUpdateInfo", searchDone,
         [](COnlineUserSearch& search, const Rooms&) { return search.UserUpdateInfo("app=im&a=b"); }},
        {"QueryByCondition", searchIds,
         [](COnlineUserSearch& search, const Rooms& out) {
             unsigned count = 0;
             return out.handed(search.QueryByCondition("app=im&sex=1", out.ids.get(), 2, count), count);
         }},
        {"QueryByAppCondition", searchIds,
         [](COnlineUserSearch& search, const Rooms& out) {
             unsigned count = 0;
             return out.handed(search.QueryByAppCondition("im", pairs, 40, out.ids.get(), 2, count), count);
         }},
        {"QueryCountByConditionString", searchTotal,
         [](COnlineUserSearch& search, const Rooms& out) {
             int count = 0;
             return out.handed(search.QueryCountByConditionString("app=im&sex=1", count), count);
         }},
        {"QueryCountByConditionVector", searchTotal,
         [](COnlineUserSearch& search, const Rooms& out) {
             int count = 0;
             return out.handed(search.QueryCountByConditionVector("im", pairs, count), count);
         }},
    };
    return all;
}

namespace
{

constexpr const char* inflaterOfAFile = "WriteFileDecompress(), inflateInit() return ret=-4";
constexpr const char* inflaterOfAText = "GetResponse() inflate() last return is not Z_STREAM_END, ret=-2";

} // namespace

const std::vector<Operation>& compressedOperations()
{
    static const std::vector<Operation> all{
        compressed({"NetDiskDownload", "hello",
                    [](CNetDisk& disk, const wchar_t* folder, const Rooms&) {
                        return disk.FileDownload(L"K", folder, L"d.txt");
                    }},
                   inflaterOfAFile),
        compressed(
            {"NetDiskLogout", "{}", [](CNetDisk& disk, const wchar_t*, const Rooms&) { return disk.UserLogout(); }},
            inflaterOfAText),
        compressed({"StorageDownload", "hello",
                    [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
                        return storage.UserPhotoDownload(folder, L"K", L"d.txt");
                    }},
                   inflaterOfAFile),
        compressed({"StorageRange", "hello",
                    [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
                        unsigned long size = 5;
                        return out.handed(storage.LargeFileDownload(L"7", L"K", 0, out.block.get(), size), size);
                    }},
                   inflaterOfAText),
        compressed({"Search", searchIds,
                    [](COnlineUserSearch& search, const Rooms& out) {
                        unsigned count = 0;
                        return out.handed(search.QueryByCondition("app=im&sex=1", out.ids.get(), 2, count), count);
                    }},
                   inflaterOfAText),
    };
    return all;
}

const std::vector<Operation>& refusedOperations()
{
    static const std::vector<Operation> all{
        refused({"StorageDownload", "",
                 [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
                     return storage.UserPhotoDownload(folder, L"K", L"d.txt");
                 }},
                404),
        refused({"StorageProbe", "",
                 [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
                     unsigned long size = 0;
                     return out.handed(storage.LargeFileGetInfo(L"7", L"K", out.name.get(), 20, size, nullptr, nullptr),
                                       size);
                 }},
                -112),
        refused({"NetDiskDownload", "",
                 [](CNetDisk& disk, const wchar_t* folder, const Rooms&) {
                     return disk.FileDownload(L"K", folder, L"d.txt");
                 }},
                -134),
    };
    return all;
}

namespace
{

template <typename Client, typename Call>
int loggedIn(Client& client, Call call)
{
    const int login = client.UserLogin(L"S");
    return login != 0 ? login : call();
}

Operation expiredStorageDownload()
{
    Operation operation =
        expired({"StorageDownload", "hello",
                 [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
                     return loggedIn(storage, [&] { return storage.UserPhotoDownload(folder, L"K", L"d.txt"); });
                 }},
                storageLogin);
    operation.readsForTheLog = true;
    return operation;
}

} // namespace

const std::vector<Operation>& expiredOperations()
{
    static const std::string diskLogin = "{\"uap_uid\":7}";
    static const std::vector<Operation> all{
        expired({"NetDiskDownload", "hello",
                 [](CNetDisk& disk, const wchar_t* folder, const Rooms&) {
                     return loggedIn(disk, [&] { return disk.FileDownload(L"K", folder, L"d.txt"); });
                 }},
                diskLogin),
        expired({"StorageUpload", storageUploaded,
                 [](CFileStorage& storage, const wchar_t* folder, const Rooms&) {
                     return loggedIn(storage, [&] { return storage.UserPhotoUpload(folder, L"a.txt", L"n"); });
                 }},
                storageLogin),
        expiredStorageDownload(),
        expired({"StorageList", emoticonList,
                 [](CFileStorage& storage, const wchar_t*, const Rooms& out) {
                     unsigned count = 0;
                     return loggedIn(storage,
                                     [&] { return out.handed(storage.EmoticonGetList(nullptr, 0, count), count); });
                 }},
                storageLogin, goodAnswer("{\"result\":403,\"errorinfo\":\"\",\"files\":[]}")),
        expired({"Search", searchIds,
                 [](COnlineUserSearch& search, const Rooms& out) {
                     unsigned count = 0;
                     const int login = search.ClientLogin(L"S");
                     return login != 0
                                ? login
                                : out.handed(search.QueryByCondition("app=im&sex=1", out.ids.get(), 2, count), count);
                 }},
                searchLogin),
    };
    return all;
}

} // namespace operations
