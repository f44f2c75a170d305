#include "hostile/Operation.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace hostile
{
namespace
{

using namespace quorvex::netdisk;
using Class = Operation::Class;
using Kind = Operation::Kind;

constexpr const char* loginOfDisk = R"({"uap_uid":7,"uap_sid":"s","QVUserCenterLogin":"l"})";
constexpr const char* uploaded = R"({"fkey":"K","fsize":5,"cflag":1})";
constexpr const char* blockTaken = R"({"fkey":"K","fsize":5})";
constexpr const char* folderListing = R"({"files":[{"fkey":"k","name":"n"}],"folders":[{"fo_id":"d","name":"n"}]})";
constexpr const char* pcodeListing = R"({"pcodes":[{"pcode":"c","createtime":1}]})";
constexpr const char* pcodeContents = R"({"files":[{"fid":"i","name":"n"}]})";
constexpr const char* binListing = R"({"data":[{"rs_id":"r","name":"n"}]})";
constexpr const char* quota = R"({"total_space":100,"used_space":7,"max_file_size":50})";

constexpr const char* login = R"({"result":200,"uid":"7","sid":"s","errorinfo":""})";
constexpr const char* done = R"({"result":200,"errorinfo":""})";
constexpr const char* stored = R"({"result":200,"fkey":"a.txt","fsize":5,"errorinfo":""})";
constexpr const char* emoticons = R"({"result":200,"errorinfo":"","files":[{"fkey":"k","fname":"n","fsize":1}]})";
constexpr const char* depotFiles =
    R"({"result":200,"errorinfo":"","files":[{"fkey":"k","fname":"n","fsize":1,"fmd5":"m","fsha1":"s",)"
    R"("createtime":"2010-01-02 03:04:05","finish":1,"leftminute":7}]})";
constexpr const char* depotSpace =
    R"({"result":200,"uid":"7","totalspace":10,"totalsize":4,"freespace":6,"errorinfo":""})";
constexpr const char* apiDone = R"({"code":200,"fkey":"K","ticket":"T","fsize":5,"msg":""})";
constexpr const char* userIds = R"({"result":200,"errorinfo":"","users":["1","2","3"]})";
constexpr const char* userTotal = R"({"result":200,"errorinfo":"","total":3})";

template <typename Record>
using Records = std::unique_ptr<std::vector<Record>, void (*)(std::vector<Record>*)>;

Records<_FileInfo> newFiles()
{
    return {CNetDisk::NewFileInfoVector(), &CNetDisk::DeleteFileInfoVector};
}

Records<_FolderInfo> newFolders()
{
    return {CNetDisk::NewFolderInfoVector(), &CNetDisk::DeleteFolderInfoVector};
}

Records<_PcodeInfo> newPcodes()
{
    return {CNetDisk::NewPcodeInfoVector(), &CNetDisk::DeletePcodeInfoVector};
}

Records<_RItemInfo> newItems()
{
    return {CNetDisk::NewRItemInfoVector(), &CNetDisk::DeleteRItemInfoVector};
}

using Call = std::function<int(Stage&)>;

constexpr int damaged[] = {-2, -3, -4, -5};

std::vector<int> with(std::initializer_list<int> more)
{
    std::vector<int> all{1, -107, -111, -130, -132};
    all.insert(all.end(), std::begin(damaged), std::end(damaged));
    all.insert(all.end(), more);
    return all;
}

Operation disk(const char* name, Kind kind, const char* body, Call call)
{
    std::vector<int> failures = kind == Kind::File       ? with({-120, -134})
                                : kind == Kind::HeadOnly ? std::vector<int>{-111, -112, -130}
                                                         : with({-109, -110});
    return {std::string("CNetDisk.") + name, Class::NetDisk, kind, body, std::move(call), 0, std::move(failures), -111};
}

Operation storage(const char* name, Kind kind, const char* body, Call call)
{
    const bool isRange = kind == Kind::Memory || kind == Kind::HeadOnly;
    std::vector<int> failures = kind == Kind::File       ? with({-120})
                                : kind == Kind::HeadOnly ? std::vector<int>{-111, -112, -114, -130}
                                : kind == Kind::Memory   ? with({-114})
                                                         : with({-103, -109, -110});
    return {std::string("CFileStorage.") + name,
            Class::Storage,
            kind,
            body,
            std::move(call),
            0,
            std::move(failures),
            isRange ? -114 : -111};
}

Operation storage2(const char* name, Kind kind, const char* body, Call call)
{
    std::vector<int> failures = kind == Kind::Memory ? std::vector<int>{-1, -2, -11}
                                : kind == Kind::File ? std::vector<int>{-1, -2, -107, -120}
                                                     : std::vector<int>{1, -1, -2, -103};
    return {
        std::string("CFileStorage2.") + name, Class::Storage2, kind, body, std::move(call), 0, std::move(failures), -1};
}

Operation storage3(const char* name, Kind kind, const char* body, Call call, int success = 0)
{
    std::vector<int> failures = kind == Kind::Memory ? std::vector<int>{-1, -2, -11} : std::vector<int>{1, -1, -2};
    return {std::string("CFileStorage3.") + name,
            Class::Storage3,
            kind,
            body,
            std::move(call),
            success,
            std::move(failures),
            -1};
}

Operation search(const char* name, const char* body, Call call)
{
    return {std::string("COnlineUserSearch.") + name,
            Class::Search,
            Kind::Json,
            body,
            std::move(call),
            0,
            with({-110, -131}),
            -111};
}

void addDisk(std::vector<Operation>& all)
{
    all.insert(
        all.end(),
        {
            disk("UserLogin", Kind::Json, loginOfDisk, [](Stage& s) { return s.disk.UserLogin(L"S"); }),
            disk("UserLoginPassword", Kind::Json, loginOfDisk, [](Stage& s) { return s.disk.UserLogin(L"u", L"p"); }),
            disk("PassportLoginTicket", Kind::Json, loginOfDisk,
                 [](Stage& s) { return s.disk.PassportLoginTicket(L"b", L"t"); }),
            disk("UserLogout", Kind::Plain, "{}", [](Stage& s) { return s.disk.UserLogout(); }),
            disk("FileUpload", Kind::Json, uploaded,
                 [](Stage& s) { return s.disk.FileUpload(s.out.c_str(), L"a.txt", s.key.get(), 17); }),
            disk("FileUploadLarge", Kind::Json, uploaded,
                 [](Stage& s) { return s.disk.FileUpload(s.out.c_str(), L"large.bin", s.key.get(), 17); }),
            disk("FileDownload", Kind::File, "hello",
                 [](Stage& s) { return s.disk.FileDownload(L"K", s.in.c_str(), L"d.txt"); }),
            disk("FileDownloadNamed", Kind::File, "hello",
                 [](Stage& s) { return s.disk.FileDownload(L"K", s.in.c_str(), nullptr); }),
            disk("FileModify", Kind::Plain, "{}", [](Stage& s) { return s.disk.FileModify(L"K", L"F", L"n"); }),
            disk("FileDelete", Kind::Plain, "{}", [](Stage& s) { return s.disk.FileDelete(L"K"); }),
            disk("FileDelete4ever", Kind::Plain, "{}", [](Stage& s) { return s.disk.FileDelete4ever(L"K"); }),
            disk("LargeFileCreate", Kind::Json, uploaded,
                 [](Stage& s) {
                     int complete = 0;
                     return s.disk.LargeFileCreate(s.out.c_str(), L"a.txt", s.key.get(), 17, complete);
                 }),
            disk("LargeFileUpload", Kind::Json, blockTaken,
                 [](Stage& s) { return s.disk.LargeFileUpload(L"K", s.block.get(), 5, 0); }),
            disk("LargeFileUploadLarge", Kind::Json, R"({"fkey":"K","fsize":4194304})",
                 [](Stage& s) { return s.disk.LargeFileUpload(L"K", s.largeBlock.get(), LargeUpload, 0); }),
            disk("LargeFileFinish", Kind::Json, blockTaken, [](Stage& s) { return s.disk.LargeFileFinish(L"K"); }),
            disk("LargeFileGetInfo", Kind::HeadOnly, "h",
                 [](Stage& s) {
                     unsigned long size = 0;
                     return s.disk.LargeFileGetInfo(L"K", s.name.get(), 20, size, s.second.get());
                 }),
            disk("LargeFileDownload", Kind::Memory, "hello",
                 [](Stage& s) {
                     unsigned long size = 5;
                     return s.disk.LargeFileDownload(L"K", 0, s.block.get(), size);
                 }),
            disk("CapacityInfo", Kind::Json, quota,
                 [](Stage& s) {
                     unsigned long long total = 0;
                     unsigned long long used = 0;
                     unsigned long most = 0;
                     return s.disk.CapacityInfo(total, used, most);
                 }),
        });
}

void addDiskFolders(std::vector<Operation>& all)
{
    all.insert(
        all.end(),
        {
            disk("FolderAdd", Kind::Json, R"({"fo_id":"F"})",
                 [](Stage& s) { return s.disk.FolderAdd(L"n", L"P", s.name.get(), 20); }),
            disk("FolderModi", Kind::Plain, "{}", [](Stage& s) { return s.disk.FolderModi(L"F", L"n", L"P"); }),
            disk("FolderDel", Kind::Plain, "{}", [](Stage& s) { return s.disk.FolderDel(L"F"); }),
            disk("FolderDel4ever", Kind::Plain, "{}", [](Stage& s) { return s.disk.FolderDel4ever(L"F"); }),
            disk("FolderList", Kind::Json, folderListing,
                 [](Stage& s) {
                     const auto files = newFiles();
                     const auto folders = newFolders();
                     return s.disk.FolderList(L"F", *files, *folders);
                 }),
            disk("FolderListUtf8", Kind::Json, folderListing,
                 [](Stage& s) {
                     std::vector<_FileInfoUTF8> files;
                     std::vector<_FolderInfoUTF8> folders;
                     return s.disk.FolderList(L"F", files, folders);
                 }),
            disk("PcodeCreate", Kind::Json, R"({"pcode":"c"})",
                 [](Stage& s) {
                     std::vector<_FileInfo> files(2);
                     return s.disk.PcodeCreate(files, 60, s.name.get(), 20);
                 }),
            disk("PcodeDelete", Kind::Plain, "{}",
                 [](Stage& s) {
                     std::vector<_PcodeInfo> pcodes(2);
                     return s.disk.PcodeDelete(pcodes);
                 }),
            disk("PcodeList", Kind::Json, pcodeListing, [](Stage& s) { return s.disk.PcodeList(3, *newPcodes()); }),
            disk("PcodeInfo", Kind::Json, pcodeContents, [](Stage& s) { return s.disk.PcodeInfo(L"c", *newFiles()); }),
            disk("PcodeDefer", Kind::Plain, "{}", [](Stage& s) { return s.disk.PcodeDefer(L"c", 60); }),
            disk("PcodeSave", Kind::Plain, "{}", [](Stage& s) { return s.disk.PcodeSave(L"c", L"F"); }),
            disk("PcodeDown", Kind::File, "hello",
                 [](Stage& s) { return s.disk.PcodeDown(L"c", L"i", s.in.c_str(), L"d.txt"); }),
            disk("LargePcodeDown", Kind::Memory, "hello",
                 [](Stage& s) {
                     unsigned long size = 5;
                     return s.disk.LargePcodeDown(L"c", L"i", 0, s.block.get(), size);
                 }),
            disk("RecyclebinList", Kind::Json, binListing, [](Stage& s) { return s.disk.RecyclebinList(*newItems()); }),
            disk("RecyclebinListUtf8", Kind::Json, binListing,
                 [](Stage& s) {
                     std::vector<_RItemInfoUTF8> items;
                     return s.disk.RecyclebinList(items);
                 }),
            disk("RecyclebinRecover", Kind::Plain, "{}", [](Stage& s) { return s.disk.RecyclebinRecover(L"r"); }),
            disk("RecyclebinDel", Kind::Plain, "{}", [](Stage& s) { return s.disk.RecyclebinDel(L"r"); }),
        });
}

void addStorage(std::vector<Operation>& all)
{
    all.insert(
        all.end(),
        {
            storage("UserLogin", Kind::Json, login, [](Stage& s) { return s.storage.UserLogin(L"S"); }),
            storage("UserLoginPassword", Kind::Json, login, [](Stage& s) { return s.storage.UserLogin(L"u", L"p"); }),
            storage("PictureUpload", Kind::Json, stored,
                    [](Stage& s) { return s.storage.PictureUpload(s.out.c_str(), L"a.txt"); }),
            storage("PictureDownload", Kind::File, "hello",
                    [](Stage& s) { return s.storage.PictureDownload(s.in.c_str(), L"d.txt"); }),
            storage("UserPhotoUpload", Kind::Json, stored,
                    [](Stage& s) { return s.storage.UserPhotoUpload(s.out.c_str(), L"a.txt", L"n"); }),
            storage("UserPhotoUploadLarge", Kind::Json, stored,
                    [](Stage& s) { return s.storage.UserPhotoUpload(s.out.c_str(), L"large.bin", L"n"); }),
            storage("UserPhotoDownload", Kind::File, "hello",
                    [](Stage& s) { return s.storage.UserPhotoDownload(s.in.c_str(), L"K", L"d.txt"); }),
            storage("EmoticonUpload", Kind::Json, stored,
                    [](Stage& s) { return s.storage.EmoticonUpload(s.out.c_str(), L"a.txt", L"n"); }),
            storage("EmoticonDownload", Kind::File, "hello",
                    [](Stage& s) { return s.storage.EmoticonDownload(L"7", s.in.c_str(), L"K", L"d.txt"); }),
            storage("EmoticonRemove", Kind::Json, done, [](Stage& s) { return s.storage.EmoticonRemove(L"K"); }),
            storage("EmoticonGetList", Kind::Json, emoticons,
                    [](Stage& s) {
                        unsigned count = 0;
                        return s.storage.EmoticonGetList(nullptr, 0, count);
                    }),
            storage("LargeFileCreate", Kind::Json, stored,
                    [](Stage& s) { return s.storage.LargeFileCreate(s.out.c_str(), L"a.txt", s.name.get(), 20); }),
            storage("LargeFileUpload", Kind::Json, done,
                    [](Stage& s) { return s.storage.LargeFileUpload(L"K", s.block.get(), 5, 0); }),
            storage("LargeFileUploadLarge", Kind::Json, done,
                    [](Stage& s) { return s.storage.LargeFileUpload(L"K", s.largeBlock.get(), LargeUpload, 0); }),
            storage("LargeFileUploadFinish", Kind::Json, done,
                    [](Stage& s) { return s.storage.LargeFileUploadFinish(L"K"); }),
            storage("LargeFileGetInfo", Kind::HeadOnly, "h",
                    [](Stage& s) {
                        unsigned long size = 0;
                        return s.storage.LargeFileGetInfo(L"7", L"K", s.name.get(), 20, size, s.second.get(),
                                                          s.third.get());
                    }),
            storage("LargeFileDownload", Kind::Memory, "hello",
                    [](Stage& s) {
                        unsigned long size = 5;
                        return s.storage.LargeFileDownload(L"7", L"K", 0, s.block.get(), size);
                    }),
            storage("LargeFileRenewTime", Kind::Json, done,
                    [](Stage& s) { return s.storage.LargeFileRenewTime(L"K"); }),
            storage("LargeFileRemove", Kind::Json, done, [](Stage& s) { return s.storage.LargeFileRemove(L"K"); }),
            storage("LargeFileGetList", Kind::Json, depotFiles,
                    [](Stage& s) {
                        std::vector<quorvex::LargeFileInfo> files;
                        return s.storage.LargeFileGetList(files);
                    }),
            storage("LargeFileDepotInfo", Kind::Json, depotSpace,
                    [](Stage& s) {
                        double total = 0;
                        double used = 0;
                        double left = 0;
                        return s.storage.LargeFileDepotInfo(total, used, left);
                    }),
        });
}

void addLaterStorage(std::vector<Operation>& all)
{
    all.insert(
        all.end(),
        {
            storage2("UserLogin", Kind::Json, login, [](Stage& s) { return s.storage2.UserLogin(L"S"); }),
            storage2("PictureUpload", Kind::Json, stored,
                     [](Stage& s) { return s.storage2.PictureUpload(s.out.c_str(), L"a.txt"); }),
            storage2("PictureDownload", Kind::File, "hello",
                     [](Stage& s) { return s.storage2.PictureDownload(s.in.c_str(), L"d.txt"); }),
            storage2("LargeFileCreate", Kind::Json, stored,
                     [](Stage& s) { return s.storage2.LargeFileCreate(s.out.c_str(), L"a.txt", s.name.get(), 20); }),
            storage2("LargeFileUpload", Kind::Json, done,
                     [](Stage& s) { return s.storage2.LargeFileUpload(L"K", s.block.get(), 5, 0); }),
            storage2("LargeFileUploadLarge", Kind::Json, done,
                     [](Stage& s) { return s.storage2.LargeFileUpload(L"K", s.largeBlock.get(), LargeUpload, 0); }),
            storage2("LargeFileUploadFinish", Kind::Json, done,
                     [](Stage& s) { return s.storage2.LargeFileUploadFinish(L"K"); }),
            storage2("LargeFileDownload", Kind::Memory, "hello",
                     [](Stage& s) {
                         unsigned long size = 5;
                         return s.storage2.LargeFileDownload(L"7", L"K", 0, s.block.get(), size);
                     }),
            storage2("LargeFileRemove", Kind::Json, done, [](Stage& s) { return s.storage2.LargeFileRemove(L"K"); }),
            storage3("PictureUpload", Kind::Json, apiDone,
                     [](Stage& s) { return s.storage3.PictureUpload(L"p", s.block.get(), 5); }),
            storage3("PictureDownload", Kind::Plain, "hello",
                     [](Stage& s) {
                         void* picture = nullptr;
                         unsigned long size = 0;
                         const int result = s.storage3.PictureDownload(L"f", L"p", &picture, &size);
                         s.storage3.releaseBuffer(&picture);
                         return result;
                     }),
            storage3("BufferUpload", Kind::Json, apiDone,
                     [](Stage& s) {
                         return s.storage3.BufferUpload(s.longKey.get(), s.block.get(), 5, 0, L"n", s.ticket.get(), 0);
                     }),
            storage3("BufferUploadLarge", Kind::Json, apiDone,
                     [](Stage& s) {
                         return s.storage3.BufferUpload(s.longKey.get(), s.largeBlock.get(), LargeUpload, 0, L"n",
                                                        s.ticket.get(), 0);
                     }),
            storage3(
                "Bufferdownload", Kind::Memory, "hello",
                [](Stage& s) {
                    unsigned long size = 5;
                    return s.storage3.Bufferdownload(L"7", L"K", 0, s.block.get(), size);
                },
                200),
        });
}

void addSearch(std::vector<Operation>& all)
{
    static const std::vector<std::string> pairs{"name", "value", "other", "20-30"};
    all.insert(all.end(),
               {
                   search("ClientLogin", login, [](Stage& s) { return s.search.ClientLogin(L"S"); }),
                   search("ClientLogout", login, [](Stage& s) { return s.search.ClientLogout(); }),
                   search("UserReportStatus", done, [](Stage& s) { return s.search.UserReportStatus("im", 2); }),
                   search("UserUpdateAppInfo", done, [](Stage& s) { return s.search.UserUpdateAppInfo("im", pairs); }),
                   search("UserUpdateInfo", done, [](Stage& s) { return s.search.UserUpdateInfo("app=im&a=b"); }),
                   search("QueryByCondition", userIds,
                          [](Stage& s) {
                              unsigned count = 0;
                              return s.search.QueryByCondition("app=im", s.ids.get(), 2, count);
                          }),
                   search("QueryByAppCondition", userIds,
                          [](Stage& s) {
                              unsigned count = 0;
                              return s.search.QueryByAppCondition("im", pairs, 40, s.ids.get(), 2, count);
                          }),
                   search("QueryCountByConditionString", userTotal,
                          [](Stage& s) {
                              int count = 0;
                              return s.search.QueryCountByConditionString("app=im", count);
                          }),
                   search("QueryCountByConditionVector", userTotal,
                          [](Stage& s) {
                              int count = 0;
                              return s.search.QueryCountByConditionVector("im", pairs, count);
                          }),
               });
}

} // namespace

std::string Operation::headers() const
{
    const std::string disposition = "Content-Disposition: attachment;filename=\"s.txt;md5=0\r\n";
    return kind == Kind::HeadOnly ? "Content-Range: bytes 0-0/5\r\n" + disposition
           : kind == Kind::File   ? disposition
                                  : std::string();
}

bool Operation::isDocumented(int result) const
{
    return result == success || result > 1 || std::ranges::count(failures, result) != 0;
}

std::vector<int> Operation::cutShort() const
{
    if (overSessionService())
        return {-1};
    switch (kind)
    {
    case Kind::HeadOnly:
        return {success};
    case Kind::File:
        // What came is compared with nothing; a system that notices the cut makes reading fail.
        return {success, -107};
    default:
        return {1, -107};
    }
}

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> all = [] {
        std::vector<Operation> made;
        addDisk(made);
        addDiskFolders(made);
        addStorage(made);
        addLaterStorage(made);
        addSearch(made);
        return made;
    }();
    return all;
}

const Operation& operation(std::string_view name)
{
    const auto found = std::ranges::find(operations(), name, &Operation::name);
    if (found == operations().end())
        throw std::invalid_argument("there is no operation " + std::string(name));
    return *found;
}

const std::vector<const Operation*>& representatives()
{
    static const std::vector<const Operation*> all{
        &operation("CNetDisk.CapacityInfo"),
        &operation("CNetDisk.FolderAdd"),
        &operation("CNetDisk.FileUpload"),
        &operation("CNetDisk.LargeFileUpload"),
        &operation("CNetDisk.FileDownload"),
        &operation("CNetDisk.LargeFileDownload"),
        &operation("CNetDisk.LargeFileGetInfo"),
        &operation("CFileStorage.UserPhotoUpload"),
        &operation("CFileStorage.LargeFileUpload"),
        &operation("CFileStorage.PictureDownload"),
        &operation("CFileStorage.LargeFileDownload"),
        &operation("CFileStorage.LargeFileGetInfo"),
        &operation("CFileStorage2.PictureUpload"),
        &operation("CFileStorage2.PictureDownload"),
        &operation("CFileStorage2.LargeFileDownload"),
        &operation("CFileStorage3.BufferUpload"),
        &operation("CFileStorage3.Bufferdownload"),
        &operation("COnlineUserSearch.QueryByCondition"),
    };
    return all;
}

} // namespace hostile
