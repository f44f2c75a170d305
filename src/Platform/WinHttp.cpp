#include "WinHttp.h"

#include "LastError.h"

#include <windows.h>
#include <winhttp.h>

#include <limits>
#include <utility>

namespace quorvex::Platform
{

namespace
{

struct HeaderQuery
{
    DWORD info;
    const wchar_t* name;
};

HeaderQuery QueryOf(Header header)
{
    switch (header)
    {
    case Header::StatusCode:
        return {WINHTTP_QUERY_STATUS_CODE, WINHTTP_HEADER_NAME_BY_INDEX};
    case Header::ContentLength:
        return {WINHTTP_QUERY_CONTENT_LENGTH, WINHTTP_HEADER_NAME_BY_INDEX};
    case Header::ContentEncoding:
        return {WINHTTP_QUERY_CONTENT_ENCODING, WINHTTP_HEADER_NAME_BY_INDEX};
    case Header::TransferEncoding:
        return {WINHTTP_QUERY_TRANSFER_ENCODING, WINHTTP_HEADER_NAME_BY_INDEX};
    case Header::ContentRange:
        return {WINHTTP_QUERY_CONTENT_RANGE, WINHTTP_HEADER_NAME_BY_INDEX};
    case Header::ContentDisposition:
        break;
    }
    // Asked for by name: some systems refuse this header's own query number.
    return {WINHTTP_QUERY_CUSTOM, L"Content-Disposition"};
}

} // namespace

InternetHandle::~InternetHandle()
{
    Close();
}

bool InternetHandle::Close()
{
    void* const handle = std::exchange(m_handle, nullptr);
    return handle == nullptr || ::WinHttpCloseHandle(handle) != FALSE;
}

bool InternetHandle::Reset(void* handle)
{
    Close();
    m_handle = handle;
    return handle != nullptr;
}

bool Session::Open(const wchar_t* userAgent)
{
    return Reset(
        ::WinHttpOpen(userAgent, WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
}

bool CrackUrl(const wchar_t* url, CrackedUrl& cracked)
{
    wchar_t path[CrackedUrl::kPathRoom];
    wchar_t extraInfo[CrackedUrl::kExtraInfoRoom];

    URL_COMPONENTS parts = {};
    parts.dwStructSize = sizeof parts;
    parts.lpszHostName = cracked.host;
    parts.dwHostNameLength = CrackedUrl::kHostRoom;
    parts.lpszUrlPath = path;
    parts.dwUrlPathLength = CrackedUrl::kPathRoom;
    parts.lpszExtraInfo = extraInfo;
    parts.dwExtraInfoLength = CrackedUrl::kExtraInfoRoom;
    if (::WinHttpCrackUrl(url, 0, ICU_DECODE, &parts) == FALSE)
    {
        return false;
    }
    cracked.port = parts.nPort;
    cracked.isHttps = parts.nScheme == INTERNET_SCHEME_HTTPS;
    return true;
}

bool Connection::Open(const Session& session, const wchar_t* host, std::uint16_t port)
{
    return Reset(::WinHttpConnect(session.m_handle, host, port, 0));
}

bool Request::Open(const Connection& connection, const wchar_t* verb, const wchar_t* object,
                   const wchar_t* const* acceptTypes)
{
    // The system only reads the list, whatever its parameter's type says.
    return Reset(::WinHttpOpenRequest(connection.m_handle, verb, object, L"HTTP/1.1", WINHTTP_NO_REFERER,
                                      const_cast<const wchar_t**>(acceptTypes), 0));
}

bool Request::AddHeader(std::wstring_view header)
{
    return ::WinHttpAddRequestHeaders(m_handle, header.data(), static_cast<DWORD>(header.size()),
                                      WINHTTP_ADDREQ_FLAG_ADD) != FALSE;
}

bool Request::Send()
{
    return ::WinHttpSendRequest(m_handle, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0, 0) != FALSE;
}

bool Request::Send(std::string_view body)
{
    const auto length = static_cast<DWORD>(body.size());
    return ::WinHttpSendRequest(m_handle, WINHTTP_NO_ADDITIONAL_HEADERS, 0, const_cast<char*>(body.data()), length,
                                length, 0) != FALSE;
}

bool Request::SendHead(std::uint64_t totalLength)
{
    if (totalLength > std::numeric_limits<DWORD>::max())
    {
        ::SetLastError(kFileTooLarge);
        return false;
    }
    return ::WinHttpSendRequest(m_handle, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0,
                                static_cast<DWORD>(totalLength), 0) != FALSE;
}

bool Request::Write(const void* data, std::uint32_t size)
{
    DWORD written = 0;
    return ::WinHttpWriteData(m_handle, data, size, &written) != FALSE;
}

bool Request::Receive()
{
    return ::WinHttpReceiveResponse(m_handle, nullptr) != FALSE;
}

bool Request::QueryNumber(Header header, std::uint32_t& value) const
{
    const HeaderQuery query = QueryOf(header);
    DWORD number = 0;
    DWORD size = sizeof number;
    if (::WinHttpQueryHeaders(m_handle, query.info | WINHTTP_QUERY_FLAG_NUMBER, query.name, &number, &size,
                              WINHTTP_NO_HEADER_INDEX) == FALSE)
    {
        return false;
    }
    value = number;
    return true;
}

bool Request::QueryText(Header header, std::span<wchar_t> room) const
{
    const HeaderQuery query = QueryOf(header);
    auto size = static_cast<DWORD>(room.size_bytes());
    return ::WinHttpQueryHeaders(m_handle, query.info, query.name, room.data(), &size, WINHTTP_NO_HEADER_INDEX) !=
           FALSE;
}

bool Request::Read(void* buffer, std::uint32_t room, std::uint32_t& read)
{
    DWORD count = 0;
    const bool done = ::WinHttpReadData(m_handle, buffer, room, &count) != FALSE;
    read = count;
    return done;
}

} // namespace quorvex::Platform
