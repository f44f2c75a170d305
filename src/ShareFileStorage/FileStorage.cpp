#include <quorvex/FileStorage.h>

#include "../ChecksumHelper.h"
#include "../JsonHelper.h"
#include "../NoThrow.h"
#include "FileStorageExchange.h"
#include "SFSJsonHelper.h"

#include <array>
#include <string_view>

namespace quorvex
{

CFileStorage::CFileStorage(const wchar_t* server, const wchar_t* session) : m_bNeedLogin(true)
{
    NoThrow(L"CFileStorage::CFileStorage()", [&]() -> int {
        if (server != nullptr)
        {
            m_pHttpHelper = std::make_unique<CShareFileStorageHttpHelper>(server);
        }
        m_pszCredential = CopyText(session);
        return Result::Ok;
    });
}

CFileStorage::~CFileStorage() = default;

const wchar_t* CFileStorage::GetLastErrMsg() const
{
    return LastErrMsg();
}

bool CFileStorage::IsConnected() const
{
    return m_pHttpHelper != nullptr && m_pHttpHelper->IsConnected();
}

int CFileStorage::UserLogin(const wchar_t* session)
{
    return NoThrow(L"CFileStorage::UserLogin()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::UserLogin(lpszUapSession=" << session << L")");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        m_pszCredential = CopyText(session);
        m_pszUserName.reset();
        return UserLoginWithSession(m_pszCredential.get());
    });
}

int CFileStorage::UserLogin(const wchar_t* userName, const wchar_t* password)
{
    return NoThrow(L"CFileStorage::UserLogin()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::UserLogin(lpszUserName=" << userName << L")");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        auto userNameCopy = CopyText(userName);
        m_pszCredential = CopyText(password);
        m_pszUserName = std::move(userNameCopy);
        return UserLoginWithPassword(m_pszUserName.get(), m_pszCredential.get());
    });
}

int CFileStorage::UserLoginWithPassword(const wchar_t* userName, const wchar_t* password)
{
    return NoThrow(L"CFileStorage::UserLoginWithPassword()", [&]() -> int {
        if (userName == nullptr || password == nullptr)
        {
            LOG_ERROR(L"CFileStorage::UserLoginWithPassword() username or password is not correct");
            return Result::CredentialsMissing;
        }
        // The password stays out of the log.
        LOG_TRACE(L"CFileStorage::UserLoginWithPassword(lpszUserName=" << userName << L")");
        ObjectPath path;
        path << L"login_rest.php?u=" << userName << L"&p=" << password;
        return Exchange{*this}.SendLogin(path);
    });
}

int CFileStorage::UserLoginWithSession(const wchar_t* session)
{
    return NoThrow(L"CFileStorage::UserLoginWithSession()", [&]() -> int {
        if (session == nullptr)
        {
            LOG_ERROR(L"CFileStorage::UserLoginWithSession() session is not correct");
            return Result::SessionMissing;
        }
        LOG_TRACE(L"CFileStorage::UserLoginWithSession(lpszUapSession=" << session << L")");
        return Exchange{*this}.SendLogin(FormatObjectPath(L"check.php?s=%s", session));
    });
}

int CFileStorage::UserRelogin(const wchar_t* userName, const wchar_t* credential) const
{
    // What a login changes is mutable; only its signature says otherwise.
    auto* const self = const_cast<CFileStorage*>(this);
    return userName != nullptr ? self->UserLoginWithPassword(userName, credential)
                               : self->UserLoginWithSession(credential);
}

int CFileStorage::UserLogout()
{
    return NoThrow(L"CFileStorage::UserLogout()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::UserLogout()");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        std::string reply;
        const int result = exchange.Helper().RequestGet(L"logout_rest.php", reply);
        return result == Result::Ok ? ReadLogout(reply, exchange.Login()) : result;
    });
}

int CFileStorage::FileUploadWithRetry(const wchar_t* path, const wchar_t* folder, const wchar_t* fileName,
                                      const wchar_t* serverName, wchar_t* keyOut, unsigned long keyOutLen) const
{
    return NoThrow(L"CFileStorage::FileUploadWithRetry()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::FileUpload(lpszLocalFileName=" << fileName << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        return exchange.RunWithRelogin(L"session expired when do file upload, try relogin to server", [&] {
            std::string reply;
            const int result = exchange.Helper().FileUpload(path, folder, fileName, serverName, reply);
            return result == Result::Ok ? ReadUpload(reply, keyOut, keyOutLen) : result;
        });
    });
}

int CFileStorage::FileDownloadWithRetry(const wchar_t* pathFormat, const wchar_t* key, const wchar_t* folder,
                                        const wchar_t* localName) const
{
    return NoThrow(L"CFileStorage::FileDownloadWithRetry()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::FileDownload(lpszKey=" << key << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        const ObjectPath path = FormatObjectPath(pathFormat, key);
        return exchange.RunWithRelogin(L"session expired when do file download, try relogin to server",
                                       [&] { return exchange.Helper().FileDownload(path.c_str(), folder, localName); });
    });
}

int CFileStorage::PictureUpload(const wchar_t* folder, const wchar_t* fileName) const
{
    std::array<wchar_t, kKeySize> key = {};
    const int result = FileUploadWithRetry(L"ops/upload_rest.php", folder, fileName, fileName, key.data(), kKeySize);
    return CheckPictureName(result, key.data(), fileName);
}

int CFileStorage::PictureDownload(const wchar_t* folder, const wchar_t* fileName) const
{
    return FileDownloadWithRetry(L"ops/down.php?k=%s", fileName, folder, fileName);
}

int CFileStorage::UserPhotoUpload(const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName) const
{
    std::array<wchar_t, kKeySize> key = {};
    return FileUploadWithRetry(L"ops/upload_rest.php", folder, fileName, serverName, key.data(), kKeySize);
}

int CFileStorage::UserPhotoDownload(const wchar_t* folder, const wchar_t* key, const wchar_t* localName) const
{
    return FileDownloadWithRetry(L"ops/down.php?k=%s", key, folder, localName);
}

int CFileStorage::EmoticonUpload(const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName) const
{
    std::array<wchar_t, kKeySize> key = {};
    return FileUploadWithRetry(L"ods/upload_rest.php", folder, fileName, serverName, key.data(), kKeySize);
}

int CFileStorage::EmoticonDownload(const wchar_t* uid, const wchar_t* folder, const wchar_t* key,
                                   const wchar_t* localName) const
{
    ObjectPath format;
    format << L"ods/down.php?uid=" << uid << L"&k=%s";
    return FileDownloadWithRetry(format.c_str(), key, folder, localName);
}

int CFileStorage::EmoticonRemove(const wchar_t* key) const
{
    return NoThrow(L"CFileStorage::EmoticonRemove()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::EmoticonRemove()");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        const ObjectPath path = FormatObjectPath(L"ods/remove_rest.php?k=%s", key);
        std::string reply;
        const int result = exchange.Helper().RequestGet(path.c_str(), reply);
        return result == Result::Ok ? ReadResult(reply) : result;
    });
}

int CFileStorage::EmoticonGetList(EmoticonInfo* /*list*/, const unsigned int& /*capacity*/,
                                  unsigned int& /*count*/) const
{
    return NoThrow(L"CFileStorage::EmoticonGetList()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::EmoticonGetList()");
        const Exchange exchange{*this};
        if (const int result = exchange.Prepare(); result != Result::Ok)
        {
            return result;
        }
        CSFSJsonHelper helper;
        int code = kNoCode;
        std::vector<EmoticonInfo> emoticons;
        const char* errorinfo = nullptr;
        const auto getList = [&] {
            std::string reply;
            if (const int result = exchange.Helper().RequestGet(L"ods/files_rest.php", reply); result != Result::Ok)
            {
                return result;
            }
            const char* failure = nullptr;
            code = kNoCode;
            emoticons.clear();
            return helper.ParseEmoticonList(reply, code, emoticons, errorinfo, failure);
        };

        // The upload's wording is what the log has always said here.
        if (const int result = exchange.RunWithCodeRelogin(
                L"session expired when do file upload, try relogin to server", code, getList);
            result != Result::Ok)
        {
            return result;
        }
        if (code != kCodeOk)
        {
            return RefusedBy(code, errorinfo);
        }
        LOG_TRACE(L"EmoticonGetList success, vecEmoticonList.size()=" << emoticons.size());
        return Result::Ok;
    });
}

int CFileStorage::FileGetChecksum(const wchar_t* folder, const wchar_t* fileName, unsigned long& size, wchar_t* md5,
                                  wchar_t* sha1) const
{
    return NoThrow(L"CFileStorage::FileGetChecksum()", [&]() -> int {
        LOG_TRACE(L"CFileStorage::FileGetChecksum(lpszFolder=" << folder << L",lpszFileName=" << fileName << L")");
        char md5Text[kMd5TextSize] = {};
        char sha1Text[kSha1TextSize] = {};
        auto fileSize = static_cast<std::uint32_t>(size);
        FileMd5AndSha1(fileName, md5Text, folder, sha1Text, fileSize);
        size = fileSize;
        CopyToWide(md5Text, md5, kMd5TextSize, Platform::CodePage::Ansi);
        CopyToWide(sha1Text, sha1, kSha1TextSize, Platform::CodePage::Ansi);
        return Result::Ok;
    });
}

} // namespace quorvex
