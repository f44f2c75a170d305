#include "HttpRequest.h"

#include "Guarded.h"
#include "Immortal.h"

#include <algorithm>
#include <cwchar>
#include <limits>
#include <utility>

#include <winsock2.h>

namespace ferrolink
{

namespace
{

// Each piece costs a change of threads; this one makes that cost vanish beside the copying.
constexpr std::size_t kPiece = 262144;
// What a server announces is believed this far.
constexpr std::uint64_t kMostReserved = 16777216;
constexpr std::uint64_t kLongestAnswer = 0x7FFFFFFF;

bool IsTimeout(DWORD error)
{
    return error == ERROR_WINHTTP_TIMEOUT || error == WSAETIMEDOUT;
}

int ResultOf(DWORD error)
{
    return IsTimeout(error) ? FRL_HTTP_TIMED_OUT : FRL_HTTP_FAILED;
}

/// What is left to do after a call that WinHTTP works on: nothing, unless it refused the call.
std::optional<int> Pending(BOOL isAccepted)
{
    return isAccepted ? std::nullopt : std::optional(ResultOf(GetLastError()));
}

bool IsEmpty(const wchar_t* text)
{
    return text == nullptr || *text == L'\0';
}

/// A URL taken apart.
struct Target
{
    bool isSecure = false;
    INTERNET_PORT port = 0;
    std::wstring host;
    std::wstring object; ///< path and query
};

bool Split(const wchar_t* url, Target& target)
{
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = static_cast<DWORD>(-1);
    if (!WinHttpCrackUrl(url, 0, 0, &parts) || parts.dwHostNameLength == 0)
        return false;
    target.isSecure = parts.nScheme == INTERNET_SCHEME_HTTPS;
    target.port = parts.nPort;
    target.host.assign(parts.lpszHostName, parts.dwHostNameLength);
    target.object.assign(parts.lpszUrlPath, parts.dwUrlPathLength);
    target.object.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    target.object.resize(std::min(target.object.size(), target.object.find(L'#')));
    if (target.object.empty() || target.object.front() != L'/')
        target.object.insert(target.object.begin(), L'/');
    return true;
}

} // namespace

std::shared_ptr<HttpSession> HttpSession::Open()
{
    InternetHandle handle(WinHttpOpen(L"ferrolink", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                                      WINHTTP_NO_PROXY_BYPASS, WINHTTP_FLAG_ASYNC));
    if (!handle)
        return nullptr;
    constexpr DWORD wanted = WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS | WINHTTP_CALLBACK_FLAG_HANDLES;
    if (WinHttpSetStatusCallback(handle.get(), HttpRequest::OnStatus, wanted, 0) == WINHTTP_INVALID_STATUS_CALLBACK)
        return nullptr;
    return std::make_shared<HttpSession>(std::move(handle));
}

std::shared_ptr<HttpRequest> HttpRequest::Open(std::shared_ptr<HttpSession> session, const wchar_t* method,
                                               const wchar_t* url, const wchar_t* headers)
{
    if (IsEmpty(method) || IsEmpty(url))
        return nullptr;
    auto request = std::make_shared<HttpRequest>(std::move(session), std::wcscmp(method, L"HEAD") == 0);
    if (!request->OpenHandles(method, url))
        return nullptr;
    if (!IsEmpty(headers) && !request->AddHeaders(headers, WINHTTP_ADDREQ_FLAG_ADD))
    {
        request->Release();
        return nullptr;
    }
    return request;
}

bool HttpRequest::OpenHandles(const wchar_t* method, const wchar_t* url)
{
    Target target;
    if (!Split(url, target))
        return false;
    m_connection.reset(WinHttpConnect(m_session->Handle(), target.host.c_str(), target.port, 0));
    if (!m_connection)
        return false;
    m_request.reset(WinHttpOpenRequest(m_connection.get(), method, target.object.c_str(), nullptr, WINHTTP_NO_REFERER,
                                       WINHTTP_DEFAULT_ACCEPT_TYPES, target.isSecure ? WINHTTP_FLAG_SECURE : 0));
    if (!m_request)
        return false;
    // With the context set before anything else, every request that is opened is also told of its end.
    auto context = reinterpret_cast<DWORD_PTR>(this);
    if (!WinHttpSetOption(m_request.get(), WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context))
        return false;
    m_keptByWinHttp = shared_from_this();
    // Body and cookies are meant for the host they were given for.
    if (!SetNumber(WINHTTP_OPTION_DISABLE_FEATURE, WINHTTP_DISABLE_REDIRECTS))
    {
        Release();
        return false;
    }
    return true;
}

bool HttpRequest::SetNumber(DWORD option, DWORD value) noexcept
{
    return WinHttpSetOption(m_request.get(), option, &value, sizeof value) != FALSE;
}

bool HttpRequest::AddHeaders(const wchar_t* headers, DWORD flags) noexcept
{
    return WinHttpAddRequestHeaders(m_request.get(), headers, static_cast<DWORD>(-1), flags) != FALSE;
}

int HttpRequest::AddCookie(const wchar_t* cookie)
{
    // A line break would begin another header.
    if (IsEmpty(cookie) || std::wcspbrk(cookie, L"\r\n") != nullptr)
        return ERROR_INVALID_PARAMETER;
    const std::wstring header = std::wstring(L"Cookie: ") + cookie;
    const std::lock_guard lock(m_mutex);
    if (m_phase != Phase::Opened)
        return ERROR_INVALID_STATE;
    const bool added =
        AddHeaders(header.c_str(), WINHTTP_ADDREQ_FLAG_ADD | WINHTTP_ADDREQ_FLAG_COALESCE_WITH_SEMICOLON);
    return added ? 0 : static_cast<int>(GetLastError());
}

int HttpRequest::SetTimeouts(int resolve, int connect, int send, int receive) noexcept
{
    const std::pair<DWORD, int> timeouts[] = {
        {WINHTTP_OPTION_RESOLVE_TIMEOUT, resolve},
        {WINHTTP_OPTION_CONNECT_TIMEOUT, connect},
        {WINHTTP_OPTION_SEND_TIMEOUT, send},
        {WINHTTP_OPTION_RECEIVE_TIMEOUT, receive},
        // The one above counts for the body only.
        {WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, receive},
    };
    const std::lock_guard lock(m_mutex);
    if (m_phase != Phase::Opened)
        return ERROR_INVALID_STATE;
    for (const auto& [option, milliseconds] : timeouts)
    {
        const DWORD value = milliseconds == 0 ? INFINITE : static_cast<DWORD>(milliseconds);
        if (milliseconds >= 0 && !SetNumber(option, value))
            return static_cast<int>(GetLastError());
    }
    return 0;
}

int HttpRequest::Perform(const void* body, std::size_t length, frl_http_completion callback, void* context)
{
    if (callback == nullptr || (body == nullptr && length != 0))
        return ERROR_INVALID_PARAMETER;
    {
        const std::lock_guard lock(m_mutex);
        if (m_phase != Phase::Opened)
            return ERROR_INVALID_STATE;
        m_body = static_cast<const char*>(body);
        m_bodyLength = length;
        m_callback = callback;
        m_context = context;
        // Counts as a step, so that an answer which comes before the call has returned waits for it.
        m_steps = 1;
        if (!Send())
            return static_cast<int>(GetLastError());
        m_phase = Phase::Sending;
    }
    if (m_steps.fetch_sub(1) != 1)
        TakeSteps();
    return 0;
}

bool HttpRequest::Send()
{
    constexpr std::size_t longestTotal = std::numeric_limits<DWORD>::max();
    auto total = static_cast<DWORD>(std::min(m_bodyLength, longestTotal));
    if constexpr (sizeof(std::size_t) > sizeof(DWORD))
    {
        if (m_bodyLength > longestTotal)
        {
            const std::wstring header = L"Content-Length: " + std::to_wstring(m_bodyLength);
            if (!AddHeaders(header.c_str(), WINHTTP_ADDREQ_FLAG_ADD | WINHTTP_ADDREQ_FLAG_REPLACE))
                return false;
            total = WINHTTP_IGNORE_REQUEST_TOTAL_LENGTH;
        }
    }
    if (m_bodyLength <= kPiece)
    {
        m_outgoing.assign(m_body, m_bodyLength);
        m_bodySent = m_bodyLength;
    }
    return WinHttpSendRequest(m_request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                              m_outgoing.empty() ? WINHTTP_NO_REQUEST_DATA : m_outgoing.data(),
                              static_cast<DWORD>(m_outgoing.size()), total, reinterpret_cast<DWORD_PTR>(this)) != FALSE;
}

void CALLBACK HttpRequest::OnStatus(HINTERNET, DWORD_PTR context, DWORD status, void* information,
                                    DWORD length) noexcept
{
    if (context == 0)
        return;
    auto& request = *reinterpret_cast<HttpRequest*>(context);
    switch (status)
    {
    case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
    case WINHTTP_CALLBACK_STATUS_WRITE_COMPLETE:
    case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
        return request.Continue(ERROR_SUCCESS, 0);
    case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
        return request.Continue(ERROR_SUCCESS, length);
    case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
        return request.Continue(static_cast<const WINHTTP_ASYNC_RESULT*>(information)->dwError, 0);
    case WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING:
    {
        const std::shared_ptr<HttpRequest> last = std::move(request.m_keptByWinHttp);
        return;
    }
    default:
        return;
    }
}

/// WinHTTP may report a step's end before the call that began it has returned, on the same thread or another one:
/// whoever is taking steps takes the next one, too. So the stack stays flat however long an answer is.
void HttpRequest::Continue(DWORD error, DWORD count) noexcept
{
    m_stepError = error;
    m_stepCount = count;
    if (m_steps.fetch_add(1) == 0)
        TakeSteps();
}

void HttpRequest::TakeSteps() noexcept
{
    const std::shared_ptr<HttpRequest> self = weak_from_this().lock();
    do
    {
        Step();
    } while (m_steps.fetch_sub(1) != 1);
}

void HttpRequest::Step() noexcept
{
    const DWORD error = m_stepError;
    const DWORD count = m_stepCount;
    std::unique_lock lock(m_mutex);
    if (m_phase == Phase::Over)
        return;
    const auto step = [&] { return error == ERROR_SUCCESS ? Proceed(count) : Recover(error); };
    if (const auto result = Guarded<std::optional<int>>(FRL_HTTP_FAILED, step))
        Finish(*result, lock);
}

/// @return the request's result when it is over
std::optional<int> HttpRequest::Proceed(DWORD count)
{
    switch (m_phase)
    {
    case Phase::Sending:
    case Phase::Writing:
        return m_bodySent < m_bodyLength ? WriteOn() : Receive();
    case Phase::Receiving:
        return BeginReading();
    case Phase::Reading:
        m_received += count;
        return count == 0 ? std::optional(IsWhole() ? FRL_HTTP_COMPLETED : FRL_HTTP_FAILED) : ReadOn();
    case Phase::Opened:
    case Phase::Over:
        break;
    }
    return FRL_HTTP_FAILED;
}

std::optional<int> HttpRequest::Recover(DWORD error) noexcept
{
    // A server that does not want the rest of a body may have said why before it closed the connection.
    if (m_phase == Phase::Writing && !IsTimeout(error))
        return Receive();
    return ResultOf(error);
}

std::optional<int> HttpRequest::WriteOn()
{
    m_phase = Phase::Writing;
    m_outgoing.assign(m_body + m_bodySent, std::min(kPiece, m_bodyLength - m_bodySent));
    m_bodySent += m_outgoing.size();
    if (!WinHttpWriteData(m_request.get(), m_outgoing.data(), static_cast<DWORD>(m_outgoing.size()), nullptr))
        return Recover(GetLastError());
    return std::nullopt;
}

std::optional<int> HttpRequest::Receive() noexcept
{
    m_phase = Phase::Receiving;
    return Pending(WinHttpReceiveResponse(m_request.get(), nullptr));
}

std::optional<int> HttpRequest::BeginReading()
{
    m_phase = Phase::Reading;
    DWORD status = 0;
    DWORD size = sizeof status;
    if (!WinHttpQueryHeaders(m_request.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                             WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX))
        return FRL_HTTP_FAILED;
    m_answerStatus = static_cast<int>(status);
    if (!m_hasBodilessAnswer && status != HTTP_STATUS_NO_CONTENT && status != HTTP_STATUS_NOT_MODIFIED)
        QueryAnnouncedLength();
    m_answer.reserve(static_cast<std::size_t>(std::min(m_announced.value_or(0), kMostReserved) + 1));
    return ReadOn();
}

void HttpRequest::QueryAnnouncedLength() noexcept
{
    const auto query = [&](DWORD header, wchar_t(&text)[32]) {
        DWORD size = sizeof text;
        return WinHttpQueryHeaders(m_request.get(), header, WINHTTP_HEADER_NAME_BY_INDEX, text, &size,
                                   WINHTTP_NO_HEADER_INDEX) != FALSE;
    };
    wchar_t length[32];
    wchar_t coding[32];
    // A body in chunks says itself where it ends.
    if (query(WINHTTP_QUERY_CONTENT_LENGTH, length) && !query(WINHTTP_QUERY_TRANSFER_ENCODING, coding))
        m_announced = std::wcstoull(length, nullptr, 10);
}

bool HttpRequest::IsWhole() const noexcept
{
    return !m_announced || *m_announced == m_received;
}

std::optional<int> HttpRequest::ReadOn()
{
    const std::uint64_t atLeast = std::max<std::uint64_t>(m_announced.value_or(0), m_received);
    if (atLeast > kLongestAnswer)
        return FRL_HTTP_FAILED;
    const std::size_t left = static_cast<std::size_t>(atLeast) - m_received;
    // Of a known length, the end is read with room for one byte, which stays empty.
    const std::size_t room = m_announced ? std::clamp<std::size_t>(left, 1, kPiece) : kPiece;
    m_answer.resize(m_received + room);
    return Pending(WinHttpReadData(m_request.get(), m_answer.data() + m_received, static_cast<DWORD>(room), nullptr));
}

void HttpRequest::Finish(int result, std::unique_lock<std::mutex>& lock) noexcept
{
    m_phase = Phase::Over;
    m_result = result;
    if (result == FRL_HTTP_COMPLETED)
        m_status = m_answerStatus;
    InternetHandle request = std::move(m_request);
    lock.unlock();
    // Closed before anybody is told, so that the connection is free for the caller's next request.
    request.reset();
    EventThread::Get().Post(weak_from_this().lock());
}

bool HttpRequest::Release() noexcept
{
    std::unique_lock lock(m_mutex);
    if (m_phase != Phase::Opened)
        return false;
    m_phase = Phase::Over;
    const InternetHandle request = std::move(m_request);
    lock.unlock();
    return true;
}

bool HttpRequest::Abandon() noexcept
{
    if (Release())
        return true;
    std::unique_lock lock(m_mutex);
    if (m_phase != Phase::Over)
        Finish(FRL_HTTP_CLOSED, lock);
    return false;
}

void HttpRequest::Run() noexcept
{
    const bool hasBody = m_result == FRL_HTTP_COMPLETED && m_received != 0;
    m_callback(m_handle, m_result, hasBody ? m_answer.data() : nullptr, hasBody ? m_received : 0, m_context);
    Requests().Take(m_handle);
}

HandleTable<HttpSession>& Sessions() noexcept
{
    return Immortal<HandleTable<HttpSession>>();
}

HandleTable<HttpRequest>& Requests() noexcept
{
    return Immortal<HandleTable<HttpRequest>>();
}

} // namespace ferrolink
