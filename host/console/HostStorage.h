#pragma once

#include "Options.h"

#include <quorvex/FileStorage2.h>
#include <quorvex/FileStorage3.h>

#include <functional>
#include <string>

namespace quorvex::console
{

/// The shared file storage over the host's HTTP session service, with a session of the account system. Another one is
/// opened when it has expired.
/// @tparam Client CFileStorage2 or CFileStorage3
template <class Client>
class HostStorage
{
public:
    /// Logs in.
    /// @throws Failure
    explicit HostStorage(const Options& options);

    Client* operator->() { return &m_client; }

    /// Runs a request, and once more after another login when its session has expired.
    /// @return the last result, also when it is the login's
    /// @throws Failure when the account system opens no session
    int Run(const std::function<int(Client&)>& request);

private:
    int LogIn();

    const Options& m_options;
    Client m_client;
};

using Storage2 = HostStorage<CFileStorage2>;
using Storage3 = HostStorage<CFileStorage3>;

/// The service's address as a generation takes it: the third appends its paths without a slash, the others with one.
std::string AddressFor(int generation, const std::string& server);

} // namespace quorvex::console
