#pragma once

#include "Options.h"

#include <quorvex/FileStorage.h>

#include <functional>
#include <string>
#include <string_view>

namespace quorvex::console
{

/// Ends a command whose login the module would cut.
/// @param path the login's path below the service's address
/// @throws Failure
void CheckThatLoginHolds(std::wstring_view path);

/// Runs a request, and once more after another login when its session has expired.
/// @param refusal what the request returns then
/// @return the last result, also when it is the login's
int RunAgainAfterLogin(const std::function<int()>& request, const std::function<int()>& logIn, int refusal = 403);

/// The shared file storage, first generation, with a login.
class Storage
{
public:
    /// Connects and logs in.
    /// @throws Failure
    explicit Storage(const Options& options);

    const CFileStorage* operator->() const { return &m_storage; }
    const CFileStorage& operator*() const { return m_storage; }

    /// Runs a request whose expired session the module leaves to its caller, and once more after another login.
    /// @param refusal what the request returns when the session has expired
    /// @return the last result, also when it is the login's
    int Run(const std::function<int(const CFileStorage&)>& request, int refusal = 403);

    int LogOut() { return m_storage.UserLogout(); }

private:
    int LogIn();

    std::wstring m_user; ///< empty when the credential is a session
    std::wstring m_credential;
    CFileStorage m_storage;
};

} // namespace quorvex::console
