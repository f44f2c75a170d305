#include <quorvex/FileStorage3.h>

#include "../BoundedText.h"
#include "../ChecksumHelper.h"
#include "../HeaderValues.h"
#include "../Multipart.h"
#include "../NoThrow.h"
#include "SFSJsonHelper.h"
#include "SFSReplies.h"
#include "SyncExchange.h"

#include <algorithm>
#include <limits>
#include <new>

namespace quorvex
{

using Platform::CodePage;

namespace
{

using FormText = NarrowText<256, CodePage::Oem>;

const wchar_t* OrEmpty(const wchar_t* text)
{
    return text != nullptr ? text : L"";
}

FormText ToFormText(const wchar_t* text)
{
    FormText narrow;
    narrow << text;
    return narrow;
}

/// A form around a block of bytes.
std::string Body(const std::string& head, const void* data, unsigned long size, const std::string& boundary)
{
    const std::string tail = Multipart::Tail(boundary);
    std::string body;
    body.reserve(head.size() + size + tail.size());
    return body.append(head).append(static_cast<const char*>(data), size).append(tail);
}

} // namespace

/// How the operations reach the server.
struct CFileStorage3::Exchange
{
    const CFileStorage3& storage;

    std::wstring Url(std::initializer_list<const wchar_t*> parts) const
    {
        std::wstring url = OrEmpty(storage.m_pszServer.get());
        for (const wchar_t* const part : parts)
        {
            url += OrEmpty(part);
        }
        return url;
    }

    SyncRequest Get(const wchar_t* url, const wchar_t* headers = L"", std::size_t longest = kLongestResponse) const
    {
        return {.method = L"GET",
                .url = url,
                .headers = headers,
                .cookie = OrEmpty(storage.m_pszCookie.get()),
                .longest = longest};
    }

    /// Posts a form and reads its reply.
    /// @param key    receives the file's key; null is allowed
    /// @param ticket receives the next ticket; null is allowed
    int Post(const wchar_t* url, const std::string& boundary, std::string_view body, wchar_t* key,
             wchar_t* ticket) const
    {
        const std::wstring header = Multipart::FormContentType(boundary);
        SyncAnswer answer;
        if (const int result = SendSyncForReply(storage.m_pDispatcher.get(), storage.m_hSession,
                                                {.method = L"POST",
                                                 .url = url,
                                                 .headers = header.c_str(),
                                                 .body = body,
                                                 .cookie = OrEmpty(storage.m_pszCookie.get())},
                                                answer);
            result != Result::Ok)
        {
            return result;
        }
        int code = kNoCode;
        const char* failure = nullptr;
        const char* message = nullptr;
        if (const int result = storage.ParseResponse_(answer.body, code, failure, message, key, ticket);
            result != Result::Ok)
        {
            return result;
        }
        return code == kCodeOk ? Result::Ok : RefusedBy(code, message);
    }
};

CFileStorage3::CFileStorage3(const wchar_t* server, const wchar_t* cookie, int resolveTimeout, int connectTimeout,
                             int sendTimeout, int receiveTimeout)
    : m_hSession(nullptr)
{
    NoThrow(L"CFileStorage3::CFileStorage3()", [&]() -> int {
        m_hSession = CreateSession();
        m_pszServer = CopyText(server);
        m_pDispatcher = std::make_unique<RequestDispatcher>(
            SyncTimeouts{resolveTimeout, connectTimeout, sendTimeout, receiveTimeout});
        m_pszCookie = CopyText(cookie);
        return Result::Ok;
    });
}

CFileStorage3::~CFileStorage3()
{
    exit();
}

void CFileStorage3::exit()
{
    CloseSession(m_hSession);
}

int CFileStorage3::UserLogin(const wchar_t* cookie)
{
    return NoThrow(L"CFileStorage3::UserLogin()", [&]() -> int {
        // The second generation's name is what the log has always said here.
        LOG_TRACE(L"CFileStorage2::UserLogin(wsCookie=" << cookie << L")");
        if (cookie == nullptr)
        {
            return Result::BadAnswer;
        }
        m_pszCookie = CopyText(cookie);
        return Result::Ok;
    });
}

int CFileStorage3::UserLogout()
{
    return Result::Ok;
}

int CFileStorage3::PictureUpload(const wchar_t* name, void* data, unsigned long size) const
{
    return NoThrow(L"CFileStorage3::PictureUpload()", [&]() -> int {
        if (data == nullptr && size != 0)
        {
            LOG_ERROR(L"CFileStorage3::PictureUpload() data is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage3::PictureUpload(name=" << name << L",size=" << size << L")");
        return FileUpload_(Exchange{*this}.Url({L"api/ops/upload"}).c_str(), name, data, size);
    });
}

int CFileStorage3::PictureDownload(const wchar_t* folder, const wchar_t* name, void** buffer, unsigned long* size) const
{
    return NoThrow(L"CFileStorage3::PictureDownload()", [&]() -> int {
        if (buffer == nullptr || size == nullptr)
        {
            LOG_ERROR(L"CFileStorage3::PictureDownload() buffer is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage3::PictureDownload(folder=" << folder << L",name=" << name << L")");
        const std::wstring url = Exchange{*this}.Url({L"api/ops/images", L"/", folder, L"/", name});
        return FileDownload_(url.c_str(), buffer, size);
    });
}

int CFileStorage3::BufferUpload(wchar_t* key, void* data, unsigned long size, unsigned long position,
                                const wchar_t* name, wchar_t* ticket, int flag) const
{
    return NoThrow(L"CFileStorage3::BufferUpload()", [&]() -> int {
        if (data == nullptr && size != 0)
        {
            LOG_ERROR(L"CFileStorage3::BufferUpload() data is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage3::BufferUpload(name=" << name << L",position=" << position << L",size=" << size
                                                       << L",flag=" << flag << L")");
        const Exchange exchange{*this};
        const std::string boundary = BoundaryToken();
        const std::string head =
            Multipart::PhotoBlockHead(boundary, static_cast<std::uint32_t>(position), ToFormText(ticket).view(), flag,
                                      std::uint64_t{position} + size, StringMd5(data, size), ToFormText(name).view());
        return exchange.Post(exchange.Url({L"api/ofs/upload"}).c_str(), boundary, Body(head, data, size, boundary), key,
                             ticket);
    });
}

int CFileStorage3::Bufferdownload(const wchar_t* first, const wchar_t* second, unsigned long position, void* buffer,
                                  unsigned long& length) const
{
    return NoThrow(L"CFileStorage3::Bufferdownload()", [&]() -> int {
        if (buffer == nullptr && length != 0)
        {
            LOG_ERROR(L"CFileStorage3::Bufferdownload() buffer is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CFileStorage3::Bufferdownload(" << first << L"," << second << L",position=" << position
                                                    << L",length=" << length << L")");
        const Exchange exchange{*this};
        const std::wstring url = exchange.Url({L"api/ofs/down", L"/", first, L"/", second});
        const std::wstring header =
            RangeHeader(static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(length));
        SyncAnswer answer;
        if (const int result = SendSyncForRange(
                m_pDispatcher.get(), m_hSession,
                exchange.Get(url.c_str(), header.c_str(), LongestRange(static_cast<std::uint32_t>(length))), answer);
            result != Result::Ok)
        {
            return result;
        }
        if (!TakeRange(answer.body, buffer, length))
        {
            LOG_ERROR(L"BufferDownload() rdata.body.size()=" << answer.body.size() << L", bufsize=" << length);
            return Result::RangeTooLong;
        }
        return answer.code;
    });
}

int CFileStorage3::getBuffer(void** buffer, unsigned long size) const
{
    if (size < std::numeric_limits<std::ptrdiff_t>::max())
    {
        const std::size_t roomSize = std::size_t{size} + 1;
        if (auto* const room = new (std::nothrow) char[roomSize]; room != nullptr)
        {
            room[size] = '\0';
            *buffer = room;
            return Result::Ok;
        }
    }
    LOG_ERROR(L"Get Buffer memory error, bufsize=" << size);
    return Result::BadAnswer;
}

void CFileStorage3::releaseBuffer(void** buffer) const
{
    if (buffer != nullptr)
    {
        delete[] static_cast<char*>(*buffer);
    }
}

int CFileStorage3::FileUpload_(const wchar_t* url, const wchar_t* name, void* data, unsigned long size) const
{
    const std::string boundary = BoundaryToken();
    const std::string head = Multipart::PictureHead(boundary, StringMd5(data, size), ToFormText(name).view());
    return Exchange{*this}.Post(url, boundary, Body(head, data, size, boundary), nullptr, nullptr);
}

int CFileStorage3::FileDownload_(const wchar_t* url, void** buffer, unsigned long* size) const
{
    SyncAnswer answer;
    const int result = SendSync(m_pDispatcher.get(), m_hSession, Exchange{*this}.Get(url), answer);
    const std::string& body = answer.body;
    if (result != Result::Ok || answer.code != kCodeOk || body.empty())
    {
        return result;
    }
    if (body.size() > std::numeric_limits<unsigned long>::max())
    {
        LOG_ERROR(L"Get Buffer memory error, bufsize=" << body.size());
        return Result::BadAnswer;
    }
    const auto bodySize = static_cast<unsigned long>(body.size());
    if (const int memory = getBuffer(buffer, bodySize); memory != Result::Ok)
    {
        return memory;
    }
    *size = bodySize;
    std::ranges::copy(body, static_cast<char*>(*buffer));
    return Result::Ok;
}

int CFileStorage3::ParseResponse_(const std::string& body, int& code, const char*& failure, const char*& message,
                                  wchar_t* key, wchar_t* ticket) const
{
    m_pReply = std::make_unique<CSFSJsonHelper>();
    const char* fkey = nullptr;
    const char* nextTicket = nullptr;
    const int result = m_pReply->ParseApiResponse(body, code, fkey, nextTicket, message, failure);
    if (result == Result::Ok && code == kCodeOk)
    {
        CopyToWide(fkey, key, kKeySize, CodePage::Ansi);
        CopyToWide(nextTicket, ticket, kKeySize, CodePage::Ansi);
    }
    return result;
}

} // namespace quorvex
