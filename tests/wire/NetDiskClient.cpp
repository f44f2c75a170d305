#include "wire/Client.h"

#include <quorvex/NetDisk.h>

#include <functional>
#include <map>

namespace wire
{
namespace
{

using Ulong = unsigned long;
using namespace quorvex::netdisk;

/// Opens what is protected.
class OpenNetDisk : public CNetDisk
{
public:
    using CNetDisk::CNetDisk;
    using CNetDisk::FileDownloadWithRetry;
    using CNetDisk::FileUploadWithRetry;
    using CNetDisk::init;
    using CNetDisk::UserLoginWithPassword;
    using CNetDisk::UserLoginWithSession;
    using CNetDisk::UserLoginWithTicket;
    using CNetDisk::UserRelogin;
};

std::string folderList(OpenNetDisk& disk, Arguments& a)
{
    if (a.holds<_FileInfo>(1))
        return shown(disk.FolderList(a.text(0), a.records<_FileInfo>(1), a.records<_FolderInfo>(2)));
    return shown(disk.FolderList(a.text(0), a.records<_FileInfoUTF8>(1), a.records<_FolderInfoUTF8>(2)));
}

/// Vectors of a call are released where the call ends; a case can only release none.
template <auto Delete>
std::string deletesNull(OpenNetDisk&, Arguments& a)
{
    if (a.text(0) != nullptr)
        throw CaseError("only null can be deleted");
    Delete(nullptr);
    return "void";
}

using Operation = std::function<std::string(OpenNetDisk&, Arguments&)>;

const std::map<std::string, Operation>& operations()
{
    static const std::map<std::string, Operation> all{
        {"init",
         [](auto& disk, auto& a) {
             disk.init(a.text(0), a.text(1));
             return std::string("void");
         }},
        {"IsConnected", [](auto& disk, auto&) { return shown(disk.IsConnected()); }},
        {"GetLastErrMsg", [](auto& disk, auto&) { return shown(disk.GetLastErrMsg()); }},
        {"UserLogin",
         [](auto& disk, auto& a) {
             return shown(a.count() == 1 ? disk.UserLogin(a.text(0)) : disk.UserLogin(a.text(0), a.text(1)));
         }},
        {"PassportLoginTicket",
         [](auto& disk, auto& a) { return shown(disk.PassportLoginTicket(a.text(0), a.text(1))); }},
        {"UserLogout", [](auto& disk, auto&) { return shown(disk.UserLogout()); }},
        {"UserLoginWithSession", [](auto& disk, auto& a) { return shown(disk.UserLoginWithSession(a.text(0))); }},
        {"UserLoginWithPassword",
         [](auto& disk, auto& a) { return shown(disk.UserLoginWithPassword(a.text(0), a.text(1))); }},
        {"UserLoginWithTicket",
         [](auto& disk, auto& a) { return shown(disk.UserLoginWithTicket(a.text(0), a.text(1))); }},
        {"UserRelogin", [](auto& disk, auto&) { return shown(disk.UserRelogin()); }},
        {"FileUpload",
         [](auto& disk, auto& a) {
             return shown(disk.FileUpload(a.text(0), a.text(1), a.wide(2), a.template number<Ulong>(3)));
         }},
        {"FileUploadWithRetry",
         [](auto& disk, auto& a) {
             return shown(disk.FileUploadWithRetry(a.text(0), a.text(1), a.text(2), a.text(3), a.wide(4),
                                                   a.template number<Ulong>(5)));
         }},
        {"FileDownload", [](auto& disk, auto& a) { return shown(disk.FileDownload(a.text(0), a.text(1), a.text(2))); }},
        {"FileDownloadWithRetry",
         [](auto& disk, auto& a) {
             return shown(disk.FileDownloadWithRetry(a.text(0), a.text(1), a.text(2), a.text(3)));
         }},
        {"FileModify", [](auto& disk, auto& a) { return shown(disk.FileModify(a.text(0), a.text(1), a.text(2))); }},
        {"FileDelete", [](auto& disk, auto& a) { return shown(disk.FileDelete(a.text(0))); }},
        {"FileDelete4ever", [](auto& disk, auto& a) { return shown(disk.FileDelete4ever(a.text(0))); }},
        {"FileGetChecksum",
         [](auto& disk, auto& a) {
             return shown(disk.FileGetChecksum(a.text(0), a.text(1), a.template out<Ulong>(2), a.wide(3)));
         }},
        {"LargeFileCreate",
         [](auto& disk, auto& a) {
             return shown(disk.LargeFileCreate(a.text(0), a.text(1), a.wide(2), a.template number<Ulong>(3),
                                               a.template out<int>(4)));
         }},
        {"LargeFileUpload",
         [](auto& disk, auto& a) {
             return shown(disk.LargeFileUpload(a.text(0), a.buffer(1), a.template number<Ulong>(2),
                                               a.template number<Ulong>(3)));
         }},
        {"LargeFileFinish", [](auto& disk, auto& a) { return shown(disk.LargeFileFinish(a.text(0))); }},
        {"LargeFileGetInfo",
         [](auto& disk, auto& a) {
             return shown(disk.LargeFileGetInfo(a.text(0), a.wide(1), a.template number<Ulong>(2),
                                                a.template out<Ulong>(3), a.wide(4)));
         }},
        {"LargeFileDownload",
         [](auto& disk, auto& a) {
             return shown(
                 disk.LargeFileDownload(a.text(0), a.template number<Ulong>(1), a.buffer(2), a.template out<Ulong>(3)));
         }},
        {"CapacityInfo",
         [](auto& disk, auto& a) {
             return shown(disk.CapacityInfo(a.template out<unsigned long long>(0),
                                            a.template out<unsigned long long>(1), a.template out<Ulong>(2)));
         }},
        {"FolderAdd",
         [](auto& disk, auto& a) {
             return shown(disk.FolderAdd(a.text(0), a.text(1), a.wide(2), a.template number<Ulong>(3)));
         }},
        {"FolderModi", [](auto& disk, auto& a) { return shown(disk.FolderModi(a.text(0), a.text(1), a.text(2))); }},
        {"FolderDel", [](auto& disk, auto& a) { return shown(disk.FolderDel(a.text(0))); }},
        {"FolderDel4ever", [](auto& disk, auto& a) { return shown(disk.FolderDel4ever(a.text(0))); }},
        {"FolderList", folderList},
        {"PcodeCreate",
         [](auto& disk, auto& a) {
             return shown(disk.PcodeCreate(a.template records<_FileInfo>(0), a.template number<Ulong>(1), a.wide(2),
                                           a.template number<Ulong>(3)));
         }},
        {"PcodeDelete", [](auto& disk, auto& a) { return shown(disk.PcodeDelete(a.template records<_PcodeInfo>(0))); }},
        {"PcodeList",
         [](auto& disk, auto& a) {
             return shown(disk.PcodeList(a.template number<Ulong>(0), a.template records<_PcodeInfo>(1)));
         }},
        {"PcodeInfo",
         [](auto& disk, auto& a) { return shown(disk.PcodeInfo(a.text(0), a.template records<_FileInfo>(1))); }},
        {"PcodeDefer",
         [](auto& disk, auto& a) { return shown(disk.PcodeDefer(a.text(0), a.template number<Ulong>(1))); }},
        {"PcodeSave", [](auto& disk, auto& a) { return shown(disk.PcodeSave(a.text(0), a.text(1))); }},
        {"PcodeDown",
         [](auto& disk, auto& a) { return shown(disk.PcodeDown(a.text(0), a.text(1), a.text(2), a.text(3))); }},
        {"LargePcodeDown",
         [](auto& disk, auto& a) {
             return shown(disk.LargePcodeDown(a.text(0), a.text(1), a.template number<Ulong>(2), a.buffer(3),
                                              a.template out<Ulong>(4)));
         }},
        {"RecyclebinList",
         [](auto& disk, auto& a) {
             return shown(a.template holds<_RItemInfo>(0) ? disk.RecyclebinList(a.template records<_RItemInfo>(0))
                                                          : disk.RecyclebinList(a.template records<_RItemInfoUTF8>(0)));
         }},
        {"RecyclebinRecover", [](auto& disk, auto& a) { return shown(disk.RecyclebinRecover(a.text(0))); }},
        {"RecyclebinDel", [](auto& disk, auto& a) { return shown(disk.RecyclebinDel(a.text(0))); }},
        {"DeleteFileInfoVector", deletesNull<&CNetDisk::DeleteFileInfoVector>},
        {"DeleteFolderInfoVector", deletesNull<&CNetDisk::DeleteFolderInfoVector>},
        {"DeletePcodeInfoVector", deletesNull<&CNetDisk::DeletePcodeInfoVector>},
        {"DeleteRItemInfoVector", deletesNull<&CNetDisk::DeleteRItemInfoVector>},
    };
    return all;
}

class NetDiskClient : public Client
{
public:
    explicit NetDiskClient(const Arguments& a)
        : m_disk(a.count() > 0 ? a.text(0) : nullptr, a.count() > 1 ? a.text(1) : nullptr)
    {
    }

    std::string call(const std::string& operation, Arguments& arguments) override
    {
        const auto found = operations().find(operation);
        if (found == operations().end())
            throw CaseError("unknown operation " + operation);
        return found->second(m_disk, arguments);
    }

private:
    OpenNetDisk m_disk;
};

} // namespace

std::unique_ptr<Client> makeNetDisk(const Arguments& arguments)
{
    return std::make_unique<NetDiskClient>(arguments);
}

std::unique_ptr<Client> makeClient(const std::string& kind, const Arguments& arguments)
{
    if (kind == "netdisk")
        return makeNetDisk(arguments);
    if (kind == "search")
        return makeSearch(arguments);
    if (kind == "storage")
        return makeStorage(arguments);
    if (kind == "storage2")
        return makeStorage2(arguments);
    if (kind == "storage3")
        return makeStorage3(arguments);
    throw CaseError("unknown client " + kind);
}

} // namespace wire
