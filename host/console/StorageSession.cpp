#include "StorageSession.h"

#include "Failure.h"
#include "Session.h"
#include "Text.h"

#include <string_view>

namespace quorvex::console
{
namespace
{

/// What the module cuts off a request's path behind it.
constexpr std::size_t kPathRoom = 255;

void CheckThatPathHolds(const std::wstring& user, const std::wstring& credential)
{
    constexpr std::wstring_view frame = L"login_rest.php?u=&p=";
    const std::size_t size = frame.size() + user.size() + credential.size();
    if (size > kPathRoom)
        throw Failure("the credentials make an address of " + std::to_string(size) +
                      " characters; a request holds at most " + std::to_string(kPathRoom));
}

} // namespace

Storage::Storage(const Options& options)
    : m_user(QueryEscaped(options.user)),
      m_credential(QueryEscaped(LoginMethod(options) == "session" ? options.session : options.password)),
      m_storage(Wide(options.server).c_str(), nullptr)
{
    if (!m_storage.IsConnected())
        throw Failure("cannot use the server address " + options.server, Result::NotConnected);
    CheckThatPathHolds(m_user, m_credential);
    Check(LogIn(), "cannot log in to " + options.server);
}

int Storage::Run(const std::function<int(const CFileStorage&)>& request, int refusal)
{
    const int result = request(m_storage);
    if (result != refusal)
        return result;
    const int login = LogIn();
    return login != 0 ? login : request(m_storage);
}

int Storage::LogIn()
{
    return m_user.empty() ? m_storage.UserLogin(m_credential.c_str())
                          : m_storage.UserLogin(m_user.c_str(), m_credential.c_str());
}

} // namespace quorvex::console
