#include "HttpExchange.h"

#include "Text.h"

#include <memory>
#include <type_traits>

#include <windows.h>

#include <winhttp.h>

namespace quorvex::console
{
namespace
{

constexpr std::size_t kLargestAnswer = 65536;

struct HandleCloser
{
    void operator()(HINTERNET handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HINTERNET>, HandleCloser>;

/// One exchange; each step that fails ends it.
class Request
{
public:
    Request(const HttpAddress& address, const wchar_t* verb, int milliseconds)
        : m_session(WinHttpOpen(L"quorvex", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                                WINHTTP_NO_PROXY_BYPASS, 0))
    {
        Require(m_session != nullptr);
        if (milliseconds != 0)
            WinHttpSetTimeouts(m_session.get(), milliseconds, milliseconds, milliseconds, milliseconds);
        m_connection.reset(WinHttpConnect(m_session.get(), address.host.c_str(), address.port, 0));
        Require(m_connection != nullptr);
        m_request.reset(WinHttpOpenRequest(m_connection.get(), verb, address.path.c_str(), nullptr, nullptr, nullptr,
                                           address.isSecure ? WINHTTP_FLAG_SECURE : 0));
        Require(m_request != nullptr);
    }

    HttpAnswer Send(std::string body)
    {
        const auto size = static_cast<DWORD>(body.size());
        const wchar_t* const headers = body.empty() ? WINHTTP_NO_ADDITIONAL_HEADERS : L"Content-Type: application/json";
        const DWORD headerLength = body.empty() ? 0 : static_cast<DWORD>(-1);
        m_stage = HttpStage::Connect;
        Require(WinHttpSendRequest(m_request.get(), headers, headerLength, body.data(), size, size, 0) != FALSE);
        m_stage = HttpStage::Answer;
        Require(WinHttpReceiveResponse(m_request.get(), nullptr) != FALSE);
        return {Status(), Body()};
    }

private:
    int Status() const
    {
        DWORD status = 0;
        DWORD size = sizeof status;
        Require(WinHttpQueryHeaders(m_request.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                    WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX) != FALSE);
        return static_cast<int>(status);
    }

    std::string Body() const
    {
        std::string body;
        char piece[4096];
        DWORD count = 0;
        do
        {
            Require(WinHttpReadData(m_request.get(), piece, sizeof piece, &count) != FALSE);
            body.append(piece, count);
        } while (count != 0 && body.size() <= kLargestAnswer);
        return body;
    }

    void Require(bool isDone) const
    {
        const DWORD error = GetLastError();
        if (!isDone)
            throw HttpError(error == ERROR_WINHTTP_NAME_NOT_RESOLVED ? HttpStage::Resolve : m_stage, error);
    }

    HttpStage m_stage = HttpStage::Address;
    Handle m_session;
    Handle m_connection;
    Handle m_request;
};

} // namespace

std::optional<HttpAddress> SplitAddress(const std::string& url)
{
    const std::wstring wide = Wide(url);
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = parts.dwUrlPathLength = static_cast<DWORD>(-1);
    if (WinHttpCrackUrl(wide.c_str(), 0, 0, &parts) == FALSE || parts.dwHostNameLength == 0)
        return std::nullopt;
    return HttpAddress{{parts.lpszHostName, parts.dwHostNameLength},
                       {parts.lpszUrlPath, parts.dwUrlPathLength},
                       parts.nPort,
                       parts.nScheme == INTERNET_SCHEME_HTTPS};
}

HttpError::HttpError(HttpStage stage, unsigned long systemError)
    : std::runtime_error("system error " + std::to_string(systemError)), m_stage(stage)
{
}

HttpAnswer Exchange(const std::string& url, const std::string& body, int milliseconds)
{
    const auto address = SplitAddress(url);
    if (!address)
        throw HttpError(HttpStage::Address, ERROR_WINHTTP_INVALID_URL);
    return Request(*address, body.empty() ? L"GET" : L"POST", milliseconds).Send(body);
}

} // namespace quorvex::console
