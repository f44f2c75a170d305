// Every system call of every operation is made to fail once: no failure may leak a handle, write outside of a
// caller's room, throw, or pass for a success that it is not.

#include "support/HandleLedger.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"
#include "wire/Compression.h"

#include <quorvex/FileStorage.h>
#include <quorvex/FileStorage2.h>
#include <quorvex/FileStorage3.h>
#include <quorvex/NetDisk.h>
#include <quorvex/OnlineUserSearch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using namespace quorvex::netdisk;
using quorvex::CFileStorage;
using quorvex::CFileStorage2;
using quorvex::CFileStorage3;
using quorvex::COnlineUserSearch;

/// A caller's buffer whose end is watched.
template <typename Character, std::size_t Room>
struct Guarded
{
    Character room[Room]{};
    std::array<Character, 64> guard{};

    bool isIntact() const
    {
        return std::ranges::all_of(guard, [](Character c) { return c == Character{}; });
    }
};

struct Outputs
{
    Guarded<wchar_t, 40> key;
    Guarded<wchar_t, 20> name;
    Guarded<wchar_t, 20> second;
    Guarded<wchar_t, 20> third;
    Guarded<wchar_t, 33> md5;
    Guarded<wchar_t, 41> sha1;
    Guarded<char, 5> block;
    Guarded<unsigned, 2> ids;
    Guarded<wchar_t, 65> longKey;
    Guarded<wchar_t, 65> ticket;

    bool areIntact() const
    {
        return key.isIntact() && name.isIntact() && second.isIntact() && third.isIntact() && md5.isIntact() &&
               sha1.isIntact() && block.isIntact() && ids.isIntact() && longKey.isIntact() && ticket.isIntact();
    }
};

/// A client is made, does one thing and is destroyed.
struct Operation
{
    using OfNetDisk = std::function<int(CNetDisk&, const wchar_t* folder, Outputs&)>;
    using OfStorage = std::function<int(CFileStorage&, const wchar_t* folder, Outputs&)>;
    using OfStorage2 = std::function<int(CFileStorage2&, const wchar_t* folder, Outputs&)>;
    using OfStorage3 = std::function<int(const CFileStorage3&, Outputs&)>;
    using OfSearch = std::function<int(COnlineUserSearch&, Outputs&)>;

    Operation(const char* operation, const char* answer, OfNetDisk call)
        : name(operation), body(answer), run([=](const wchar_t* url, const wchar_t* folder, Outputs& out) {
              CNetDisk disk(url, nullptr);
              return call(disk, folder, out);
          })
    {
    }

    /// Without credentials: a login that fails before a transfer is no failure of the transfer.
    Operation(const char* operation, const char* answer, OfStorage call)
        : name(operation), body(answer), run([=](const wchar_t* url, const wchar_t* folder, Outputs& out) {
              CFileStorage storage(url, nullptr);
              return call(storage, folder, out);
          })
    {
    }

    Operation(const char* operation, const char* answer, OfStorage2 call)
        : name(operation), body(answer), run([=](const wchar_t* url, const wchar_t* folder, Outputs& out) {
              CFileStorage2 storage(url, nullptr, 0, 0, 0, 0);
              return call(storage, folder, out);
          })
    {
    }

    Operation(const char* operation, const char* answer, OfStorage3 call, int success = 0)
        : name(operation), body(answer), good(success), run([=](const wchar_t* url, const wchar_t*, Outputs& out) {
              const CFileStorage3 storage((url + std::wstring(L"/")).c_str(), L"sid=5", 0, 0, 0, 0);
              return call(storage, out);
          })
    {
    }

    Operation(const char* operation, const char* answer, OfSearch call)
        : name(operation), body(answer), run([=](const wchar_t* url, const wchar_t*, Outputs& out) {
              COnlineUserSearch search(url);
              return call(search, out);
          })
    {
    }

    std::string name;
    std::string body;                        ///< of the good answer
    int good = 0;                            ///< the result when nothing fails
    std::vector<support::Exchange> script{}; ///< empty: good answers
    bool isCompressed = false;
    bool readsForTheLog = false;     ///< a body that cannot be read changes nothing
    std::string lineWithoutMemory{}; ///< shows when some allocation fails
    std::function<int(const wchar_t* url, const wchar_t* folder, Outputs&)> run;
};

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

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

constexpr std::size_t enoughAnswers = 4;

/// The same with compressed answers.
Operation compressed(Operation operation, const char* lineWithoutMemory)
{
    operation.script.assign(enoughAnswers, answered("200 OK\r\nContent-Encoding: gzip",
                                                    wire::compress(operation.body, wire::Encoding::Gzip)));
    operation.isCompressed = true;
    operation.lineWithoutMemory = lineWithoutMemory;
    return operation;
}

/// The same with a server that refuses, and says why in a compressed body.
Operation refused(Operation operation, int result)
{
    operation.script.assign(enoughAnswers, answered("404 Not Found\r\nContent-Encoding: gzip",
                                                    wire::compress("no such file", wire::Encoding::Gzip)));
    operation.good = result;
    operation.isCompressed = true;
    operation.readsForTheLog = true;
    return operation;
}

/// The same with a session that has expired: the operation logs in first.
Operation expired(Operation operation, std::string_view login, const support::Exchange& refusal)
{
    operation.script = {goodAnswer(login), refusal, goodAnswer(login), goodAnswer(operation.body)};
    return operation;
}

Operation expired(Operation operation, std::string_view login)
{
    return expired(std::move(operation), login, answered("403 Forbidden\r\nContent-Length: 4", "who?"));
}

constexpr const char* folderListing =
    "{\"files\":[{\"fkey\":\"k\"},{\"fkey\":\"l\"}],\"folders\":[{\"fo_id\":\"d\"},{\"fo_id\":\"e\"}]}";
constexpr const char* binListing = "{\"data\":[{\"rs_id\":\"r\"},{\"rs_id\":\"s\"}]}";

const std::vector<Operation>& netDiskOperations()
{
    static const std::vector<Operation> all{
        {"UserLoginSession", "{\"uap_uid\":7}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.UserLogin(L"S"); }},
        {"UserLoginPassword", "{\"uap_uid\":7,\"uap_sid\":\"s\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.UserLogin(L"u", L"p"); }},
        {"PassportLoginTicket", "{\"uap_uid\":7,\"uap_sid\":\"s\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.PassportLoginTicket(L"b", L"t"); }},
        {"UserLogout", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.UserLogout(); }},
        {"FileUpload", "{\"fkey\":\"K\",\"fsize\":5,\"cflag\":1}",
         [](CNetDisk& disk, const wchar_t* folder, Outputs& out) {
             return disk.FileUpload(folder, L"a.txt", out.key.room, 20);
         }},
        {"FileDownload", "hello",
         [](CNetDisk& disk, const wchar_t* folder, Outputs&) { return disk.FileDownload(L"K", folder, nullptr); }},
        {"FileModify", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FileModify(L"K", L"F", L"n"); }},
        {"FileDelete", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FileDelete(L"K"); }},
        {"FileDelete4ever", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FileDelete4ever(L"K"); }},
        {"LargeFileCreate", "{\"fkey\":\"K\",\"fsize\":0,\"cflag\":0}",
         [](CNetDisk& disk, const wchar_t* folder, Outputs& out) {
             int complete = 0;
             return disk.LargeFileCreate(folder, L"a.txt", out.key.room, 20, complete);
         }},
        {"LargeFileUpload", "{\"fkey\":\"K\",\"fsize\":5}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             char data[] = "hello";
             return disk.LargeFileUpload(L"K", data, 5, 0);
         }},
        {"LargeFileFinish", "{\"fkey\":\"K\",\"fsize\":5}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.LargeFileFinish(L"K"); }},
        {"LargeFileGetInfo", "h",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             unsigned long size = 0;
             return disk.LargeFileGetInfo(L"K", out.name.room, 20, size, out.second.room);
         }},
        {"LargeFileDownload", "hello",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             unsigned long size = 5;
             return disk.LargeFileDownload(L"K", 0, out.block.room, size);
         }},
        {"CapacityInfo", "{\"total_space\":100,\"used_space\":7,\"max_file_size\":50}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             unsigned long long total = 0;
             unsigned long long used = 0;
             unsigned long most = 0;
             return disk.CapacityInfo(total, used, most);
         }},
        {"FileGetChecksum", "",
         [](CNetDisk& disk, const wchar_t* folder, Outputs& out) {
             unsigned long size = 0;
             return disk.FileGetChecksum(folder, L"a.txt", size, out.md5.room);
         }},
        {"FolderAdd", "{\"fo_id\":\"F\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) { return disk.FolderAdd(L"n", L"P", out.key.room, 40); }},
        {"FolderModi", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FolderModi(L"F", L"n", L"P"); }},
        {"FolderDel", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FolderDel(L"F"); }},
        {"FolderDel4ever", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FolderDel4ever(L"F"); }},
        {"FolderList", folderListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_FileInfo> files;
             std::vector<_FolderInfo> folders;
             return disk.FolderList(L"F", files, folders);
         }},
        {"FolderListUtf8", folderListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_FileInfoUTF8> files;
             std::vector<_FolderInfoUTF8> folders;
             return disk.FolderList(L"F", files, folders);
         }},
        {"PcodeCreate", "{\"pcode\":\"c\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             std::vector<_FileInfo> files(2);
             return disk.PcodeCreate(files, 60, out.key.room, 40);
         }},
        {"PcodeDelete", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_PcodeInfo> pcodes(2);
             return disk.PcodeDelete(pcodes);
         }},
        {"PcodeList", "{\"pcodes\":[{\"pcode\":\"c\"},{\"pcode\":\"d\"}]}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_PcodeInfo> pcodes;
             return disk.PcodeList(3, pcodes);
         }},
        {"PcodeInfo", "{\"files\":[{\"fid\":\"i\"},{\"fid\":\"j\"}]}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_FileInfo> files;
             return disk.PcodeInfo(L"c", files);
         }},
        {"PcodeDefer", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.PcodeDefer(L"c", 60); }},
        {"PcodeSave", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.PcodeSave(L"c", L"F"); }},
        {"PcodeDown", "hello",
         [](CNetDisk& disk, const wchar_t* folder, Outputs&) { return disk.PcodeDown(L"c", L"i", folder, nullptr); }},
        {"LargePcodeDown", "hello",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             unsigned long size = 5;
             return disk.LargePcodeDown(L"c", L"i", 0, out.block.room, size);
         }},
        {"RecyclebinList", binListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_RItemInfo> items;
             return disk.RecyclebinList(items);
         }},
        {"RecyclebinListUtf8", binListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_RItemInfoUTF8> items;
             return disk.RecyclebinList(items);
         }},
        {"RecyclebinRecover", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.RecyclebinRecover(L"r"); }},
        {"RecyclebinDel", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.RecyclebinDel(L"r"); }},
    };
    return all;
}

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

const std::vector<Operation>& storageOperations()
{
    static const std::vector<Operation> all{
        {"UserLoginSession", storageLogin,
         [](CFileStorage& storage, const wchar_t*, Outputs&) { return storage.UserLogin(L"S"); }},
        {"UserLoginPassword", storageLogin,
         [](CFileStorage& storage, const wchar_t*, Outputs&) { return storage.UserLogin(L"u", L"p"); }},
        {"UserLogout", storageLogin,
         [](CFileStorage& storage, const wchar_t*, Outputs&) { return storage.UserLogout(); }},
        {"PictureUpload", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
             return storage.PictureUpload(folder, L"a.txt");
         }},
        {"PictureDownload", "hello",
         [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
             return storage.PictureDownload(folder, L"d.txt");
         }},
        {"UserPhotoUpload", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
             return storage.UserPhotoUpload(folder, L"a.txt", L"n");
         }},
        {"UserPhotoDownload", "hello",
         [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
             return storage.UserPhotoDownload(folder, L"K", L"d.txt");
         }},
        {"EmoticonUpload", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
             return storage.EmoticonUpload(folder, L"a.txt", L"n");
         }},
        {"EmoticonDownload", "hello",
         [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
             return storage.EmoticonDownload(L"7", folder, L"K", L"d.txt");
         }},
        {"EmoticonRemove", storageDone,
         [](CFileStorage& storage, const wchar_t*, Outputs&) { return storage.EmoticonRemove(L"K"); }},
        {"EmoticonGetList", emoticonList,
         [](CFileStorage& storage, const wchar_t*, Outputs&) {
             unsigned count = 0;
             return storage.EmoticonGetList(nullptr, 0, count);
         }},
        {"FileGetChecksum", "",
         [](CFileStorage& storage, const wchar_t* folder, Outputs& out) {
             unsigned long size = 0;
             return storage.FileGetChecksum(folder, L"a.txt", size, out.md5.room, out.sha1.room);
         }},
        {"LargeFileCreate", storageUploaded,
         [](CFileStorage& storage, const wchar_t* folder, Outputs& out) {
             return storage.LargeFileCreate(folder, L"a.txt", out.key.room, 40);
         }},
        {"LargeFileUpload", storageDone,
         [](CFileStorage& storage, const wchar_t*, Outputs&) {
             char data[] = "hello";
             return storage.LargeFileUpload(L"K", data, 5, 0);
         }},
        {"LargeFileUploadFinish", storageDone,
         [](CFileStorage& storage, const wchar_t*, Outputs&) { return storage.LargeFileUploadFinish(L"K"); }},
        {"LargeFileGetInfo", "h",
         [](CFileStorage& storage, const wchar_t*, Outputs& out) {
             unsigned long size = 0;
             return storage.LargeFileGetInfo(L"7", L"K", out.name.room, 20, size, out.second.room, out.third.room);
         }},
        {"LargeFileDownload", "hello",
         [](CFileStorage& storage, const wchar_t*, Outputs& out) {
             unsigned long size = 5;
             return storage.LargeFileDownload(L"7", L"K", 0, out.block.room, size);
         }},
        {"LargeFileRenewTime", storageDone,
         [](CFileStorage& storage, const wchar_t*, Outputs&) { return storage.LargeFileRenewTime(L"K"); }},
        {"LargeFileRemove", storageDone,
         [](CFileStorage& storage, const wchar_t*, Outputs&) { return storage.LargeFileRemove(L"K"); }},
        {"LargeFileGetList", largeFileList,
         [](CFileStorage& storage, const wchar_t*, Outputs&) {
             std::vector<quorvex::LargeFileInfo> files;
             return storage.LargeFileGetList(files);
         }},
        {"LargeFileDepotInfo", depotSpace,
         [](CFileStorage& storage, const wchar_t*, Outputs&) {
             double total = 0;
             double used = 0;
             double left = 0;
             return storage.LargeFileDepotInfo(total, used, left);
         }},
    };
    return all;
}

const std::vector<Operation>& storage2Operations()
{
    static const std::vector<Operation> all{
        {"UserLogin", storageLogin,
         [](CFileStorage2& storage, const wchar_t*, Outputs&) { return storage.UserLogin(L"S"); }},
        {"UserLogout", storageLogin,
         [](CFileStorage2& storage, const wchar_t*, Outputs&) { return storage.UserLogout(); }},
        {"PictureUpload", storageUploaded,
         [](CFileStorage2& storage, const wchar_t* folder, Outputs&) {
             return storage.PictureUpload(folder, L"a.txt");
         }},
        {"PictureDownload", "hello",
         [](CFileStorage2& storage, const wchar_t* folder, Outputs&) {
             return storage.PictureDownload(folder, L"d.txt");
         }},
        {"LargeFileCreate", storageUploaded,
         [](CFileStorage2& storage, const wchar_t* folder, Outputs& out) {
             return storage.LargeFileCreate(folder, L"a.txt", out.key.room, 40);
         }},
        {"LargeFileUpload", storageDone,
         [](CFileStorage2& storage, const wchar_t*, Outputs&) {
             char data[] = "hello";
             return storage.LargeFileUpload(L"K", data, 5, 0);
         }},
        {"LargeFileUploadFinish", storageDone,
         [](CFileStorage2& storage, const wchar_t*, Outputs&) { return storage.LargeFileUploadFinish(L"K"); }},
        {"LargeFileDownload", "hello",
         [](CFileStorage2& storage, const wchar_t*, Outputs& out) {
             unsigned long size = 5;
             return storage.LargeFileDownload(L"7", L"K", 0, out.block.room, size);
         }},
        {"LargeFileRemove", storageDone,
         [](CFileStorage2& storage, const wchar_t*, Outputs&) { return storage.LargeFileRemove(L"K"); }},
        {"exit", "",
         [](CFileStorage2& storage, const wchar_t*, Outputs&) {
             storage.exit();
             return 0;
         }},
    };
    return all;
}

constexpr const char* apiDone = "{\"code\":200,\"fkey\":\"K\",\"ticket\":\"T\",\"fsize\":5,\"msg\":\"\"}";

const std::vector<Operation>& storage3Operations()
{
    static const std::vector<Operation> all{
        {"PictureUpload", apiDone,
         [](const CFileStorage3& storage, Outputs&) {
             char data[] = "hello";
             return storage.PictureUpload(L"p", data, 5);
         }},
        {"PictureDownload", "hello",
         [](const CFileStorage3& storage, Outputs&) {
             void* picture = nullptr;
             unsigned long size = 0;
             const int result = storage.PictureDownload(L"f", L"p", &picture, &size);
             EXPECT_EQ(picture != nullptr, result == 0);
             EXPECT_EQ(size, result == 0 ? 5u : 0u);
             storage.releaseBuffer(&picture);
             return result;
         }},
        {"BufferUpload", apiDone,
         [](const CFileStorage3& storage, Outputs& out) {
             char data[] = "hello";
             return storage.BufferUpload(out.longKey.room, data, 5, 0, L"n", out.ticket.room, 0);
         }},
        {"Bufferdownload", "hello",
         [](const CFileStorage3& storage, Outputs& out) {
             unsigned long size = 5;
             return storage.Bufferdownload(L"7", L"K", 0, out.block.room, size);
         },
         200},
        {"getBuffer", "",
         [](const CFileStorage3& storage, Outputs&) {
             void* buffer = nullptr;
             const int result = storage.getBuffer(&buffer, 100);
             EXPECT_EQ(buffer != nullptr, result == 0);
             storage.releaseBuffer(&buffer);
             return result;
         }},
    };
    return all;
}

constexpr const char* searchLogin = "{\"result\":200,\"errorinfo\":\"\",\"uid\":\"7\",\"sid\":\"s\"}";
constexpr const char* searchDone = "{\"result\":200,\"errorinfo\":\"\"}";
constexpr const char* searchIds = "{\"result\":200,\"errorinfo\":\"\",\"users\":[\"1\",\"2\",\"3\"]}";
constexpr const char* searchTotal = "{\"result\":200,\"errorinfo\":\"\",\"total\":3}";

const std::vector<Operation>& searchOperations()
{
    static const std::vector<std::string> pairs{"name", "a value that takes some room", "other", "20-30"};
    static const std::vector<Operation> all{
        {"ClientLogin", searchLogin, [](COnlineUserSearch& search, Outputs&) { return search.ClientLogin(L"S"); }},
        {"ClientLogout", searchLogin, [](COnlineUserSearch& search, Outputs&) { return search.ClientLogout(); }},
        {"UserReportStatus", searchDone,
         [](COnlineUserSearch& search, Outputs&) { return search.UserReportStatus("im", 2); }},
        {"UserUpdateAppInfo", searchDone,
         [](COnlineUserSearch& search, Outputs&) { return search.UserUpdateAppInfo("im", pairs); }},
        {"UserUpdateInfo", searchDone,
         [](COnlineUserSearch& search, Outputs&) { return search.UserUpdateInfo("app=im&a=b"); }},
        {"QueryByCondition", searchIds,
         [](COnlineUserSearch& search, Outputs& out) {
             unsigned count = 0;
             return search.QueryByCondition("app=im&sex=1", out.ids.room, 2, count);
         }},
        {"QueryByAppCondition", searchIds,
         [](COnlineUserSearch& search, Outputs& out) {
             unsigned count = 0;
             return search.QueryByAppCondition("im", pairs, 40, out.ids.room, 2, count);
         }},
        {"QueryCountByConditionString", searchTotal,
         [](COnlineUserSearch& search, Outputs&) {
             int count = 0;
             return search.QueryCountByConditionString("app=im&sex=1", count);
         }},
        {"QueryCountByConditionVector", searchTotal,
         [](COnlineUserSearch& search, Outputs&) {
             int count = 0;
             return search.QueryCountByConditionVector("im", pairs, count);
         }},
    };
    return all;
}

constexpr const char* inflaterOfAFile = "WriteFileDecompress(), inflateInit() return ret=-4";
constexpr const char* inflaterOfAText = "GetResponse() inflate() last return is not Z_STREAM_END, ret=-2";

const std::vector<Operation>& compressedOperations()
{
    static const std::vector<Operation> all{
        compressed(
            {"NetDiskDownload", "hello",
             [](CNetDisk& disk, const wchar_t* folder, Outputs&) { return disk.FileDownload(L"K", folder, L"d.txt"); }},
            inflaterOfAFile),
        compressed({"NetDiskLogout", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.UserLogout(); }},
                   inflaterOfAText),
        compressed({"StorageDownload", "hello",
                    [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
                        return storage.UserPhotoDownload(folder, L"K", L"d.txt");
                    }},
                   inflaterOfAFile),
        compressed({"StorageRange", "hello",
                    [](CFileStorage& storage, const wchar_t*, Outputs& out) {
                        unsigned long size = 5;
                        return storage.LargeFileDownload(L"7", L"K", 0, out.block.room, size);
                    }},
                   inflaterOfAText),
        compressed({"Search", searchIds,
                    [](COnlineUserSearch& search, Outputs& out) {
                        unsigned count = 0;
                        return search.QueryByCondition("app=im&sex=1", out.ids.room, 2, count);
                    }},
                   inflaterOfAText),
    };
    return all;
}

const std::vector<Operation>& refusedOperations()
{
    static const std::vector<Operation> all{
        refused({"StorageDownload", "",
                 [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
                     return storage.UserPhotoDownload(folder, L"K", L"d.txt");
                 }},
                404),
        refused({"StorageProbe", "",
                 [](CFileStorage& storage, const wchar_t*, Outputs& out) {
                     unsigned long size = 0;
                     return storage.LargeFileGetInfo(L"7", L"K", out.name.room, 20, size, nullptr, nullptr);
                 }},
                -112),
        refused(
            {"NetDiskDownload", "",
             [](CNetDisk& disk, const wchar_t* folder, Outputs&) { return disk.FileDownload(L"K", folder, L"d.txt"); }},
            -134),
    };
    return all;
}

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
                 [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
                     return loggedIn(storage, [&] { return storage.UserPhotoDownload(folder, L"K", L"d.txt"); });
                 }},
                storageLogin);
    operation.readsForTheLog = true;
    return operation;
}

const std::vector<Operation>& expiredOperations()
{
    static const std::string diskLogin = "{\"uap_uid\":7}";
    static const std::vector<Operation> all{
        expired({"NetDiskDownload", "hello",
                 [](CNetDisk& disk, const wchar_t* folder, Outputs&) {
                     return loggedIn(disk, [&] { return disk.FileDownload(L"K", folder, L"d.txt"); });
                 }},
                diskLogin),
        expired({"StorageUpload", storageUploaded,
                 [](CFileStorage& storage, const wchar_t* folder, Outputs&) {
                     return loggedIn(storage, [&] { return storage.UserPhotoUpload(folder, L"a.txt", L"n"); });
                 }},
                storageLogin),
        expiredStorageDownload(),
        expired({"StorageList", emoticonList,
                 [](CFileStorage& storage, const wchar_t*, Outputs&) {
                     unsigned count = 0;
                     return loggedIn(storage, [&] { return storage.EmoticonGetList(nullptr, 0, count); });
                 }},
                storageLogin, goodAnswer("{\"result\":403,\"errorinfo\":\"\",\"files\":[]}")),
        expired({"Search", searchIds,
                 [](COnlineUserSearch& search, Outputs& out) {
                     unsigned count = 0;
                     const int login = search.ClientLogin(L"S");
                     return login != 0 ? login : search.QueryByCondition("app=im&sex=1", out.ids.room, 2, count);
                 }},
                searchLogin),
    };
    return all;
}

/// A failure of these cannot end well.
bool canNotEndWell(std::string_view function)
{
    static constexpr std::array<std::string_view, 13> vital{
        "WinHttpOpen",
        "WinHttpCrackUrl",
        "WinHttpConnect",
        "WinHttpOpenRequest",
        "WinHttpAddRequestHeaders",
        "WinHttpSendRequest",
        "WinHttpReceiveResponse",
        "WinHttpReadData",
        "CreateEventW",
        "frl_event_add_win32_event",
        "frl_http_session_create",
        "frl_http_request_open",
        "frl_http_request_perform",
    };
    return std::ranges::find(vital, function) != vital.end();
}

bool needsTheServer(std::string_view operation)
{
    return operation != "FileGetChecksum" && operation != "exit" && operation != "getBuffer";
}

/// The lines about failures; that a client of the storage has no session shows in every one of its transfers.
std::vector<std::string> failures(const support::LogCapture& log)
{
    std::vector<std::string> lines = log.messages("ERROR");
    std::erase(lines, "CFileStorage::UserLoginWithSession() session is not correct");
    return lines;
}

bool isDocumented(const Operation& operation, int result)
{
    const bool isZlibs = result >= -5 && result <= -2;
    return (operation.isCompressed && isZlibs) || result == operation.good || result == 0 || result == 1 ||
           (result >= -140 && result <= -100) || result == -1;
}

struct Fault
{
    std::string function;
    unsigned call = 0;
};

/// How often each function was called.
using Counts = std::map<std::string, unsigned>;

struct Outcome
{
    int result = 0;
    Counts calls;
};

class FaultSweep : public testing::TestWithParam<Operation>
{
protected:
    Outcome run(const Fault* fault)
    {
        const Operation& operation = GetParam();
        support::ScriptedServer server;
        server.play(operation.script.empty() ? std::vector<support::Exchange>(enoughAnswers, goodAnswer(operation.body))
                                             : operation.script);
        const std::filesystem::path download = m_folder.path() / "d.txt";
        std::filesystem::remove(download);
        const std::wstring url = L"http://127.0.0.1:" + std::to_wstring(server.port()) + L"/api";

        support::LogCapture log;
        const support::HandleLedger ledger(m_calls);
        const Counts before = counts();
        Outputs outputs;
        Outcome outcome;
        if (fault != nullptr)
            m_calls.fail(fault->function, fault->call, ERROR_NOT_ENOUGH_MEMORY);
        outcome.result = operation.run(url.c_str(), m_folder.path().c_str(), outputs);
        server.stop();
        if (fault != nullptr)
            m_calls.fail(fault->function, 1, NO_ERROR, 0);
        for (const auto& [function, calls] : counts())
            outcome.calls.emplace(function, calls - before.at(function));

        EXPECT_TRUE(outputs.areIntact());
        EXPECT_TRUE(isDocumented(operation, outcome.result)) << outcome.result;
        EXPECT_TRUE(outcome.result != 0 || operation.good == 0) << "a failure that passes for a success";
        // An encoding that cannot be queried counts as none.
        const bool isBodyKnown = fault == nullptr || fault->function != "WinHttpQueryHeaders";
        if (outcome.result == 0 && isBodyKnown && std::filesystem::exists(download))
        {
            EXPECT_EQ(support::readFile(download), operation.body);
        }
        EXPECT_EQ(ledger.defects(), std::vector<std::string>{});
        // A line that finds no memory for some of its text is written without it.
        if (fault == nullptr || fault->function != "malloc")
        {
            for (const support::LogLine& line : log.lines())
                EXPECT_EQ(line.defect, "") << line.message;
        }
        const std::vector<std::string> lines = failures(log);
        if (outcome.result != operation.good)
        {
            EXPECT_FALSE(lines.empty()) << "a failure without a line";
        }
        m_failures.insert(lines.begin(), lines.end());
        return outcome;
    }

    /// Fails each call in turn that is made when nothing fails.
    void sweep(const std::string& function, unsigned calls)
    {
        for (Fault fault{function, 1}; fault.call <= calls; ++fault.call)
        {
            SCOPED_TRACE(function + ", call " + std::to_string(fault.call));
            const Outcome outcome = run(&fault);
            // How many reads a body takes is the network's affair.
            const bool hasFailed = outcome.calls.at(function) >= fault.call;
            if (hasFailed && isVital(function))
            {
                EXPECT_NE(outcome.result, GetParam().good);
            }
        }
    }

    bool isVital(std::string_view function) const
    {
        return canNotEndWell(function) && needsTheServer(GetParam().name) &&
               !(GetParam().readsForTheLog && function == "WinHttpReadData");
    }

    void SetUp() override { support::writeFile(m_folder.path() / "a.txt", "hello"); }

    /// Every line about a failure, of all runs.
    std::set<std::string> m_failures;

private:
    Counts counts() const
    {
        Counts all;
        for (const std::string& function : m_calls.functions())
            all.emplace(function, m_calls.calls(function));
        return all;
    }

    support::TempFolder m_folder;
    support::SystemCalls m_calls; ///< for all runs: to stand before every function takes longer than one of them
};

TEST_P(FaultSweep, NothingFailsWithoutAFault)
{
    EXPECT_EQ(run(nullptr).result, GetParam().good);
}

TEST_P(FaultSweep, EachSystemCall)
{
    for (const auto& [function, calls] : run(nullptr).calls)
        if (function != "malloc")
            sweep(function, calls);
}

TEST_P(FaultSweep, EachAllocation)
{
    sweep("malloc", run(nullptr).calls.at("malloc"));
    EXPECT_TRUE(GetParam().lineWithoutMemory.empty() || m_failures.contains(GetParam().lineWithoutMemory));
}

TEST(RecordVectors, AreNullWithoutMemory)
{
    support::SystemCalls calls;
    const auto withoutMemory = [&](auto make) {
        calls.fail("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);
        return make();
    };
    EXPECT_EQ(withoutMemory(&CNetDisk::NewFileInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewFolderInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewPcodeInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewRItemInfoVector), nullptr);
}

std::string nameOf(const testing::TestParamInfo<Operation>& parameter)
{
    return parameter.param.name;
}

INSTANTIATE_TEST_SUITE_P(NetDisk, FaultSweep, testing::ValuesIn(netDiskOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(FileStorage, FaultSweep, testing::ValuesIn(storageOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(FileStorage2, FaultSweep, testing::ValuesIn(storage2Operations()), nameOf);
INSTANTIATE_TEST_SUITE_P(FileStorage3, FaultSweep, testing::ValuesIn(storage3Operations()), nameOf);
INSTANTIATE_TEST_SUITE_P(OnlineUserSearch, FaultSweep, testing::ValuesIn(searchOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Compressed, FaultSweep, testing::ValuesIn(compressedOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Refused, FaultSweep, testing::ValuesIn(refusedOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Expired, FaultSweep, testing::ValuesIn(expiredOperations()), nameOf);

} // namespace
