#include "wire/Client.h"

#include <quorvex/FileStorage.h>

#include <functional>
#include <map>

namespace wire
{
namespace
{

using Ulong = unsigned long;
using namespace quorvex;

/// Opens what is protected.
class OpenStorage : public CFileStorage
{
public:
    using CFileStorage::CFileStorage;
    using CFileStorage::FileDownloadWithRetry;
    using CFileStorage::FileUploadWithRetry;
    using CFileStorage::UserLoginWithPassword;
    using CFileStorage::UserLoginWithSession;
    using CFileStorage::UserRelogin;
};

using Operation = std::function<std::string(OpenStorage&, Arguments&)>;
using Operations = std::map<std::string, Operation>;

const Operations& sessionOperations()
{
    static const Operations all{
        {"IsConnected", [](auto& storage, auto&) { return shown(storage.IsConnected()); }},
        {"GetLastErrMsg", [](auto& storage, auto&) { return shown(storage.GetLastErrMsg()); }},
        {"UserLogin",
         [](auto& storage, auto& a) {
             return shown(a.count() == 1 ? storage.UserLogin(a.text(0)) : storage.UserLogin(a.text(0), a.text(1)));
         }},
        {"UserLogout", [](auto& storage, auto&) { return shown(storage.UserLogout()); }},
        {"UserLoginWithPassword",
         [](auto& storage, auto& a) { return shown(storage.UserLoginWithPassword(a.text(0), a.text(1))); }},
        {"UserLoginWithSession", [](auto& storage, auto& a) { return shown(storage.UserLoginWithSession(a.text(0))); }},
        {"UserRelogin", [](auto& storage, auto& a) { return shown(storage.UserRelogin(a.text(0), a.text(1))); }},
    };
    return all;
}

const Operations& fileOperations()
{
    static const Operations all{
        {"PictureUpload", [](auto& storage, auto& a) { return shown(storage.PictureUpload(a.text(0), a.text(1))); }},
        {"PictureDownload",
         [](auto& storage, auto& a) { return shown(storage.PictureDownload(a.text(0), a.text(1))); }},
        {"UserPhotoUpload",
         [](auto& storage, auto& a) { return shown(storage.UserPhotoUpload(a.text(0), a.text(1), a.text(2))); }},
        {"UserPhotoDownload",
         [](auto& storage, auto& a) { return shown(storage.UserPhotoDownload(a.text(0), a.text(1), a.text(2))); }},
        {"EmoticonUpload",
         [](auto& storage, auto& a) { return shown(storage.EmoticonUpload(a.text(0), a.text(1), a.text(2))); }},
        {"EmoticonDownload",
         [](auto& storage, auto& a) {
             return shown(storage.EmoticonDownload(a.text(0), a.text(1), a.text(2), a.text(3)));
         }},
        {"EmoticonRemove", [](auto& storage, auto& a) { return shown(storage.EmoticonRemove(a.text(0))); }},
        {"EmoticonGetList",
         [](auto& storage, auto& a) {
             return shown(storage.EmoticonGetList(static_cast<EmoticonInfo*>(a.buffer(0)),
                                                  a.template number<unsigned>(1), a.template out<unsigned>(2)));
         }},
        {"FileGetChecksum",
         [](auto& storage, auto& a) {
             return shown(
                 storage.FileGetChecksum(a.text(0), a.text(1), a.template out<Ulong>(2), a.wide(3), a.wide(4)));
         }},
        {"FileUploadWithRetry",
         [](auto& storage, auto& a) {
             return shown(storage.FileUploadWithRetry(a.text(0), a.text(1), a.text(2), a.text(3), a.wide(4),
                                                      a.template number<Ulong>(5)));
         }},
        {"FileDownloadWithRetry",
         [](auto& storage, auto& a) {
             return shown(storage.FileDownloadWithRetry(a.text(0), a.text(1), a.text(2), a.text(3)));
         }},
    };
    return all;
}

const Operations& depotOperations()
{
    static const Operations all{
        {"LargeFileCreate",
         [](auto& storage, auto& a) {
             return shown(storage.LargeFileCreate(a.text(0), a.text(1), a.wide(2), a.template number<Ulong>(3)));
         }},
        {"LargeFileUpload",
         [](auto& storage, auto& a) {
             return shown(storage.LargeFileUpload(a.text(0), a.buffer(1), a.template number<Ulong>(2),
                                                  a.template number<Ulong>(3)));
         }},
        {"LargeFileUploadFinish",
         [](auto& storage, auto& a) { return shown(storage.LargeFileUploadFinish(a.text(0))); }},
        {"LargeFileGetInfo",
         [](auto& storage, auto& a) {
             return shown(storage.LargeFileGetInfo(a.text(0), a.text(1), a.wide(2), a.template number<Ulong>(3),
                                                   a.template out<Ulong>(4), a.wide(5), a.wide(6)));
         }},
        {"LargeFileDownload",
         [](auto& storage, auto& a) {
             return shown(storage.LargeFileDownload(a.text(0), a.text(1), a.template number<Ulong>(2), a.buffer(3),
                                                    a.template out<Ulong>(4)));
         }},
        {"LargeFileRenewTime", [](auto& storage, auto& a) { return shown(storage.LargeFileRenewTime(a.text(0))); }},
        {"LargeFileRemove", [](auto& storage, auto& a) { return shown(storage.LargeFileRemove(a.text(0))); }},
        {"LargeFileGetList",
         [](auto& storage, auto& a) { return shown(storage.LargeFileGetList(a.template records<LargeFileInfo>(0))); }},
        {"LargeFileDepotInfo",
         [](auto& storage, auto& a) {
             return shown(storage.LargeFileDepotInfo(a.template out<double>(0), a.template out<double>(1),
                                                     a.template out<double>(2)));
         }},
    };
    return all;
}

class StorageClient : public Client
{
public:
    explicit StorageClient(const Arguments& a)
        : m_storage(a.count() > 0 ? a.text(0) : nullptr, a.count() > 1 ? a.text(1) : nullptr)
    {
    }

    std::string call(const std::string& operation, Arguments& arguments) override
    {
        for (const Operations* operations : {&sessionOperations(), &fileOperations(), &depotOperations()})
            if (const auto found = operations->find(operation); found != operations->end())
                return found->second(m_storage, arguments);
        throw CaseError("unknown operation " + operation);
    }

private:
    OpenStorage m_storage;
};

} // namespace

std::unique_ptr<Client> makeStorage(const Arguments& arguments)
{
    return std::make_unique<StorageClient>(arguments);
}

} // namespace wire
