#pragma once

#include "../BoundedText.h"
#include "../CommonUtil.h"
#include "../JsonHelper.h"
#include "../ObjectPath.h"
#include "SFSReplies.h"
#include "ShareFileStorageHttpHelper.h"

#include <quorvex/FileStorage.h>
#include <quorvex/Results.h>

#include <string>

namespace quorvex
{

/// How the operations reach the server: logging in first where that is still to be done, and logging in again when the
/// server no longer accepts the session. Nothing is repeated for any other reason.
struct CFileStorage::Exchange
{
    const CFileStorage& storage;

    CShareFileStorageHttpHelper& Helper() const { return *storage.m_pHttpHelper; }

    LoginState Login() const { return {storage.m_pszUid, storage.m_pszSid, storage.m_bNeedLogin}; }

    /// @return 0 or -100
    int CheckConnection() const { return CHttpHelper::CheckConnection(storage.m_pHttpHelper.get()); }

    int Relogin() const { return storage.UserRelogin(storage.m_pszUserName.get(), storage.m_pszCredential.get()); }

    /// What every operation that needs a login begins with. Whether the login worked shows in the request that follows.
    /// @return 0 or -100
    int Prepare() const
    {
        const int result = CheckConnection();
        if (result == Result::Ok && storage.m_bNeedLogin)
        {
            Relogin();
        }
        return result;
    }

    /// Logs in again where a failure ends the operation.
    /// @param sessionExpired the operation's message
    int ReloginOrFail(const wchar_t* sessionExpired) const
    {
        LOG_INFO(sessionExpired);
        const int result = Relogin();
        if (result != Result::Ok)
        {
            LOG_ERROR(L"relogin error, return " << result);
        }
        return result;
    }

    /// Runs a step that says with 403 that the session has expired, and once more after a login.
    /// @param sessionExpired the operation's message
    template <class Step>
    int RunWithRelogin(const wchar_t* sessionExpired, Step step) const
    {
        const int result = step();
        if (result != kForbidden)
        {
            return result;
        }
        if (const int login = ReloginOrFail(sessionExpired); login != Result::Ok)
        {
            return login;
        }
        return step();
    }

    /// Runs a step that leaves the server's own code, and once more after a login when that says that the session has
    /// expired.
    /// @param sessionExpired the operation's message
    template <class Step>
    int RunWithCodeRelogin(const wchar_t* sessionExpired, const int& code, Step step) const
    {
        const int result = step();
        if (result != Result::Ok || code != kForbidden)
        {
            return result;
        }
        const int login = ReloginOrFail(sessionExpired);
        return login == Result::Ok ? step() : login;
    }

    /// Sends a request and reads its plain reply.
    template <class Send>
    int SendForResult(Send send) const
    {
        if (const int result = Prepare(); result != Result::Ok)
        {
            return result;
        }
        std::string reply;
        const int result = send(reply);
        return result == Result::Ok ? ReadResult(reply) : result;
    }

    /// Sends a login request and keeps what its reply gives.
    int SendLogin(const ObjectPath& path) const;
};

} // namespace quorvex
