#include "StorageClients.h"

#include <cstring>

namespace quorvex::soak
{

namespace
{

// No fault takes as long, in milliseconds.
constexpr int kTimeout = 30000;

} // namespace

void StorageClients::Open()
{
    m_first.emplace((m_setting.server + L"/storage").c_str(), m_account.session.c_str());
    m_setting.Note(Op::Storage1Create, Result::Ok);
    m_setting.NoteRight(Op::Storage1IsConnected, m_first->IsConnected(), "CFileStorage::IsConnected");
    m_setting.NoteRight(Op::Storage1GetLastErrMsg, *m_first->GetLastErrMsg() == L'\0', "CFileStorage::GetLastErrMsg");
    OpenSecond();
    OpenThird();
}

void StorageClients::OpenSecond()
{
    m_second.emplace((m_setting.server + L"/storage").c_str(), m_account.session.c_str(), kTimeout, kTimeout, kTimeout,
                     kTimeout);
    m_setting.Note(Op::Storage2Create, Result::Ok);
    TryThrice([&] { return m_setting.Note(Op::Storage2UserLogin, m_second->UserLogin(m_account.session.c_str())); });
}

void StorageClients::OpenThird()
{
    m_third.emplace((m_setting.server + L"/storage/").c_str(), (L"session=" + m_account.session).c_str(), kTimeout,
                    kTimeout, kTimeout, kTimeout);
    m_setting.Note(Op::Storage3Create, Result::Ok);
}

void StorageClients::Close()
{
    m_first.reset();
    m_setting.Note(Op::Storage1Destroy, Result::Ok);
    m_second.reset();
    m_setting.Note(Op::Storage2Destroy, Result::Ok);
    m_third.reset();
    m_setting.Note(Op::Storage3Destroy, Result::Ok);
}

void StorageClients::LogInFirst()
{
    if (m_setting.Turn(Op::Storage1UserLogout))
    {
        m_setting.Note(Op::Storage1UserLogout, m_first->UserLogout());
    }
    if (m_setting.Turn(Op::Storage1UserLoginPassword, 3) == 0)
    {
        m_setting.Note(Op::Storage1UserLoginPassword,
                       m_first->UserLogin(m_account.name.c_str(), m_account.password.c_str()));
    }
    m_setting.Note(Op::Storage1UserLoginSession, m_first->UserLogin(m_account.session.c_str()));
}

void StorageClients::LogInSecond()
{
    if (m_setting.Turn(Op::Storage2Exit))
    {
        m_second->exit();
        m_setting.Note(Op::Storage2Exit, Result::Ok);
        m_setting.Require(m_setting.Note(Op::Storage2UserLogout, m_second->UserLogout()) == Result::RequestRefused,
                          "CFileStorage2 sends after exit");
        m_second.reset();
        m_setting.Note(Op::Storage2Destroy, Result::Ok);
        return OpenSecond();
    }
    m_setting.Note(Op::Storage2UserLogout, m_second->UserLogout());
    TryThrice([&] { return m_setting.Note(Op::Storage2UserLogin, m_second->UserLogin(m_account.session.c_str())); });
}

void StorageClients::LogInThird()
{
    if (m_setting.Turn(Op::Storage3Exit))
    {
        m_third->exit();
        m_setting.Note(Op::Storage3Exit, Result::Ok);
        char byte = 0;
        m_setting.Require(m_setting.Note(Op::Storage3PictureUpload, m_third->PictureUpload(L"refused", &byte, 1)) ==
                              Result::RequestRefused,
                          "CFileStorage3 sends after exit");
        m_third.reset();
        m_setting.Note(Op::Storage3Destroy, Result::Ok);
        return OpenThird();
    }
    m_setting.Note(Op::Storage3UserLogout, m_third->UserLogout());
    m_setting.Note(Op::Storage3UserLogin, m_third->UserLogin((L"session=" + m_account.session).c_str()));
}

void StorageClients::UseBuffer() const
{
    const auto size = static_cast<unsigned long>(Below(m_setting.random, 65536));
    void* buffer = nullptr;
    m_setting.Note(Op::Storage3GetBuffer, m_third->getBuffer(&buffer, size));
    if (buffer != nullptr)
    {
        std::memset(buffer, 1, size);
    }
    m_third->releaseBuffer(&buffer);
    m_setting.Note(Op::Storage3ReleaseBuffer, Result::Ok);
}

} // namespace quorvex::soak
