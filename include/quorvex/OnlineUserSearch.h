#ifndef QUORVEX_ONLINEUSERSEARCH_H
#define QUORVEX_ONLINEUSERSEARCH_H

#include "Export.h"
#include "Results.h"

#include <memory>
#include <string>
#include <vector>

/// @file
/// The client of the online-user search.

namespace quorvex
{

class CSearchUserOLHttpHelper;

/// The client of the online-user search: it reports the user's presence, publishes profile and application values,
/// and asks which users are online.
///
/// One object holds one connection to the service and the session of the last login. Every operation blocks until
/// the server has answered and returns a result code (see @ref results): 0 on success, a negative code of the module,
/// an HTTP status, the server's own result code, or 1 for an answer that could not be understood. A request that is
/// answered with 500 is sent up to three times. A 403, of HTTP or of the server, makes every operation but login and
/// logout log in again and repeat its request once; a login that fails then ends it with its own result.
///
/// Threads: one object serves one thread at a time; different objects are independent of each other.
///
/// Wide texts are UTF-16, narrow ones are bytes that go out as they are or percent-encoded; all end with a zero. A
/// null text of a request goes out empty. Form bodies that the object builds are cut at 8191 bytes. Nothing that is
/// passed in is kept by address, and nothing that is handed out has to be released. No exception leaves an
/// operation: memory exhaustion is logged and returned as 1.
class QUORVEX_API COnlineUserSearch
{
public:
    /// Connects to a service. A URL that cannot be used leaves the object unconnected: every operation then gives
    /// -100.
    /// @param url scheme, host, optional port and optional path, for example "http://search.example/search"
    explicit COnlineUserSearch(const wchar_t* url);

    /// Closes the connection. The server's session is left to expire; ClientLogout ends it at once.
    ~COnlineUserSearch();

    COnlineUserSearch(const COnlineUserSearch&) = delete;
    COnlineUserSearch& operator=(const COnlineUserSearch&) = delete;

    /// @name Session
    /// @{

    /// Logs in with a session of the account system, which is remembered for later repetition.
    /// @param session the session
    /// @return 0; -102 session is null; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a
    ///         code of the server, or a @ref get_code
    int ClientLogin(const wchar_t* session);

    /// Ends the session on the server. It stays remembered.
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref get_code
    int ClientLogout();
    /// @}

    /// @return an empty text that lives as long as the module, never null; failures are described in the log only
    const wchar_t* GetLastErrMsg() const;

    /// @name What others can find
    /// @{

    /// Reports the user's presence.
    /// @param app    the application, in the ANSI code page; not encoded
    /// @param status the application's own number for it
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, a
    ///         @ref get_code, or the result of a failed login
    int UserReportStatus(const char* app, int status) const;

    /// Publishes values of an application.
    /// @param app  the application; not encoded
    /// @param info names and values by turns: a name, which is not encoded, its value, which is percent-encoded, and so
    ///             on; it may be empty
    /// @return as UserReportStatus, with a @ref post_code; 1 also for an odd number of texts
    int UserUpdateAppInfo(const char* app, const std::vector<std::string>& info) const;

    /// Publishes values with a form of the caller's own making.
    /// @param body the form, sent as it is
    /// @return as UserReportStatus, with a @ref post_code
    int UserUpdateInfo(const char* body) const;
    /// @}

    /// @name Queries
    /// @{

    /// Asks which users meet a condition, in a form of the caller's own making.
    /// @param condition the form, sent as it is
    /// @param ids       room for capacity ids; written on success only
    /// @param capacity  how many ids there is room for; further ones are dropped
    /// @param count     receives how many were written; 0 after a failure
    /// @return as UserReportStatus, with a @ref post_code
    int QueryByCondition(const char* condition, unsigned int* ids, const unsigned int& capacity,
                         unsigned int& count) const;

    /// Asks which users of an application meet conditions.
    /// @param app        the application; not encoded
    /// @param conditions names and values by turns, as in UserUpdateAppInfo
    /// @param skip       how many of the matching users to leave out
    /// @param ids        as in QueryByCondition
    /// @param capacity   as in QueryByCondition
    /// @param count      as in QueryByCondition; left as it was for an odd number of texts and without a connection
    /// @return as UserReportStatus, with a @ref post_code; 1 also for an odd number of texts
    int QueryByAppCondition(const char* app, const std::vector<std::string>& conditions, int skip, unsigned int* ids,
                            const unsigned int& capacity, unsigned int& count) const;

    /// Asks how many users meet a condition, in a form of the caller's own making.
    /// @param condition the form, sent as it is
    /// @param count     receives the number; 0 after a failure
    /// @return as UserReportStatus, with a @ref post_code
    int QueryCountByConditionString(const char* condition, int& count) const;

    /// Asks how many users of an application meet conditions.
    /// @param app        the application; not encoded
    /// @param conditions names and values by turns, as in UserUpdateAppInfo
    /// @param count      as in QueryCountByConditionString; left as it was for an odd number of texts and without a
    ///                   connection
    /// @return as UserReportStatus, with a @ref post_code; 1 also for an odd number of texts
    int QueryCountByConditionVector(const char* app, const std::vector<std::string>& conditions, int& count) const;
    /// @}

protected:
    /// The login request.
    /// @param session the session; null gives -102
    /// @return as ClientLogin
    int ClientLoginWithSession(const wchar_t* session) const;

    /// Repeats the last login.
    /// @return as ClientLoginWithSession; -102 when there was none
    int ClientRelogin() const;

private:
    struct Exchange;

    std::unique_ptr<CSearchUserOLHttpHelper> m_pHttpHelper;
    std::unique_ptr<wchar_t[]> m_pszSession;
};

} // namespace quorvex

#endif
