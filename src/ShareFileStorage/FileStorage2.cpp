#include <quorvex/FileStorage2.h>

#include "../HeaderValues.h"
#include "../JsonHelper.h"
#include "../LocalFile.h"
#include "../Multipart.h"
#include "../NoThrow.h"
#include "../ObjectPath.h"
#include "../Platform/LastError.h"
#include "../ResponseBody.h"
#include "../ResponseFile.h"
#include "DepotForm.h"
#include "SFSJsonHelper.h"
#include "SFSReplies.h"
#include "SyncExchange.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorvex
{

using Platform::CodePage;
using Platform::File;

namespace
{

constexpr wchar_t kFormHeader[] = L"Content-Type: application/x-www-form-urlencoded\r\n";

std::wstring Url(const wchar_t* server, const wchar_t* path)
{
    return std::wstring(server != nullptr ? server : L"") + L"/" + (path != nullptr ? path : L"");
}

/// Reads a whole file behind what the body has already.
/// @param roomBehind bytes that will follow the file
/// @return 0 or -120
int AppendFile(const UploadPath& path, std::string& body, std::size_t roomBehind)
{
    File file;
    std::uint64_t size = 0;
    if (!OpenUploadFile(file, path, File::Share::ReadAndWrite))
    {
        return Result::LocalFileFailed;
    }
    if (!file.Size(size))
    {
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    const std::size_t start = body.size();
    if (size > body.max_size() - start - roomBehind)
    {
        Platform::SetLastError(Platform::kFileTooLarge);
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    body.reserve(start + static_cast<std::size_t>(size) + roomBehind);
    body.resize(start + static_cast<std::size_t>(size));
    for (std::size_t filled = start; filled < body.size();)
    {
        static constexpr std::size_t kLargestRead = 0x10000000;
        const auto room = static_cast<std::uint32_t>(std::min(body.size() - filled, kLargestRead));
        std::uint32_t read = 0;
        if (!file.Read(body.data() + filled, room, read))
        {
            LOG_LAST_ERROR();
            return Result::LocalFileFailed;
        }
        if (read == 0)
        {
            Platform::SetLastError(Platform::kEndOfFile);
            LOG_LAST_ERROR();
            return Result::LocalFileFailed;
        }
        filled += read;
    }
    return Result::Ok;
}

/// Writes a whole download. A path that was cut would lead to another file than the one that was asked for.
/// @return 0, -107 or -120
int WriteDownload(const wchar_t* folder, const wchar_t* localName, std::string_view content)
{
    WideText<324> path;
    path << folder << L"\\" << localName;
    if (path.IsCut())
    {
        Platform::SetLastError(Platform::kInvalidName);
    }
    File file;
    if (path.IsCut() || !file.OpenToWrite(path.c_str(), File::Existing::Emptied))
    {
        LOG_FAILED_CALL(L"FileDownload error," << L"open file " << path.c_str() << L"failed:" << Platform::LastError());
        return Result::LocalFileFailed;
    }
    while (!content.empty())
    {
        static constexpr std::size_t kLargestWrite = 0x10000000;
        const auto size = static_cast<std::uint32_t>(std::min(content.size(), kLargestWrite));
        std::uint32_t written = 0;
        if (const int result = WritePiece(file, content.data(), size, size, written); result != Result::Ok)
        {
            return result;
        }
        content.remove_prefix(size);
    }
    CloseLocalFile(file);
    return Result::Ok;
}

} // namespace

/// How the operations reach the server.
struct CFileStorage2::Exchange
{
    const CFileStorage2& storage;

    int Reply(const SyncRequest& request, SyncAnswer& answer) const
    {
        return SendSyncForReply(storage.m_pDispatcher.get(), storage.m_hSession, request, answer);
    }

    int Get(const wchar_t* path, SyncAnswer& answer) const
    {
        const std::wstring url = Url(storage.m_pszServer.get(), path);
        return Reply({.method = L"GET", .url = url.c_str()}, answer);
    }

    int Post(const wchar_t* path, const wchar_t* headers, std::string_view body, SyncAnswer& answer) const
    {
        const std::wstring url = Url(storage.m_pszServer.get(), path);
        return Reply({.method = L"POST", .url = url.c_str(), .headers = headers, .body = body}, answer);
    }

    /// Reads the plain reply to a request.
    /// @param result what sending it ended with
    static int Read(int result, const SyncAnswer& answer)
    {
        return result == Result::Ok ? ReadResult(answer.body) : result;
    }
};

CFileStorage2::CFileStorage2(const wchar_t* server, const wchar_t* session, int resolveTimeout, int connectTimeout,
                             int sendTimeout, int receiveTimeout)
    : m_bNeedLogin(true), m_hSession(nullptr)
{
    NoThrow(L"CFileStorage2::CFileStorage2()", [&]() -> int {
        m_pszSession = CopyText(session);
        m_hSession = CreateSession();
        m_pszServer = CopyText(server);
        m_pDispatcher = std::make_unique<RequestDispatcher>(
            SyncTimeouts{resolveTimeout, connectTimeout, sendTimeout, receiveTimeout});
        return Result::Ok;
    });
}

CFileStorage2::~CFileStorage2()
{
    exit();
}

void CFileStorage2::exit()
{
    CloseSession(m_hSession);
}

int CFileStorage2::UserLogin(const wchar_t* session)
{
    return NoThrow(L"CFileStorage2::UserLogin()", [&]() -> int {
        if (session == nullptr)
        {
            return UserLoginWithSession(nullptr);
        }
        // It may be the stored text itself.
        m_pszSession = CopyText(session);
        return UserLoginWithSession(m_pszSession.get());
    });
}

int CFileStorage2::UserLoginWithSession(const wchar_t* session)
{
    return NoThrow(L"CFileStorage2::UserLoginWithSession()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::UserLoginWithSession(lpszUapSession=" << session << L")");
        if (session == nullptr)
        {
            LOG_ERROR(L"CFileStorage2::UserLoginWithSession() session is not correct");
            return Result::SessionMissing;
        }
        SyncAnswer answer;
        const int result = Exchange{*this}.Get(FormatObjectPath(L"check.php?s=%s", session).c_str(), answer);
        return result == Result::Ok ? ReadLogin(answer.body, {m_pszUid, m_pszSid, m_bNeedLogin}) : result;
    });
}

int CFileStorage2::UserLogout()
{
    return NoThrow(L"CFileStorage2::UserLogout()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::UserLogout()");
        SyncAnswer answer;
        const int result = Exchange{*this}.Get(L"logout_rest.php", answer);
        return result == Result::Ok ? ReadLogout(answer.body, {m_pszUid, m_pszSid, m_bNeedLogin}) : result;
    });
}

int CFileStorage2::FileUploadInternal(__frl_stru_handle__* handle, const wchar_t* server, const wchar_t* path,
                                      const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName,
                                      wchar_t* keyOut, unsigned long keyOutLen) const
{
    return NoThrow(L"CFileStorage2::FileUploadInternal()", [&]() -> int {
        UploadPath localPath;
        localPath << folder << L"\\" << fileName;
        NarrowText<256, CodePage::Oem> name;
        name << serverName;

        const std::string boundary = BoundaryToken();
        std::string body = Multipart::UploadHead(boundary, name.view());
        const std::string tail = Multipart::Tail(boundary);
        if (const int result = AppendFile(localPath, body, tail.size()); result != Result::Ok)
        {
            return result;
        }
        body += tail;

        const std::wstring url = Url(server, path);
        const std::wstring header = Multipart::FormContentType(boundary);
        SyncAnswer answer;
        const int result =
            SendSyncForReply(m_pDispatcher.get(), handle,
                             {.method = L"POST", .url = url.c_str(), .headers = header.c_str(), .body = body}, answer);
        return result == Result::Ok ? ReadUpload(answer.body, keyOut, keyOutLen) : result;
    });
}

int CFileStorage2::FileUploadWithRetry(const wchar_t* path, const wchar_t* folder, const wchar_t* fileName,
                                       const wchar_t* serverName, wchar_t* keyOut, unsigned long keyOutLen)
{
    return NoThrow(L"CFileStorage2::FileUploadWithRetry()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::FileUpload(lpszLocalFileName=" << fileName << L")");
        const auto upload = [&] {
            return FileUploadInternal(m_hSession, m_pszServer.get(), path, folder, fileName, serverName, keyOut,
                                      keyOutLen);
        };
        const int result = upload();
        if (result != kForbidden)
        {
            return result;
        }
        const int login = UserLogin(m_pszSession.get());
        if (login == Result::Ok)
        {
            // Callers have always been told how the login went, whatever became of the file.
            upload();
        }
        return login;
    });
}

int CFileStorage2::FileDownloadWithRetry(const wchar_t* pathFormat, const wchar_t* key, const wchar_t* folder,
                                         const wchar_t* localName)
{
    return NoThrow(L"CFileStorage2::FileDownloadWithRetry()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::FileDownload(lpszKey=" << key << L")");
        const ObjectPath path = FormatObjectPath(pathFormat, key);
        const auto download = [&] {
            SyncAnswer answer;
            const int result = Exchange{*this}.Get(path.c_str(), answer);
            return result == Result::Ok ? WriteDownload(folder, localName, answer.body) : result;
        };
        const int result = download();
        if (result != kForbidden)
        {
            return result;
        }
        const int login = UserLogin(m_pszSession.get());
        return login == Result::Ok ? download() : login;
    });
}

int CFileStorage2::PictureUpload(const wchar_t* folder, const wchar_t* fileName)
{
    return NoThrow(L"CFileStorage2::PictureUpload()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::PictureUpload(lpszFileName=" << fileName << L")");
        std::array<wchar_t, kKeySize> key = {};
        const int result =
            FileUploadWithRetry(L"ops/upload_rest.php", folder, fileName, fileName, key.data(), kKeySize);
        return CheckPictureName(result, key.data(), fileName);
    });
}

int CFileStorage2::PictureDownload(const wchar_t* folder, const wchar_t* fileName)
{
    return NoThrow(L"CFileStorage2::PictureDownload()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::PictureDownload(lpszFileName=" << fileName << L")");
        return FileDownloadWithRetry(L"ops/down.php?k=%s", fileName, folder, fileName);
    });
}

int CFileStorage2::LargeFileCreate(const wchar_t* folder, const wchar_t* fileName, wchar_t* keyOut,
                                   unsigned long keyOutLen)
{
    return NoThrow(L"CFileStorage2::LargeFileCreate()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::LargeFileCreate()");
        const DepotForm form = CreateForm(folder, fileName);
        const std::wstring url = Url(m_pszServer.get(), L"ofs/upload_c_rest.php");
        const SyncRequest request = {
            .method = L"POST", .url = url.c_str(), .headers = kFormHeader, .body = form.view()};
        SyncAnswer answer;
        const auto post = [&] {
            const int result = SendSync(m_pDispatcher.get(), m_hSession, request, answer);
            if (result != Result::Ok)
            {
                LOG_ERROR(L"LargeFileCreate http_request error, result " << result);
            }
            return result;
        };

        int result = post();
        if (result == Result::Ok && answer.code == kForbidden)
        {
            LOG_INFO(L"LargeFileCreate session expired when do file upload, try relogin to server");
            result = UserLogin(m_pszSession.get());
            if (result != Result::Ok)
            {
                LOG_ERROR(L"LargeFileCreate relogin error, return " << result);
                return result;
            }
            result = post();
        }
        if (result != Result::Ok)
        {
            return result;
        }
        if (answer.code != kCodeOk)
        {
            LOG_ERROR(L"LargeFileCreate nRespCode error, return " << answer.code);
            return RefusedStatus(static_cast<std::uint32_t>(answer.code));
        }

        CSFSJsonHelper helper;
        int code = kNoCode;
        const char* fkey = nullptr;
        unsigned int fsize = 0;
        const char* errorinfo = nullptr;
        const char* failure = nullptr;
        result = helper.ParseUploadResponse(answer.body, code, fkey, fsize, errorinfo, failure);
        if (result != Result::Ok)
        {
            LOG_ERROR(L"LargeFileCreate json parse error=\"" << failure << L"\"");
            return result;
        }
        if (code != kCodeOk)
        {
            LOG_ERROR(L"LargeFileCreate nRespCode error=\"" << errorinfo << L"\"");
            return code;
        }
        CopyToWide(fkey, keyOut, keyOutLen, CodePage::Ansi);
        return Result::Ok;
    });
}

int CFileStorage2::LargeFileUpload(const wchar_t* key, void* data, unsigned long size, unsigned long position) const
{
    return NoThrow(L"CFileStorage2::LargeFileUpload()", [&]() -> int {
        if (data == nullptr && size != 0)
        {
            LOG_ERROR(L"CFileStorage2::LargeFileUpload() data is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage2::LargeFileUpload()");
        NarrowText<65, CodePage::Oem> narrowKey;
        narrowKey << key;
        const auto first = static_cast<std::uint32_t>(position);

        const std::string boundary = BoundaryToken();
        std::string body =
            Multipart::ChunkHead(boundary, narrowKey.view(), first, first + static_cast<std::uint32_t>(size) - 1);
        const std::string tail = Multipart::Tail(boundary);
        body.reserve(body.size() + size + tail.size());
        body.append(static_cast<const char*>(data), size).append(tail);

        const std::wstring header = Multipart::FormContentType(boundary);
        SyncAnswer answer;
        return Exchange::Read(Exchange{*this}.Post(L"ofs/upload_u_rest.php", header.c_str(), body, answer), answer);
    });
}

int CFileStorage2::LargeFileUploadFinish(const wchar_t* key) const
{
    return NoThrow(L"CFileStorage2::LargeFileUploadFinish()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::LargeFileUploadFinish()");
        const DepotForm form = FinishForm(key);
        SyncAnswer answer;
        return Exchange::Read(Exchange{*this}.Post(L"ofs/upload_e_rest.php", kFormHeader, form.view(), answer), answer);
    });
}

int CFileStorage2::LargeFileDownload(const wchar_t* uid, const wchar_t* key, unsigned long position, void* buffer,
                                     unsigned long& length) const
{
    return NoThrow(L"CFileStorage2::LargeFileDownload()", [&]() -> int {
        if (buffer == nullptr && length != 0)
        {
            LOG_ERROR(L"CFileStorage2::LargeFileDownload() buffer is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage2::LargeFileDownload(uid=" << uid << L",key=" << key << L",position=" << position
                                                           << L",length=" << length << L")");
        const std::wstring url = Url(m_pszServer.get(), DepotPath(uid, key).c_str());
        const std::wstring header =
            RangeHeader(static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(length));
        SyncAnswer answer;
        if (const int result = SendSyncForRange(m_pDispatcher.get(), m_hSession,
                                                {.method = L"GET",
                                                 .url = url.c_str(),
                                                 .headers = header.c_str(),
                                                 .longest = LongestRange(static_cast<std::uint32_t>(length))},
                                                answer);
            result != Result::Ok)
        {
            return result;
        }
        if (!TakeRange(answer.body, buffer, length))
        {
            LOG_ERROR(L"BufferDownload server error return data size =" << answer.body.size() << L", bufsize="
                                                                        << length);
            return Result::RangeTooLong;
        }
        return Result::Ok;
    });
}

int CFileStorage2::LargeFileRemove(const wchar_t* key) const
{
    return NoThrow(L"CFileStorage2::LargeFileRemove()", [&]() -> int {
        LOG_TRACE(L"CFileStorage2::LargeFileRemove()");
        const ObjectPath path = FormatObjectPath(L"ofs/remove_rest.php?k=%s", key);
        SyncAnswer answer;
        return Exchange::Read(Exchange{*this}.Get(path.c_str(), answer), answer);
    });
}

} // namespace quorvex
