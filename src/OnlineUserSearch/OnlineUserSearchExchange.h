#pragma once

#include "../CommonUtil.h"
#include "../JsonHelper.h"
#include "OLUSJsonHelper.h"
#include "SearchUserOLHttpHelper.h"

#include <quorvex/OnlineUserSearch.h>
#include <quorvex/Results.h>

#include <string>

namespace quorvex
{

/// How the operations reach the server: repeating a request that meets an inner error, and logging in again, at most
/// once, when the server no longer accepts the session.
struct COnlineUserSearch::Exchange
{
    const COnlineUserSearch& search;

    CSearchUserOLHttpHelper& Helper() const { return *search.m_pHttpHelper; }

    /// @return 0 or -100
    int CheckConnection() const { return CHttpHelper::CheckConnection(search.m_pHttpHelper.get()); }

    /// Sends a request, up to three times while the answer is 500.
    template <class Send>
    static int SendWithRetry(Send send)
    {
        static constexpr int kServerError = 500;
        static constexpr int kAttempts = 3;

        int result = send();
        for (int attempt = 1; result == kServerError && attempt < kAttempts; ++attempt)
        {
            result = send();
        }
        return result;
    }

    /// What the log says of an expired session. An operation has words of its own.
    struct ReloginMessages
    {
        const wchar_t* expired;
        /// When the login after an HTTP 403 fails; its result follows.
        const wchar_t* statusReloginFailed;
        /// When the login after the server's own 403 fails; its result follows.
        const wchar_t* codeReloginFailed;
    };

    /// Sends a request and reads its reply.
    /// @param send    sends once: int(std::string& reply)
    /// @param read    reads a reply: int(OLUSJsonHelper&, const std::string& reply, int& code, const char*& errorinfo)
    /// @param succeed what remains to be done after success; a server's code of 0 is none, although it is returned
    template <class Send, class Read, class Succeed>
    int Run(const ReloginMessages& messages, Send send, Read read, Succeed succeed) const
    {
        std::string reply;
        int result = SendWithRetry([&] { return send(reply); });
        const bool isLoginSpent = result == kForbidden;
        if (isLoginSpent)
        {
            if (const int login = Relogin(messages.expired, messages.statusReloginFailed); login != Result::Ok)
            {
                return login;
            }
            result = send(reply);
        }
        if (result != Result::Ok)
        {
            return result;
        }

        OLUSJsonHelper helper;
        int code = kNoCode;
        const char* errorinfo = nullptr;
        result = read(helper, reply, code, errorinfo);
        if (result == Result::Ok && code == kForbidden && !isLoginSpent)
        {
            if (const int login = Relogin(messages.expired, messages.codeReloginFailed); login != Result::Ok)
            {
                return login;
            }
            result = send(reply);
            if (result == Result::Ok)
            {
                code = kNoCode;
                result = read(helper, reply, code, errorinfo);
            }
        }
        if (result != Result::Ok)
        {
            return result;
        }
        if (code != kCodeOk)
        {
            return RefusedBy(code, errorinfo);
        }
        succeed();
        return Result::Ok;
    }

    /// Sends a request that never logs in, and reads its reply, which is a login's.
    template <class Send>
    static int RunLogin(Send send)
    {
        std::string reply;
        if (const int result = SendWithRetry([&] { return send(reply); }); result != Result::Ok)
        {
            return result;
        }
        OLUSJsonHelper helper;
        int code = kNoCode;
        const char* uid = nullptr;
        const char* sid = nullptr;
        const char* errorinfo = nullptr;
        if (const int result = helper.ParseLoginResponse(reply, code, uid, sid, errorinfo); result != Result::Ok)
        {
            return result;
        }
        return code == kCodeOk ? Result::Ok : RefusedBy(code, errorinfo);
    }

private:
    int Relogin(const wchar_t* expired, const wchar_t* failed) const
    {
        LOG_INFO(expired);
        const int result = search.ClientRelogin();
        if (result != Result::Ok)
        {
            LOG_ERROR(failed << result);
        }
        return result;
    }
};

} // namespace quorvex
