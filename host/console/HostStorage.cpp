#include "HostStorage.h"

#include "AccountSession.h"
#include "Failure.h"
#include "StorageSession.h"
#include "Text.h"

namespace quorvex::console
{
namespace
{

/// In milliseconds. A block may be one write on a slow line, and a server reads a file of gigabytes through before it
/// answers to its end.
constexpr int kResolveTimeout = 10'000;
constexpr int kConnectTimeout = 20'000;
constexpr int kSendTimeout = 300'000;
constexpr int kReceiveTimeout = 300'000;

template <class Client>
constexpr int kGeneration = 0;
template <>
constexpr int kGeneration<CFileStorage2> = 2;
template <>
constexpr int kGeneration<CFileStorage3> = 3;

int LogInWith(CFileStorage2& client, const std::string& session)
{
    const std::wstring text = QueryEscaped(session);
    CheckThatLoginHolds(L"check.php?s=" + text);
    return client.UserLogin(text.c_str());
}

int LogInWith(CFileStorage3& client, const std::string& session)
{
    return client.UserLogin((L"session=" + Wide(session)).c_str());
}

} // namespace

template <class Client>
HostStorage<Client>::HostStorage(const Options& options)
    : m_options(options),
      m_client(Wide(AddressFor(kGeneration<Client>, options.server)).c_str(), nullptr, kResolveTimeout, kConnectTimeout,
               kSendTimeout, kReceiveTimeout)
{
    Check({LogIn(), "UserLogin"}, "cannot log in to " + options.server, Transport::Host);
}

template <class Client>
int HostStorage<Client>::Run(const std::function<int(Client&)>& request)
{
    return RunAgainAfterLogin([&] { return request(m_client); }, [&] { return LogIn(); });
}

template <class Client>
int HostStorage<Client>::LogIn()
{
    return LogInWith(m_client, OpenAccountSession(m_options).text);
}

template class HostStorage<CFileStorage2>;
template class HostStorage<CFileStorage3>;

std::string AddressFor(int generation, const std::string& server)
{
    const std::string address = WithoutSlashAtTheEnd(server);
    return generation == 3 ? address + '/' : address;
}

} // namespace quorvex::console
