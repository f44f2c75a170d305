#include "NetDiskHttpHelper.h"

#include "../BoundedText.h"
#include "../CommonUtil.h"
#include "../FileName.h"
#include "../HeaderValues.h"
#include "../LocalFile.h"
#include "../Multipart.h"
#include "../Platform/File.h"
#include "../ResponseBody.h"
#include "../ResponseFile.h"

#include <quorvex/Results.h>

#include <algorithm>
#include <array>

namespace quorvex::netdisk
{

using Platform::File;
using Platform::Header;
using Platform::Request;

namespace
{

constexpr std::size_t kDownloadPathSize = 324;
constexpr std::size_t kHeaderValueSize = 512;

bool IsSuccess(std::uint32_t statusCode)
{
    return statusCode == 200 || statusCode == 206 || statusCode == 201;
}

} // namespace

int CNetDiskHttpHelper::GetResponse(Request& request, std::string& response)
{
    return ReadResponse(request, response, kLongestResponse);
}

int CNetDiskHttpHelper::ReadResponse(Request& request, std::string& response, std::size_t longest)
{
    response.clear();
    ResponseAttributes attributes;
    if (const int result = GetResponseAttribute(request, attributes); result != Result::Ok)
    {
        return result;
    }
    std::size_t receivedSize = 0;
    const int result = ReadResponseBody(request, attributes, response, receivedSize, longest);
    if (attributes.IsCompressed() && result != Result::TransferFailed)
    {
        LOG_TRACE(L"GetResponse() Receive:[strData.size()=" << receivedSize << L", strResponse.size()="
                                                            << response.size() << L"]");
    }
    if (result != Result::Ok)
    {
        return result;
    }
    if (!IsSuccess(attributes.statusCode))
    {
        LOG_ERROR(L"GetResponse() HTTP response fail:dwStatusCode=" << attributes.statusCode);
        return RefusedStatus(attributes.statusCode);
    }
    return CheckContentLength(attributes, response);
}

int CNetDiskHttpHelper::FileUpload(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                                   const wchar_t* announcedName, std::string& response)
{
    LOG_TRACE(L"FileUpload(" << objectPath << L"," << localFolder << L"," << fileName << L"," << announcedName << L")");
    UploadPath path;
    path << localFolder << L"\\" << fileName;
    NarrowText<256> announced;
    announced << announcedName;
    return UploadFile(objectPath, path, announced.view(),
                      {.contentType = Multipart::UploadContentType,
                       .share = File::Share::Nothing,
                       .closing = UploadRules::Closing::AfterReceiving,
                       .openedFile = L"File "},
                      {.openFailed = L"CNetDiskHttpHelper::FileUpload HttpOpenRequest error",
                       .headerFailed = L"CNetDiskHttpHelper::FileUpload WinHttpAddRequestHeaders error",
                       .sendFailed = L"CNetDiskHttpHelper::FileUpload WinHttpSendRequest error",
                       .receiveFailed = L"CNetDiskHttpHelper::FileUpload WinHttpReceiveResponse error",
                       .received = L"CNetDiskHttpHelper::FileUpload Receive:["},
                      response);
}

int CNetDiskHttpHelper::FileCreate(const wchar_t* fileName, std::uint32_t totalSize, const char* md5,
                                   std::string& response)
{
    const std::string boundary = BoundaryToken();
    NarrowText<65> name;
    name << fileName;
    return PostForm(L"file/upload", boundary, {Multipart::LargeFileForm(boundary, totalSize, md5, name.view())},
                    {.openFailed = L"CNetDiskHttpHelper::FileCreate() HttpOpenRequest error",
                     .headerFailed = L"CNetDiskHttpHelper::FileCreate() WinHttpAddRequestHeaders error",
                     .sendFailed = L"CNetDiskHttpHelper::FileCreate() Error on WinHttpSendRequest",
                     .receiveFailed = L"CNetDiskHttpHelper::FileCreate() Error on HttpEndRequest",
                     .received = L"CNetDiskHttpHelper::FileCreate() Receive:["},
                    response);
}

int CNetDiskHttpHelper::FileCreate(const wchar_t* fileKey, std::uint32_t position, std::span<const char> block,
                                   std::string& response)
{
    const std::string boundary = BoundaryToken();
    NarrowText<33> key;
    key << fileKey;
    const auto size = static_cast<std::uint32_t>(block.size());
    return PostForm(L"file/upload", boundary,
                    {Multipart::BlockHead(boundary, key.view(), position, size),
                     {block.data(), block.size()},
                     Multipart::Tail(boundary)},
                    {.openFailed = L"CNetDiskHttpHelper::FileCreate() WinHttpOpenRequest error",
                     .headerFailed = L"CNetDiskHttpHelper::FileCreate() WinHttpAddRequestHeaders error",
                     .sendFailed = L"CNetDiskHttpHelper::FileCreate() Error on WinHttpSendRequest",
                     .receiveFailed = L"CNetDiskHttpHelper::FileCreate() Error on WinHttpReceiveResponse",
                     .received = L"CNetDiskHttpHelper::FileCreate() Receive:["},
                    response);
}

int CNetDiskHttpHelper::FileDownload(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                                     std::uint32_t& statusCode)
{
    statusCode = 0;
    Request request;
    ResponseAttributes attributes;
    if (const int result =
            GetDownload(request, objectPath,
                        {.openFailed = L"CNetDiskHttpHelper::FileDownload() WinHttpOpenRequest error",
                         .sent = L"CNetDiskHttpHelper::FileDownload() WinHttpSendRequest pass",
                         .sendFailed = L"CNetDiskHttpHelper::FileDownload() WinHttpSendRequest error",
                         .receiveFailed = L"CNetDiskHttpHelper::FileDownload() WinHttpReceiveResponse error"},
                        attributes);
        result != Result::Ok)
    {
        return result;
    }
    statusCode = attributes.statusCode;
    if (!IsSuccess(statusCode))
    {
        LOG_ERROR(L"CNetDiskHttpHelper::FileDownload() HTTP response fail:dwStatusCode=" << statusCode);
        return Result::DownloadRefused;
    }

    std::array<wchar_t, kHeaderValueSize> disposition = {};
    std::wstring_view name;
    bool isNameUsable = true;
    if (fileName != nullptr)
    {
        name = fileName;
    }
    else
    {
        if (!request.QueryText(Header::ContentDisposition, disposition))
        {
            LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileDownload() HttpQueryInfo(HTTP_QUERY_CONTENT_DISPOSITION) error");
            return Result::DownloadRefused;
        }
        name = ParseContentDisposition(disposition.data()).fileName;
        isNameUsable = StaysInFolder(name);
    }
    WideText<kDownloadPathSize> path;
    path << localFolder << L"\\" << name;

    // A path that was cut would lead to another file than the one that was asked for.
    return DownloadToFile(request, isNameUsable && !path.IsCut() ? path.c_str() : nullptr, attributes.encoding,
                          {.existing = File::Existing::Kept, .isCloseFailureFatal = true});
}

int CNetDiskHttpHelper::GetFileInfo(const wchar_t* objectPath, std::uint32_t& totalSize, std::wstring& fileName,
                                    std::wstring& secondValue)
{
    Request request;
    if (const int result =
            GetRange(request, objectPath, L"Range: bytes=0-0\r\n",
                     {.openFailed = L"CNetDiskHttpHelper::GetFileInfo() WinHttpOpenRequest error",
                      .headerFailed = L"CNetDiskHttpHelper::GetFileInfo WinHttpAddRequestHeaders error",
                      .sent = L"CNetDiskHttpHelper::GetFileInfo HttpSendRequest pass",
                      .sendFailed = L"CNetDiskHttpHelper::GetFileInfo WinHttpSendRequest error",
                      .receiveFailed = L"CNetDiskHttpHelper::FileCreate() Error on WinHttpReceiveResponse"},
                     kRangeFailures);
        result != Result::Ok)
    {
        return result;
    }
    std::uint32_t statusCode = 0;
    if (const int result = QueryStatusCode(request, statusCode,
                                           L"CHttpHelper::GetFileInfo() HttpQueryInfo(HTTP_QUERY_STATUS_CODE) error");
        result != Result::Ok)
    {
        return result;
    }
    if (!IsSuccess(statusCode))
    {
        LOG_ERROR(L"CNetDiskHttpHelper::GetFileInfo() HTTP response fail:dwStatusCode=" << statusCode);
        return RefusedStatus(statusCode);
    }

    std::array<wchar_t, kHeaderValueSize> value = {};
    if (!request.QueryText(Header::ContentRange, value))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::GetFileInfo HttpQueryInfo(HTTP_QUERY_CONTENT_RANGE) error");
        return Result::RangeAnswerInvalid;
    }
    totalSize = ParseContentRangeTotal(value.data());

    if (!request.QueryText(Header::ContentDisposition, value))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::GetFileInfo HttpQueryInfo(HTTP_QUERY_CONTENT_DISPOSITION) error");
        return Result::RangeAnswerInvalid;
    }
    const ContentDisposition disposition = ParseContentDisposition(value.data());
    fileName = disposition.fileName;
    secondValue = disposition.second;
    return Result::Ok;
}

int CNetDiskHttpHelper::BufferDownload(const wchar_t* objectPath, std::uint32_t start, std::uint32_t& transferSize,
                                       void* buffer)
{
    Request request;
    if (const int result =
            GetRange(request, objectPath, RangeHeader(start, transferSize),
                     {.openFailed = L"CNetDiskHttpHelper::BufferDownload() WinHttpOpenRequest error",
                      .headerFailed = L"CNetDiskHttpHelper::BufferDownload() WinHttpAddRequestHeaders error",
                      .sendFailed = L"CNetDiskHttpHelper::BufferDownload() WinHttpSendRequest error",
                      .receiveFailed = L"CNetDiskHttpHelper::FileCreate() Error on WinHttpReceiveResponse"},
                     kRangeFailures);
        result != Result::Ok)
    {
        return result;
    }
    std::string response;
    if (const int result = ReadResponse(request, response, LongestRange(transferSize)); result != Result::Ok)
    {
        return result;
    }
    if (response.size() == transferSize)
    {
        LOG_TRACE(L"CNetDiskHttpHelper::BufferDownload() GetResponse pass");
    }
    else
    {
        transferSize = static_cast<std::uint32_t>(std::min<std::size_t>(response.size(), transferSize));
        LOG_DEBUG(L"CNetDiskHttpHelper::BufferDownload() strResponse.size()=" << response.size() << L", dwTransferSize="
                                                                              << transferSize);
    }
    std::copy_n(response.data(), transferSize, static_cast<char*>(buffer));
    return Result::Ok;
}

} // namespace quorvex::netdisk
