#include "ShareFileStorageHttpHelper.h"

#include "../BoundedText.h"
#include "../CommonUtil.h"
#include "../HeaderValues.h"
#include "../JsonHelper.h"
#include "../LocalFile.h"
#include "../Multipart.h"
#include "../Platform/File.h"
#include "../ResponseBody.h"
#include "../ResponseFile.h"

#include <quorvex/Results.h>

#include <algorithm>
#include <array>

namespace quorvex
{

using Platform::CodePage;
using Platform::File;
using Platform::Header;
using Platform::Request;

namespace
{

constexpr std::size_t kDownloadPathSize = 324;
constexpr std::size_t kHeaderValueSize = 512;

/// Logs a refusal with what the server says of it. That explains a failure that is certain already, so that failing to
/// read it changes nothing.
/// @param refused the operation's line; the status follows
void LogRefusal(Request& request, const ResponseAttributes& attributes, const wchar_t* refused)
{
    std::string body;
    std::size_t receivedSize = 0;
    ReadResponseBody(request, attributes, body, receivedSize);
    LOG_ERROR(refused << attributes.statusCode);
    RefusedBy(static_cast<int>(attributes.statusCode), body.c_str());
}

} // namespace

int CShareFileStorageHttpHelper::GetResponse(Request& request, std::string& response)
{
    return ReadResponse(request, response, kLongestResponse);
}

int CShareFileStorageHttpHelper::ReadResponse(Request& request, std::string& response, std::size_t longest)
{
    response.clear();
    ResponseAttributes attributes;
    if (const int result = GetResponseAttribute(request, attributes); result != Result::Ok)
    {
        return result;
    }
    return ReadGoodResponse(request, attributes, response, longest);
}

int CShareFileStorageHttpHelper::FileUpload(const wchar_t* objectPath, const wchar_t* folder, const wchar_t* fileName,
                                            const wchar_t* serverName, std::string& response)
{
    UploadPath path;
    path << folder << L"\\" << fileName;
    NarrowText<256, CodePage::Oem> name;
    name << serverName;
    return UploadFile(objectPath, path, name.view(),
                      {.contentType = Multipart::FormContentType,
                       .share = File::Share::ReadAndWrite,
                       .closing = UploadRules::Closing::BeforeReceiving,
                       .openedFile = L"CShareFileStorageHttpHelper::FileUpload() File "},
                      {.openFailed = L"CShareFileStorageHttpHelper::FileUpload() WinHttpOpenRequest error",
                       .headerFailed = L"CShareFileStorageHttpHelper::FileUpload() HttpAddRequestHeaders error",
                       .sendFailed = L"CShareFileStorageHttpHelper::FileUpload WinHttpSendRequest error",
                       .receiveFailed = L"CShareFileStorageHttpHelper::FileUpload() WinHttpReceiveResponse error",
                       .received = L"CShareFileStorageHttpHelper::FileUpload Receive:["},
                      response);
}

int CShareFileStorageHttpHelper::FileDownload(const wchar_t* objectPath, const wchar_t* folder, const wchar_t* fileName)
{
    Request request;
    ResponseAttributes attributes;
    if (const int result =
            GetDownload(request, objectPath,
                        {.openFailed = L"CShareFileStorageHttpHelper::FileDownload() WinHttpOpenRequest error",
                         .sent = L"CShareFileStorageHttpHelper::FileDownload() WinHttpSendRequest pass",
                         .sendFailed = L"CShareFileStorageHttpHelper::FileDownload() WinHttpSendRequest error",
                         .receiveFailed = L"CShareFileStorageHttpHelper::FileDownload() WinHttpReceiveResponse error"},
                        attributes);
        result != Result::Ok)
    {
        return result;
    }
    if (!IsGoodStatus(attributes.statusCode))
    {
        LogRefusal(request, attributes,
                   L"CShareFileStorageHttpHelper::FileDownload() HTTP response fail:dwStatusCode=");
        return RefusedStatus(attributes.statusCode);
    }
    WideText<kDownloadPathSize> path;
    path << folder << L"\\" << fileName;

    // A path that was cut would lead to another file than the one that was asked for.
    return DownloadToFile(request, path.IsCut() ? nullptr : path.c_str(), attributes.encoding,
                          {.existing = File::Existing::Emptied, .isCloseFailureFatal = false});
}

int CShareFileStorageHttpHelper::BufferUpload(const wchar_t* objectPath, const wchar_t* key, std::uint32_t position,
                                              std::span<const char> chunk, std::string& response)
{
    const std::string boundary = BoundaryToken();
    NarrowText<65, CodePage::Oem> narrowKey;
    narrowKey << key;
    const std::uint32_t last = position + static_cast<std::uint32_t>(chunk.size()) - 1;
    return PostForm(objectPath, boundary,
                    {Multipart::ChunkHead(boundary, narrowKey.view(), position, last),
                     {chunk.data(), chunk.size()},
                     Multipart::Tail(boundary)},
                    {.openFailed = L"CShareFileStorageHttpHelper::BufferUpload() HttpOpenRequest error",
                     .headerFailed = L"CShareFileStorageHttpHelper::BufferUpload() HttpAddRequestHeaders error",
                     .sendFailed = L"CShareFileStorageHttpHelper::BufferUpload() Error on WinHttpSendRequest",
                     .receiveFailed = L"CShareFileStorageHttpHelper::BufferUpload() Error on WinHttpReceiveResponse",
                     .received = L"CShareFileStorageHttpHelper::BufferUpload() Receive:["},
                    response);
}

int CShareFileStorageHttpHelper::BufferUpload(const wchar_t* objectPath, FileInfo& info)
{
    Request request;
    if (const int result =
            GetRange(request, objectPath, L"Range: bytes=0-0\r\n",
                     {.openFailed = L"CShareFileStorageHttpHelper::BufferUpload() WinHttpOpenRequest error",
                      .headerFailed = L"CShareFileStorageHttpHelper::BufferUpload() WinHttpAddRequestHeaders error",
                      .sendFailed = L"CShareFileStorageHttpHelper::BufferUpload() WinHttpSendRequest error",
                      .receiveFailed = L"CShareFileStorageHttpHelper::BufferUpload() Error on WinHttpReceiveResponse"},
                     {.send = Result::ReceiveFailed, .receive = Result::RangeHeaderAddFailed});
        result != Result::Ok)
    {
        return result;
    }
    ResponseAttributes attributes;
    if (const int result = QueryStatusCode(
            request, attributes.statusCode,
            L"CShareFileStorageHttpHelper::BufferUpload() WinHttpQueryHeaders(HTTP_QUERY_STATUS_CODE) error");
        result != Result::Ok)
    {
        return result;
    }
    if (!IsGoodStatus(attributes.statusCode))
    {
        FindContentEncoding(request, attributes.encoding);
        LogRefusal(request, attributes,
                   L"CShareFileStorageHttpHelper::BufferUpload() HTTP response fail:dwStatusCode=");
        return Result::RangeAnswerInvalid;
    }

    std::array<wchar_t, kHeaderValueSize> value = {};
    if (!request.QueryText(Header::ContentRange, value))
    {
        LOG_FAILED_CALL(
            L"CShareFileStorageHttpHelper::BufferUpload() WinHttpQueryHeaders(HTTP_QUERY_CONTENT_RANGE) error");
        return Result::RangeAnswerInvalid;
    }
    info.totalSize = ParseContentRangeTotal(value.data());

    if (!request.QueryText(Header::ContentDisposition, value))
    {
        LOG_FAILED_CALL(
            L"CShareFileStorageHttpHelper::BufferUpload() HttpQueryInfo(HTTP_QUERY_CONTENT_DISPOSITION) error");
        return Result::RangeAnswerInvalid;
    }
    const ContentDisposition disposition = ParseContentDisposition(value.data());
    info.name = disposition.fileName;
    info.second = disposition.second;
    info.third = disposition.third;
    return Result::Ok;
}

int CShareFileStorageHttpHelper::BufferDownload(const wchar_t* objectPath, std::uint32_t start,
                                                std::uint32_t& transferSize, void* buffer)
{
    Request request;
    if (const int result =
            GetRange(request, objectPath, RangeHeader(start, transferSize),
                     {.openFailed = L"CHttpHelper::BufferDownload() HttpOpenRequest error",
                      .headerFailed = L"CHttpHelper::BufferDownload() HttpAddRequestHeaders error",
                      .sendFailed = L"CHttpHelper::BufferDownload() HttpSendRequest error",
                      .receiveFailed = L"CShareFileStorageHttpHelper::BufferUpload() Error on WinHttpReceiveResponse"},
                     {.send = Result::ReceiveFailed, .receive = Result::RangeHeaderAddFailed});
        result != Result::Ok)
    {
        return result;
    }
    std::string response;
    if (const int result = ReadResponse(request, response, LongestRange(transferSize)); result != Result::Ok)
    {
        return result;
    }
    LOG_DEBUG(L"BufferDownload() strResponse.size()=" << response.size() << L", dwTransferSize=" << transferSize);
    LOG_TRACE(L"BufferDownload() GetResponse pass");
    transferSize = static_cast<std::uint32_t>(std::min<std::size_t>(response.size(), transferSize));
    std::copy_n(response.data(), transferSize, static_cast<char*>(buffer));
    return Result::Ok;
}

} // namespace quorvex
