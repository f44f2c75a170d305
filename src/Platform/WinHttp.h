#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// WinHTTP in its synchronous mode, one method a call. Methods that return false leave the reason in LastError.
namespace quorvex::Platform
{

/// An owned handle of WinHTTP, closed at the end of its scope.
class InternetHandle
{
public:
    InternetHandle() = default;
    ~InternetHandle();
    InternetHandle(const InternetHandle&) = delete;
    InternetHandle& operator=(const InternetHandle&) = delete;

    explicit operator bool() const { return m_handle != nullptr; }

    /// Closes now, for callers that report a failure; the handle counts as closed in any case.
    bool Close();

protected:
    bool Reset(void* handle);

    void* m_handle = nullptr;
};

class Session : public InternetHandle
{
public:
    /// Opens a session with the system's default proxy.
    bool Open(const wchar_t* userAgent);

    friend class Connection;
};

/// The parts of a URL that a connection needs.
struct CrackedUrl
{
    static constexpr std::size_t kHostRoom = 64;
    static constexpr std::size_t kPathRoom = 256;
    static constexpr std::size_t kExtraInfoRoom = 256;

    wchar_t host[kHostRoom] = {};
    std::uint16_t port = 0;
    bool isHttps = false;
};

/// Splits a URL; one whose parts do not fit the rooms above is refused.
bool CrackUrl(const wchar_t* url, CrackedUrl& cracked);

class Connection : public InternetHandle
{
public:
    bool Open(const Session& session, const wchar_t* host, std::uint16_t port);

    friend class Request;
};

/// The response headers that the module asks for.
enum class Header
{
    StatusCode,
    ContentLength,
    ContentEncoding,
    TransferEncoding,
    ContentRange,
    ContentDisposition
};

class Request : public InternetHandle
{
public:
    /// Opens an HTTP/1.1 request without a referrer and with flags 0.
    /// @param acceptTypes ends with a null entry
    bool Open(const Connection& connection, const wchar_t* verb, const wchar_t* object,
              const wchar_t* const* acceptTypes);
    bool AddHeader(std::wstring_view header);

    /// Sends the request without a body.
    bool Send();
    /// Sends the request with its whole body.
    bool Send(std::string_view body);
    /// Sends the head of a request whose body follows through Write. The system counts in 32 bits: a longer body
    /// fails with kFileTooLarge.
    bool SendHead(std::uint64_t totalLength);
    bool Write(const void* data, std::uint32_t size);

    bool Receive();
    bool QueryNumber(Header header, std::uint32_t& value) const;
    /// The text is terminated within the given room; a longer one fails with kInsufficientBuffer.
    bool QueryText(Header header, std::span<wchar_t> room) const;
    /// Reads a piece of the body; 0 bytes mean its end.
    bool Read(void* buffer, std::uint32_t room, std::uint32_t& read);
};

} // namespace quorvex::Platform
