#include "AccountRequest.h"

#include "Failure.h"
#include "Output.h"
#include "Text.h"

#include <memory>
#include <type_traits>
#include <utility>

#include <json/reader.h>

#include <windows.h>

#include <winhttp.h>

namespace quorvex::console
{
namespace
{

constexpr DWORD kSuccess = 200;
constexpr std::size_t kLargestAnswer = 65536;

struct HandleCloser
{
    void operator()(HINTERNET handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HINTERNET>, HandleCloser>;

struct Address
{
    std::wstring host;
    std::wstring path;
    INTERNET_PORT port;
    bool isSecure;
};

/// One exchange; each step that fails ends it with a sentence about the server.
class Post
{
public:
    explicit Post(std::string url) : m_url(std::move(url))
    {
        const Address address = Split();
        m_session.reset(WinHttpOpen(L"quorvex", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                                    WINHTTP_NO_PROXY_BYPASS, 0));
        Require(m_session != nullptr);
        m_connection.reset(WinHttpConnect(m_session.get(), address.host.c_str(), address.port, 0));
        Require(m_connection != nullptr);
        m_request.reset(WinHttpOpenRequest(m_connection.get(), L"POST", address.path.c_str(), nullptr, nullptr, nullptr,
                                           address.isSecure ? WINHTTP_FLAG_SECURE : 0));
        Require(m_request != nullptr);
    }

    std::string Send(std::string body)
    {
        const auto size = static_cast<DWORD>(body.size());
        Require(WinHttpSendRequest(m_request.get(), L"Content-Type: application/json", static_cast<DWORD>(-1),
                                   body.data(), size, size, 0) != FALSE);
        Require(WinHttpReceiveResponse(m_request.get(), nullptr) != FALSE);
        const DWORD status = Status();
        if (status != kSuccess)
            throw Failure("cannot log in to " + m_url, static_cast<int>(status));
        return Answer();
    }

private:
    Address Split() const
    {
        const std::wstring url = Wide(m_url);
        URL_COMPONENTS parts{};
        parts.dwStructSize = sizeof parts;
        parts.dwHostNameLength = parts.dwUrlPathLength = static_cast<DWORD>(-1);
        if (WinHttpCrackUrl(url.c_str(), 0, 0, &parts) == FALSE)
            throw Failure("cannot use the server address " + m_url);
        return {{parts.lpszHostName, parts.dwHostNameLength},
                {parts.lpszUrlPath, parts.dwUrlPathLength},
                parts.nPort,
                parts.nScheme == INTERNET_SCHEME_HTTPS};
    }

    DWORD Status() const
    {
        DWORD status = 0;
        DWORD size = sizeof status;
        Require(WinHttpQueryHeaders(m_request.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                    WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX) != FALSE);
        return status;
    }

    std::string Answer() const
    {
        std::string answer;
        char piece[4096];
        DWORD count = 0;
        do
        {
            Require(WinHttpReadData(m_request.get(), piece, sizeof piece, &count) != FALSE);
            answer.append(piece, count);
        } while (count != 0 && answer.size() <= kLargestAnswer);
        return answer;
    }

    void Require(bool isDone) const
    {
        const DWORD error = GetLastError();
        if (!isDone)
            throw Failure("cannot reach " + m_url + " (system error " + std::to_string(error) + ')');
    }

    std::string m_url;
    Handle m_session;
    Handle m_connection;
    Handle m_request;
};

Json::Value ObjectIn(const std::string& text, const std::string& url)
{
    Json::Value object;
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &object, nullptr) || !object.isObject())
        throw Failure("what answers at " + url + " is no account system");
    return object;
}

} // namespace

Json::Value PostLogin(const std::string& url, const Json::Value& body)
{
    return ObjectIn(Post(url).Send(JsonLine(body)), url);
}

} // namespace quorvex::console
