#include <quorvex/NetDisk.h>

#include "../NoThrow.h"
#include "NetDiskExchange.h"

namespace quorvex::netdisk
{

namespace
{

enum LoginType : unsigned int
{
    kLoginNone = 0,
    kLoginSession = 1,
    kLoginPassword = 2,
    kLoginTicket = 3
};

/// The server's session lives in the connection's cookies, so of this reply only the user id is kept.
int ReadLogin(const std::string& reply, int& uapUid)
{
    const char* uapSid = nullptr;
    const char* userCenterLogin = nullptr;
    return CNetDiskJsonHelper().LoginReply(reply, uapUid, uapSid, userCenterLogin);
}

} // namespace

CNetDisk::CNetDisk(const wchar_t* serverUrl, const wchar_t* session)
    : m_nLoginType(kLoginNone), m_nUapUid(0), m_bNeedLogin(true)
{
    init(serverUrl, session);
}

CNetDisk::~CNetDisk() = default;

void CNetDisk::init(const wchar_t* serverUrl, const wchar_t* session)
{
    NoThrow(L"CNetDisk::init()", [&]() -> int {
        if (serverUrl != nullptr)
        {
            m_pHttpHelper = std::make_unique<CNetDiskHttpHelper>(serverUrl);
        }
        if (session != nullptr)
        {
            m_pszCredential2 = CopyText(session);
            m_nLoginType = kLoginSession;
        }
        return Result::Ok;
    });
}

bool CNetDisk::IsConnected() const
{
    return m_pHttpHelper != nullptr && m_pHttpHelper->IsConnected();
}

const wchar_t* CNetDisk::GetLastErrMsg() const
{
    return LastErrMsg();
}

int CNetDisk::UserLogin(const wchar_t* session)
{
    return NoThrow(L"CNetDisk::UserLogin()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::UserLogin(lpszUapSession=" << session << L")");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        m_pszCredential2 = CopyText(session);
        m_pszCredential1.reset();
        m_nLoginType = kLoginSession;
        return UserLoginWithSession(m_pszCredential2.get());
    });
}

int CNetDisk::UserLogin(const wchar_t* userName, const wchar_t* password)
{
    return NoThrow(L"CNetDisk::UserLogin()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::UserLogin(lpszUserName=" << userName << L")");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        auto userNameCopy = CopyText(userName);
        m_pszCredential2 = CopyText(password);
        m_pszCredential1 = std::move(userNameCopy);
        m_nLoginType = kLoginPassword;
        return UserLoginWithPassword(m_pszCredential1.get(), m_pszCredential2.get());
    });
}

int CNetDisk::PassportLoginTicket(const wchar_t* first, const wchar_t* second)
{
    return NoThrow(L"CNetDisk::PassportLoginTicket()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::PassportLoginTicket(lpszTicket=" << first << L"," << second << L")");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        auto firstCopy = CopyText(first);
        m_pszCredential2 = CopyText(second);
        m_pszCredential1 = std::move(firstCopy);
        m_nLoginType = kLoginTicket;
        return UserLoginWithTicket(first, second);
    });
}

int CNetDisk::UserLoginWithSession(const wchar_t* session)
{
    return NoThrow(L"CNetDisk::UserLoginWithSession()", [&]() -> int {
        if (session == nullptr)
        {
            LOG_ERROR(L"CNetDisk::UserLoginWithSession() session is not correct");
            return Result::SessionMissing;
        }
        LOG_TRACE(L"CNetDisk::UserLoginWithSession(lpszUapSession=" << session << L")");

        JsonBody<256> body;
        body << "{\"uap_sid\":\"" << session << "\"}";

        return Exchange{*this}.SendLogin(L"passport/check", body.c_str(), [&](const std::string& reply) {
            return CNetDiskJsonHelper().SessionCheckReply(reply, m_nUapUid);
        });
    });
}

int CNetDisk::UserLoginWithPassword(const wchar_t* userName, const wchar_t* password)
{
    return NoThrow(L"CNetDisk::UserLoginWithPassword()", [&]() -> int {
        if (userName == nullptr || password == nullptr)
        {
            LOG_ERROR(L"CNetDisk::UserLoginWithPassword() username or password is not correct");
            return Result::CredentialsMissing;
        }
        // The password stays out of the log.
        LOG_TRACE(L"CNetDisk::UserLoginWithPassword(lpszUserName=" << userName << L")");

        JsonBody<256> body;
        body << "{\"account\":\"" << userName << "\",\"password\":\"" << password << "\"}";
        return Exchange{*this}.SendLogin(L"passport/login", body.c_str(),
                                         [&](const std::string& reply) { return ReadLogin(reply, m_nUapUid); });
    });
}

int CNetDisk::UserLoginWithTicket(const wchar_t* first, const wchar_t* second)
{
    return NoThrow(L"CNetDisk::UserLoginWithTicket()", [&]() -> int {
        if (first == nullptr || second == nullptr)
        {
            LOG_ERROR(L"CNetDisk::UserLoginWithTicket() blowfish or ticket is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CNetDisk::UserLoginWithTicket(lpszTicket=" << first << L"," << second << L")");

        JsonBody<256> body;
        body << "{\"blowfish\":\"" << first << "\",\"ticket\":\"" << second << "\"}";
        return Exchange{*this}.SendLogin(L"passport/loginticket", body.c_str(),
                                         [&](const std::string& reply) { return ReadLogin(reply, m_nUapUid); });
    });
}

int CNetDisk::UserRelogin() const
{
    // What a login changes is mutable; only its signature says otherwise.
    auto* const self = const_cast<CNetDisk*>(this);
    switch (m_nLoginType)
    {
    case kLoginSession:
        return self->UserLoginWithSession(m_pszCredential2.get());
    case kLoginPassword:
        return self->UserLoginWithPassword(m_pszCredential1.get(), m_pszCredential2.get());
    case kLoginTicket:
        return self->UserLoginWithTicket(m_pszCredential1.get(), m_pszCredential2.get());
    default:
        return Result::BadAnswer;
    }
}

int CNetDisk::UserLogout()
{
    return NoThrow(L"CNetDisk::UserLogout()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::UserLogout()");
        std::string reply;
        return Exchange{*this}.SendWithoutLogin(reply,
                                                [&] { return m_pHttpHelper->RequestGet(L"passport/logout", reply); });
    });
}

} // namespace quorvex::netdisk
