#include "wire/Client.h"

#include <ferrolink/http_session.h>

#include <quorvex/FileStorage2.h>

#include <functional>
#include <map>
#include <memory>

namespace wire
{
namespace
{

using Ulong = unsigned long;
using namespace quorvex;

/// Opens what is protected.
class OpenStorage : public CFileStorage2
{
public:
    using CFileStorage2::CFileStorage2;
    using CFileStorage2::FileDownloadWithRetry;
    using CFileStorage2::FileUploadInternal;
    using CFileStorage2::FileUploadWithRetry;
    using CFileStorage2::UserLoginWithSession;
};

/// A session that the host hands in, closed at the end.
class HostSession
{
public:
    HostSession() : m_session(frl_http_session_create()) {}
    ~HostSession() { frl_http_session_close(m_session); }
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    __frl_stru_handle__* get() const { return m_session; }

private:
    __frl_stru_handle__* m_session;
};

using Operation = std::function<std::string(OpenStorage&, Arguments&)>;
using Operations = std::map<std::string, Operation>;

/// The first argument is the session: null, or any text for one of the case's own.
std::string fileUploadInternal(const OpenStorage& storage, Arguments& a)
{
    const auto session = a.isNull(0) ? nullptr : std::make_unique<HostSession>();
    return shown(storage.FileUploadInternal(session ? session->get() : nullptr, a.text(1), a.text(2), a.text(3),
                                            a.text(4), a.text(5), a.wide(6), a.number<Ulong>(7)));
}

const Operations& operations()
{
    static const Operations all{
        {"exit",
         [](auto& storage, auto&) {
             storage.exit();
             return std::string("void");
         }},
        {"UserLogin", [](auto& storage, auto& a) { return shown(storage.UserLogin(a.text(0))); }},
        {"UserLoginWithSession", [](auto& storage, auto& a) { return shown(storage.UserLoginWithSession(a.text(0))); }},
        {"UserLogout", [](auto& storage, auto&) { return shown(storage.UserLogout()); }},
        {"PictureUpload", [](auto& storage, auto& a) { return shown(storage.PictureUpload(a.text(0), a.text(1))); }},
        {"PictureDownload",
         [](auto& storage, auto& a) { return shown(storage.PictureDownload(a.text(0), a.text(1))); }},
        {"FileUploadInternal", fileUploadInternal},
        {"FileUploadWithRetry",
         [](auto& storage, auto& a) {
             return shown(storage.FileUploadWithRetry(a.text(0), a.text(1), a.text(2), a.text(3), a.wide(4),
                                                      a.template number<Ulong>(5)));
         }},
        {"FileDownloadWithRetry",
         [](auto& storage, auto& a) {
             return shown(storage.FileDownloadWithRetry(a.text(0), a.text(1), a.text(2), a.text(3)));
         }},
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
        {"LargeFileDownload",
         [](auto& storage, auto& a) {
             return shown(storage.LargeFileDownload(a.text(0), a.text(1), a.template number<Ulong>(2), a.buffer(3),
                                                    a.template out<Ulong>(4)));
         }},
        {"LargeFileRemove", [](auto& storage, auto& a) { return shown(storage.LargeFileRemove(a.text(0))); }},
    };
    return all;
}

class Storage2Client : public Client
{
public:
    explicit Storage2Client(const Arguments& a)
        : m_storage(a.text(0), a.text(1), timeout(a, 2), timeout(a, 3), timeout(a, 4), timeout(a, 5))
    {
    }

    std::string call(const std::string& operation, Arguments& arguments) override
    {
        const auto found = operations().find(operation);
        if (found == operations().end())
            throw CaseError("unknown operation " + operation);
        return found->second(m_storage, arguments);
    }

private:
    OpenStorage m_storage;
};

} // namespace

std::unique_ptr<Client> makeStorage2(const Arguments& arguments)
{
    return std::make_unique<Storage2Client>(arguments);
}

} // namespace wire
