#include "StorageSession.h"

#include "Failure.h"
#include "Session.h"
#include "Text.h"

namespace quorvex::console
{

void CheckThatLoginHolds(std::wstring_view path)
{
    /// What the module cuts off a request's path behind it.
    constexpr std::size_t kPathRoom = 255;
    if (path.size() > kPathRoom)
        throw Failure("the credentials make an address of " + std::to_string(path.size()) +
                      " characters; a request holds at most " + std::to_string(kPathRoom));
}

int RunAgainAfterLogin(const std::function<int()>& request, const std::function<int()>& logIn, int refusal)
{
    const int result = request();
    if (result != refusal)
        return result;
    const int login = logIn();
    return login != 0 ? login : request();
}

Storage::Storage(const Options& options)
    : m_user(QueryEscaped(options.user)),
      m_credential(QueryEscaped(LoginMethod(options) == "session" ? options.session : options.password)),
      m_storage(Wide(options.server).c_str(), nullptr)
{
    if (!m_storage.IsConnected())
        throw Failure("cannot use the server address " + options.server, Result::NotConnected);
    CheckThatLoginHolds(L"login_rest.php?u=" + m_user + L"&p=" + m_credential);
    CheckLogin({LogIn(), "UserLogin"}, options.server, m_storage.GetLastErrMsg());
}

int Storage::Run(const std::function<int(const CFileStorage&)>& request, int refusal)
{
    return RunAgainAfterLogin([&] { return request(m_storage); }, [&] { return LogIn(); }, refusal);
}

int Storage::LogIn()
{
    return m_user.empty() ? m_storage.UserLogin(m_credential.c_str())
                          : m_storage.UserLogin(m_user.c_str(), m_credential.c_str());
}

} // namespace quorvex::console
