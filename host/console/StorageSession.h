#pragma once

#include "Options.h"

#include <quorvex/FileStorage.h>

#include <functional>
#include <string>

namespace quorvex::console
{

/// The shared file storage, with a login.
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

private:
    int LogIn();

    std::wstring m_user; ///< empty when the credential is a session
    std::wstring m_credential;
    CFileStorage m_storage;
};

} // namespace quorvex::console
