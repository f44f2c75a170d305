#pragma once

#include "../BoundedText.h"
#include "../CommonUtil.h"
#include "../JsonHelper.h"
#include "../ObjectPath.h"
#include "NetDiskHttpHelper.h"
#include "NetDiskJsonHelper.h"

#include <quorvex/NetDisk.h>

#include <string>

namespace quorvex::netdisk
{

/// A request body built by hand: nothing in it is escaped, and what does not fit is cut.
template <std::size_t Size>
using JsonBody = NarrowText<Size>;

/// The answers after which a request is sent once more, without a login.
struct RetryOn
{
    int first;
    int second = first;

    bool Contains(int answer) const { return answer == first || answer == second; }
};

/// How the operations reach the server: logging in first where that is still to be done, repeating a request, and
/// logging in again when the server no longer accepts the session.
struct CNetDisk::Exchange
{
    const CNetDisk& disk;

    /// @return 0 or -100
    int CheckConnection() const { return CHttpHelper::CheckConnection(disk.m_pHttpHelper.get()); }

    /// Replays the remembered login if none has succeeded yet. Whether it did shows in the request that follows.
    void LoginIfNeeded() const
    {
        if (disk.m_bNeedLogin)
        {
            ReloginAnyway();
        }
    }

    /// Transfers do not look for the connection: without one, opening their request fails.
    int PrepareTransfer() const
    {
        if (disk.m_pHttpHelper == nullptr)
        {
            return CheckConnection();
        }
        if (disk.IsConnected())
        {
            LoginIfNeeded();
        }
        return Result::Ok;
    }

    /// Logs in again where a failure ends the operation.
    /// @param sessionExpired the operation's message
    int ReloginOrFail(const wchar_t* sessionExpired) const
    {
        LOG_INFO(sessionExpired);
        const int result = disk.UserRelogin();
        if (result != Result::Ok)
        {
            LOG_ERROR(L"relogin error, return " << result);
        }
        return result;
    }

    /// Passes a failed request's answer through the error-reply reader.
    static int LogErrorReply(int result, const std::string& reply)
    {
        if (result != Result::Ok && !reply.empty())
        {
            CNetDiskJsonHelper().ErrorReply(result, reply);
        }
        return result;
    }

    /// A request that never logs in: the login requests themselves, and the logout.
    template <class Send>
    int SendWithoutLogin(const std::string& reply, Send send) const
    {
        if (const int result = CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        int result = send();
        if (result == 500)
        {
            result = send();
        }
        return LogErrorReply(result, reply);
    }

    /// A login request.
    /// @param parse reads a good reply
    template <class Parse>
    int SendLogin(const wchar_t* objectPath, const char* body, Parse parse) const
    {
        std::string reply;
        int result = SendWithoutLogin(reply, [&] { return disk.m_pHttpHelper->RequestPost(objectPath, body, reply); });
        if (result == Result::Ok)
        {
            result = parse(reply);
        }
        if (result == Result::Ok)
        {
            disk.m_bNeedLogin = false;
        }
        return result;
    }

    /// An ordinary request, sent at most twice: a 403 is followed by a login, whose own result does not matter, and
    /// some answers are followed by a second attempt as they are.
    template <class Send>
    int SendWithRelogin(RetryOn retryOn, const std::string& reply, Send send) const
    {
        return SendWithRelogin(retryOn, reply, send, [this] { return ReloginAnyway(); });
    }

    /// @param relogin logs in after a 403; a result other than 0 ends the operation with it
    template <class Send, class Relogin>
    int SendWithRelogin(RetryOn retryOn, const std::string& reply, Send send, Relogin relogin) const
    {
        if (const int result = CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        LoginIfNeeded();
        return SendTwice(retryOn, reply, send, relogin);
    }

    /// What a transfer ended with, and the HTTP status that it met where that is another number.
    struct Outcome
    {
        int result;
        int answer = result;
    };

    /// A whole-file transfer: it has its own two attempts first, and a 403 that is left after them is followed by a
    /// login and one more.
    template <class Transfer>
    int TransferWithRelogin(RetryOn retryOn, const wchar_t* sessionExpired, const std::string& reply,
                            Transfer transfer) const
    {
        if (const int result = PrepareTransfer(); result != Result::Ok)
        {
            return result;
        }
        Outcome outcome = transfer();
        if (retryOn.Contains(outcome.answer))
        {
            outcome = transfer();
        }
        if (outcome.answer == kForbidden)
        {
            if (const int login = ReloginOrFail(sessionExpired); login != Result::Ok)
            {
                return login;
            }
            outcome = transfer();
        }
        return LogErrorReply(outcome.result, reply);
    }

    /// Downloads a whole file.
    /// @return as FileDownload
    int DownloadWithRelogin(const ObjectPath& path, const wchar_t* localFolder, const wchar_t* fileName) const;

    /// Reads one range of a file, with the ordinary two attempts.
    /// @param size in: bytes wanted; out, on success: bytes received
    int DownloadRange(const ObjectPath& path, unsigned long pos, void* buffer, unsigned long& size) const;

private:
    /// Logs in again where the request that follows tells whether it worked.
    int ReloginAnyway() const
    {
        disk.UserRelogin();
        return Result::Ok;
    }

    template <class Send, class Relogin>
    static int SendTwice(RetryOn retryOn, const std::string& reply, Send send, Relogin relogin)
    {
        int result = send();
        if (result == kForbidden)
        {
            if (const int login = relogin(); login != Result::Ok)
            {
                return login;
            }
            result = send();
        }
        else if (retryOn.Contains(result))
        {
            result = send();
        }
        return LogErrorReply(result, reply);
    }
};

} // namespace quorvex::netdisk
