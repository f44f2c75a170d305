#include "BareClient.h"

#include "Handle.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace quorvex::bench
{

namespace
{

constexpr DWORD kFileChunk = 65536;
constexpr DWORD kReplyChunk = 4096;

constexpr std::string_view kTail = "\r\n--0123456789012345678901234567890123456789--\r\n";
constexpr std::wstring_view kMultipart =
    L"Content-Type:multipart/form-data;boundary=0123456789012345678901234567890123456789\r\n";

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

void AddHeader(HINTERNET request, std::wstring_view header)
{
    Check(
        ::WinHttpAddRequestHeaders(request, header.data(), static_cast<DWORD>(header.size()), WINHTTP_ADDREQ_FLAG_ADD),
        "WinHttpAddRequestHeaders");
}

void SendHead(HINTERNET request, DWORD bodySize)
{
    Check(::WinHttpSendRequest(request, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, bodySize, 0),
          "WinHttpSendRequest");
}

void Write(HINTERNET request, const void* data, std::size_t size)
{
    DWORD written = 0;
    Check(::WinHttpWriteData(request, data, static_cast<DWORD>(size), &written), "WinHttpWriteData");
}

DWORD Read(HINTERNET request, void* buffer, DWORD room)
{
    DWORD count = 0;
    Check(::WinHttpReadData(request, buffer, room, &count), "WinHttpReadData");
    return count;
}

void Receive(HINTERNET request)
{
    Check(::WinHttpReceiveResponse(request, nullptr), "WinHttpReceiveResponse");

    DWORD status = 0;
    DWORD size = sizeof status;
    Check(::WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX),
          "WinHttpQueryHeaders");
    if (status != 200 && status != 206)
    {
        throw std::runtime_error("the server answered with status " + std::to_string(status));
    }
    DWORD length = 0;
    ::WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_LENGTH | WINHTTP_QUERY_FLAG_NUMBER,
                          WINHTTP_HEADER_NAME_BY_INDEX, &length, &size, WINHTTP_NO_HEADER_INDEX);
    std::array<wchar_t, 32> encoding = {};
    size = sizeof encoding;
    ::WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_ENCODING, WINHTTP_HEADER_NAME_BY_INDEX, encoding.data(), &size,
                          WINHTTP_NO_HEADER_INDEX);
}

std::string ReadReply(HINTERNET request)
{
    std::string reply;
    std::array<char, kReplyChunk> chunk;
    while (const DWORD count = Read(request, chunk.data(), kReplyChunk))
    {
        reply.append(chunk.data(), count);
    }
    return reply;
}

/// A field of a form, as a part that the boundary begins.
std::string Field(std::string_view name, std::uint64_t value)
{
    return "\r\n--0123456789012345678901234567890123456789\r\nContent-Disposition: form-data; name=\"" +
           std::string(name) + "\"\r\n\r\n" + std::to_string(value);
}

std::string NetDiskBlockHead(std::size_t size, std::uint32_t position)
{
    return "--0123456789012345678901234567890123456789\r\nContent-Disposition: form-data; name=\"fkey\"\r\n\r\nk" +
           Field("pos", position) + Field("size", size) +
           "\r\n--0123456789012345678901234567890123456789\r\nContent-Disposition: form-data; "
           "name=\"upfile\"; filename=\"0\"\r\n\r\n";
}

std::string StorageBlockHead(std::size_t size, std::uint32_t position)
{
    return "--0123456789012345678901234567890123456789\r\nContent-Disposition: form-data; name=\"k\"\r\n\r\nk" +
           Field("rs", position) + Field("re", position + size - 1) +
           "\r\n--0123456789012345678901234567890123456789\r\nContent-Disposition: form-data; "
           "name=\"chunk\"; filename=\"0\"\r\nContent-Type: application/octet-stream\r\n\r\n";
}

} // namespace

const BareService kBareNetDisk = {.upload = L"/file/upload",
                                  .download = L"/file/down?fkey=k",
                                  .blockUpload = L"/file/upload",
                                  .blockDownload = L"/file/down?fkey=k",
                                  .blockHead = NetDiskBlockHead};

const BareService kBareStorage = {.upload = L"/ops/upload_rest.php",
                                  .download = L"/ops/down.php?k=k",
                                  .blockUpload = L"/ofs/upload_u_rest.php",
                                  .blockDownload = L"/ofs/down.php?uid=&k=k",
                                  .blockHead = StorageBlockHead};

BareClient::BareClient(std::uint16_t port, const BareService& service)
    : m_service(service),
      m_session(::WinHttpOpen(L"Mozilla/4.0 (compatible; MSIE 7.0; Windows NT 5.1; Trident/4.0)",
                              WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0)),
      m_connection(::WinHttpConnect(m_session.get(), L"127.0.0.1", port, 0))
{
    Check(m_connection != nullptr, "WinHttpConnect");
}

BareClient::Internet BareClient::OpenRequest(const wchar_t* verb, const wchar_t* object) const
{
    Internet request(::WinHttpOpenRequest(m_connection.get(), verb, object, L"HTTP/1.1", WINHTTP_NO_REFERER,
                                          const_cast<const wchar_t**>(kAcceptTypes.data()), 0));
    Check(request != nullptr, "WinHttpOpenRequest");
    AddHeader(request.get(), L"Accept-Language: zh-cn");
    AddHeader(request.get(), L"Accept-Encoding: gzip, deflate");
    AddHeader(request.get(), L"Pragma: no-cache");
    AddHeader(request.get(), L"Cache-Control: no-cache");
    AddHeader(request.get(), L"Connection: close");
    return request;
}

void BareClient::Upload(const std::filesystem::path& file) const
{
    static constexpr std::string_view kHead =
        "--0123456789012345678901234567890123456789\r\nContent-Disposition: form-data; "
        "name=\"upfile\";filename=\"data.bin\"\r\nContent-Type: application/octet-stream\r\n\r\n";

    const Internet request = OpenRequest(L"POST", m_service.upload);
    AddHeader(request.get(), kMultipart);
    const Handle source = CheckedFile(
        ::CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD size = ::GetFileSize(source.get(), nullptr);
    SendHead(request.get(), static_cast<DWORD>(kHead.size()) + size + static_cast<DWORD>(kTail.size()));

    Write(request.get(), kHead.data(), kHead.size());
    const auto chunk = std::make_unique_for_overwrite<char[]>(kFileChunk);
    for (DWORD left = size; left != 0;)
    {
        DWORD count = 0;
        Check(::ReadFile(source.get(), chunk.get(), std::min(left, kFileChunk), &count, nullptr), "ReadFile");
        Write(request.get(), chunk.get(), count);
        left -= count;
    }
    Write(request.get(), kTail.data(), kTail.size());
    Receive(request.get());
    ReadReply(request.get());
}

void BareClient::Download(const std::filesystem::path& file) const
{
    const Internet request = OpenRequest(L"GET", m_service.download);
    SendHead(request.get(), 0);
    Receive(request.get());
    const Handle target = CheckedFile(::CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    const auto chunk = std::make_unique_for_overwrite<char[]>(kFileChunk);
    while (const DWORD count = Read(request.get(), chunk.get(), kFileChunk))
    {
        DWORD written = 0;
        Check(::WriteFile(target.get(), chunk.get(), count, &written, nullptr), "WriteFile");
    }
}

void BareClient::UploadBlock(std::span<const char> block, std::uint32_t position) const
{
    const std::string head = m_service.blockHead(block.size(), position);
    const Internet request = OpenRequest(L"POST", m_service.blockUpload);
    AddHeader(request.get(), kMultipart);
    SendHead(request.get(), static_cast<DWORD>(head.size() + block.size() + kTail.size()));
    Write(request.get(), head.data(), head.size());
    Write(request.get(), block.data(), block.size());
    Write(request.get(), kTail.data(), kTail.size());
    Receive(request.get());
    ReadReply(request.get());
}

void BareClient::DownloadBlock(std::span<char> block, std::uint32_t position) const
{
    const Internet request = OpenRequest(L"GET", m_service.blockDownload);
    AddHeader(request.get(),
              L"Range: bytes=" + std::to_wstring(position) + L"-" + std::to_wstring(position + block.size() - 1));
    SendHead(request.get(), 0);
    Receive(request.get());
    const std::string reply = ReadReply(request.get());
    std::copy_n(reply.data(), std::min(reply.size(), block.size()), block.data());
}

std::string BareClient::Get(const wchar_t* object) const
{
    const Internet request = OpenRequest(L"GET", object);
    SendHead(request.get(), 0);
    Receive(request.get());
    return ReadReply(request.get());
}

std::string BareClient::Post(const wchar_t* object, std::string_view body) const
{
    const Internet request = OpenRequest(L"POST", object);
    AddHeader(request.get(), L"Content-Type: application/x-www-form-urlencoded");
    const auto size = static_cast<DWORD>(body.size());
    Check(::WinHttpSendRequest(request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, const_cast<char*>(body.data()), size,
                               size, 0),
          "WinHttpSendRequest");
    Receive(request.get());
    return ReadReply(request.get());
}

} // namespace quorvex::bench
