#include "HttpHelper.h"

#include "BaseUrl.h"
#include "BoundedText.h"
#include "CommonUtil.h"

#include <quorvex/Results.h>

#include <array>
#include <string_view>

namespace quorvex
{

namespace
{

constexpr std::size_t SERVER_URL_MAX_SIZE = 1024;

constexpr wchar_t kUserAgent[] = L"Mozilla/4.0 (compatible; MSIE 7.0; Windows NT 5.1; Trident/4.0)";

// Servers have seen exactly this list for years, with its doubled and its misspelt entry.
constexpr std::array kAcceptTypes = {
    L"image/bmp",
    L"image/gif",
    L"image/jpeg",
    L"image/pjpeg",
    L"image/pjpeg",
    L"application/x-shockwave-flash",
    L"application/vnd.ms-powerpoint",
    L"Lapplication/vnd.ms-excel",
    L"application/msword",
    L"application/x-ms-application",
    L"application/x-ms-xbap",
    L"application/vnd.ms-xpsdocument",
    L"application/xaml+xml",
    L"*/*",
    static_cast<const wchar_t*>(nullptr),
};

constexpr std::array<std::wstring_view, 5> kStandardHeaders = {
    L"Accept-Language: zh-cn", //
    L"Accept-Encoding: gzip, deflate", L"Pragma: no-cache", L"Cache-Control: no-cache", L"Connection: close",
};

constexpr std::wstring_view kFormContentType = L"Content-Type: application/x-www-form-urlencoded";

constexpr std::uint32_t kSecure = 0x00800000;

} // namespace

CHttpHelper::CHttpHelper(const wchar_t* serverUrl)
{
    const BaseUrl url = SplitBaseUrl(serverUrl);
    if (url.serverEnd >= SERVER_URL_MAX_SIZE)
    {
        LOG_ERROR(L"CHttpHelper::CHttpHelper() index-lpszServerPrefix >= SERVER_URL_MAX_SIZE");
        return;
    }
    m_serverPrefix = url.prefix;
    InitialConnection(std::wstring(url.server).c_str());
}

CHttpHelper::~CHttpHelper()
{
    CloseConnection();
}

int CHttpHelper::InitialConnection(const wchar_t* url)
{
    LOG_TRACE(L"CHttpHelper::InitialConnection()");
    CloseConnection();

    if (!m_session.Open(kUserAgent))
    {
        LOG_FAILED_CALL(L"InternetOpen error");
        return Result::SessionOpenFailed;
    }
    Platform::CrackedUrl cracked;
    if (!Platform::CrackUrl(url, cracked))
    {
        LOG_FAILED_CALL(L"InternetCrackUrl error");
        return Result::UrlInvalid;
    }
    if (!m_connection.Open(m_session, cracked.host, cracked.port))
    {
        LOG_FAILED_CALL(L"InternetConnect error");
        return Result::ConnectFailed;
    }
    m_requestFlags = cracked.isHttps ? kSecure : 0;
    return Result::Ok;
}

int CHttpHelper::CloseConnection()
{
    if (!m_session)
    {
        return Result::Ok;
    }
    LOG_TRACE(L"CHttpHelper::CloseConnection()");
    if (!m_connection.Close())
    {
        LOG_FAILED_CALL(L"InternetCloseHandle error");
    }
    if (!m_session.Close())
    {
        LOG_FAILED_CALL(L"InternetCloseHandle error");
    }
    return Result::Ok;
}

int CHttpHelper::CheckConnection(const CHttpHelper* helper)
{
    if (helper != nullptr && helper->IsConnected())
    {
        return Result::Ok;
    }
    LOG_ERROR(L"Not connect to server.");
    return Result::NotConnected;
}

int CHttpHelper::RequestGet(const wchar_t* objectPath, std::string& response)
{
    response.clear();
    if (const int result = CheckConnection(this); result != Result::Ok)
    {
        return result;
    }
    Platform::Request request;
    if (const int result = OpenRequest(request, L"GET", objectPath, L"CHttpHelper::RequestGet() HttpOpenRequest error");
        result != Result::Ok)
    {
        return result;
    }
    if (!request.Send())
    {
        // Receiving fails next and ends the request.
        LOG_FAILED_CALL(L"CHttpHelper::RequestGet() WinHttpSendRequest error");
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CHttpHelper::RequestGet() Error on WinHttpReceiveResponse");
        return Result::ReceiveFailed;
    }
    if (const int result = GetResponse(request, response); result != Result::Ok)
    {
        return result;
    }
    LOG_DEBUG(L"CHttpHelper::RequestGet() Receive:[" << response << L"], size=" << response.size());
    return Result::Ok;
}

int CHttpHelper::RequestPost(const wchar_t* objectPath, const char* body, std::string& response)
{
    response.clear();
    if (const int result = CheckConnection(this); result != Result::Ok)
    {
        return result;
    }
    Platform::Request request;
    if (const int result = OpenRequest(request, L"POST", objectPath, L"HttpOpenRequest error"); result != Result::Ok)
    {
        return result;
    }
    if (!request.AddHeader(kFormContentType))
    {
        LOG_FAILED_CALL(L"CHttpHelper::RequestPost() HttpAddRequestHeaders error");
        return Result::HeaderAddFailed;
    }
    if (!request.Send(body))
    {
        LOG_FAILED_CALL(L"CHttpHelper::RequestPost() HttpSendRequest error");
        return Result::PostSendFailed;
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CHttpHelper::RequestPost() Error on WinHttpReceiveResponse");
        return Result::ReceiveFailed;
    }
    if (const int result = GetResponse(request, response); result != Result::Ok)
    {
        return result;
    }
    LOG_DEBUG(L"CHttpHelper::RequestPost() Receive:[" << response << L"], size=" << response.size());
    return Result::Ok;
}

int CHttpHelper::OpenRequest(Platform::Request& request, const wchar_t* verb, const wchar_t* objectPath,
                             const wchar_t* failure)
{
    WideText<SERVER_URL_MAX_SIZE> url;
    url << m_serverPrefix << L"/" << objectPath;
    if (!request.Open(m_connection, verb, url.c_str(), kAcceptTypes.data()))
    {
        LOG_FAILED_CALL(failure);
        return Result::RequestOpenFailed;
    }
    return SetRequestHeader(request);
}

int CHttpHelper::SetRequestHeader(Platform::Request& request)
{
    for (std::size_t i = 0; i < kStandardHeaders.size(); ++i)
    {
        if (request.AddHeader(kStandardHeaders[i]))
        {
            continue;
        }
        if (i == 0)
        {
            LOG_FAILED_CALL(L"SetRequestHeader() HttpAddRequestHeaders error");
        }
        else
        {
            LOG_FAILED_CALL(L"SetRequestHeader() WinHttpAddRequestHeaders error");
        }
        return Result::StandardHeader1Failed - static_cast<int>(i);
    }
    return Result::Ok;
}

} // namespace quorvex
