#include "NetDiskHttpHelper.h"

#include "../BoundedText.h"
#include "../CommonUtil.h"
#include "../HeaderValues.h"
#include "../Multipart.h"
#include "../Platform/File.h"
#include "../RequestBody.h"
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

constexpr std::size_t kUploadPathSize = 260;
constexpr std::size_t kDownloadPathSize = 324;
constexpr std::size_t kHeaderValueSize = 512;

bool IsSuccess(std::uint32_t statusCode)
{
    return statusCode == 200 || statusCode == 206 || statusCode == 201;
}

/// Whether a name that the server gave names a file of the folder that it is put into.
bool StaysInFolder(std::wstring_view name)
{
    return name.find_first_of(L"\\/:") == std::wstring_view::npos && name != L"." && name != L"..";
}

} // namespace

int CNetDiskHttpHelper::GetResponse(Request& request, std::string& response)
{
    response.clear();
    ResponseAttributes attributes;
    if (const int result = GetResponseAttribute(request, attributes); result != Result::Ok)
    {
        return result;
    }
    if (const int result = ReadResponseBody(request, attributes, response); result != Result::Ok)
    {
        return result;
    }
    if (!IsSuccess(attributes.statusCode))
    {
        LOG_ERROR(L"GetResponse() HTTP response fail:dwStatusCode=" << attributes.statusCode);
        return static_cast<int>(attributes.statusCode);
    }
    return CheckContentLength(attributes, response);
}

int CNetDiskHttpHelper::FileUpload(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                                   const wchar_t* announcedName, std::string& response)
{
    response.clear();
    LOG_TRACE(L"FileUpload(" << objectPath << L"," << localFolder << L"," << fileName << L"," << announcedName << L")");
    Request request;
    if (!OpenRequest(request, L"POST", objectPath))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileUpload HttpOpenRequest error");
        return Result::RequestOpenFailed;
    }

    const std::string boundary = BoundaryToken();
    NarrowText<256> announced;
    announced << announcedName;
    const std::string head = Multipart::UploadHead(boundary, announced.view());
    const std::string tail = Multipart::Tail(boundary);
    WideText<kUploadPathSize> path;
    path << localFolder << L"\\" << fileName;

    if (const int result = SetRequestHeader(request); result != Result::Ok)
    {
        return result;
    }
    if (!request.AddHeader(Multipart::UploadContentType(boundary)))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileUpload WinHttpAddRequestHeaders error");
        return Result::HeaderAddFailed;
    }

    File file;
    std::uint64_t fileSize = 0;
    if (!file.OpenToRead(path.c_str(), File::Share::Nothing))
    {
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    LOG_DEBUG(L"File " << path.c_str() << L" open successfully");
    if (!file.Size(fileSize))
    {
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    const auto dwFileSize = static_cast<std::uint32_t>(fileSize);
    LOG_DEBUG(L"dwFileSize=" << dwFileSize);

    if (!request.SendHead(std::uint64_t{head.size()} + dwFileSize + tail.size()))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileUpload WinHttpSendRequest error");
        return Result::UploadSendFailed;
    }
    WriteBody(request, head);
    if (!WriteFileBody(request, file, dwFileSize))
    {
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    WriteBody(request, tail);

    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileUpload WinHttpReceiveResponse error");
        return Result::ReceiveFailed;
    }
    if (file.Close())
    {
        LOG_TRACE(L"CloseHandle successfully");
    }
    else
    {
        LOG_FAILED_CALL(L"CloseHandle fail");
    }
    if (const int result = GetResponse(request, response); result != Result::Ok)
    {
        return result;
    }
    LOG_DEBUG(L"CNetDiskHttpHelper::FileUpload Receive:[" << response << L"], size=" << response.size());
    return Result::Ok;
}

int CNetDiskHttpHelper::FileCreate(const wchar_t* fileName, std::uint32_t totalSize, const char* md5,
                                   std::string& response)
{
    response.clear();
    Request request;
    if (!OpenRequest(request, L"POST", L"file/upload"))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() HttpOpenRequest error");
        return Result::RequestOpenFailed;
    }

    const std::string boundary = BoundaryToken();
    NarrowText<65> name;
    name << fileName;
    const std::string body = Multipart::LargeFileForm(boundary, totalSize, md5, name.view());

    if (const int result = SetRequestHeader(request); result != Result::Ok)
    {
        return result;
    }
    if (!request.AddHeader(Multipart::FormContentType(boundary)))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() WinHttpAddRequestHeaders error");
        return Result::HeaderAddFailed;
    }
    if (!request.SendHead(body.size()))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() Error on WinHttpSendRequest");
        return Result::UploadSendFailed;
    }
    WriteBody(request, body);
    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() Error on HttpEndRequest");
        return Result::ReceiveFailed;
    }
    if (const int result = GetResponse(request, response); result != Result::Ok)
    {
        return result;
    }
    LOG_DEBUG(L"CNetDiskHttpHelper::FileCreate() Receive:[" << response << L"], size=" << response.size());
    return Result::Ok;
}

int CNetDiskHttpHelper::FileCreate(const wchar_t* fileKey, std::uint32_t position, std::span<const char> block,
                                   std::string& response)
{
    response.clear();
    Request request;
    if (!OpenRequest(request, L"POST", L"file/upload"))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() WinHttpOpenRequest error");
        return Result::RequestOpenFailed;
    }

    const std::string boundary = BoundaryToken();
    NarrowText<33> key;
    key << fileKey;
    const auto size = static_cast<std::uint32_t>(block.size());
    const std::string head = Multipart::BlockHead(boundary, key.view(), position, size);
    const std::string tail = Multipart::Tail(boundary);

    if (const int result = SetRequestHeader(request); result != Result::Ok)
    {
        return result;
    }
    if (!request.AddHeader(Multipart::FormContentType(boundary)))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() WinHttpAddRequestHeaders error");
        return Result::HeaderAddFailed;
    }
    if (!request.SendHead(std::uint64_t{head.size()} + size + tail.size()))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() Error on WinHttpSendRequest");
        return Result::UploadSendFailed;
    }
    WriteBody(request, head);
    WriteBody(request, {block.data(), block.size()});
    WriteBody(request, tail);
    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() Error on WinHttpReceiveResponse");
        return Result::ReceiveFailed;
    }
    if (const int result = GetResponse(request, response); result != Result::Ok)
    {
        return result;
    }
    LOG_DEBUG(L"CNetDiskHttpHelper::FileCreate() Receive:[" << response << L"], size=" << response.size());
    return Result::Ok;
}

int CNetDiskHttpHelper::FileDownload(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                                     std::uint32_t& statusCode)
{
    statusCode = 0;
    Request request;
    if (!OpenRequest(request, L"GET", objectPath))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileDownload() WinHttpOpenRequest error");
        return Result::RequestOpenFailed;
    }
    if (const int result = SetRequestHeader(request); result != Result::Ok)
    {
        return result;
    }
    if (request.Send())
    {
        LOG_DEBUG(L"CNetDiskHttpHelper::FileDownload() WinHttpSendRequest pass");
    }
    else
    {
        // Receiving fails next and ends the request.
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileDownload() WinHttpSendRequest error");
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileDownload() WinHttpReceiveResponse error");
        return Result::ReceiveFailed;
    }
    ResponseAttributes attributes;
    if (const int result = GetResponseAttribute(request, attributes); result != Result::Ok)
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
    return DownloadToFile(request, isNameUsable && !path.IsCut() ? path.c_str() : nullptr, attributes.encoding);
}

int CNetDiskHttpHelper::GetFileInfo(const wchar_t* objectPath, std::uint32_t& totalSize, std::wstring& fileName,
                                    std::wstring& secondValue)
{
    Request request;
    if (!OpenRequest(request, L"GET", objectPath))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::GetFileInfo() WinHttpOpenRequest error");
        return Result::RequestOpenFailed;
    }
    if (const int result = SetRequestHeader(request); result != Result::Ok)
    {
        return result;
    }
    if (!request.AddHeader(L"Range: bytes=0-0\r\n"))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::GetFileInfo WinHttpAddRequestHeaders error");
        return Result::RangeHeaderAddFailed;
    }
    if (request.Send())
    {
        LOG_TRACE(L"CNetDiskHttpHelper::GetFileInfo HttpSendRequest pass");
    }
    else
    {
        // Receiving fails next and ends the request.
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::GetFileInfo WinHttpSendRequest error");
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() Error on WinHttpReceiveResponse");
        return Result::ReceiveFailed;
    }
    std::uint32_t statusCode = 0;
    if (!request.QueryNumber(Header::StatusCode, statusCode))
    {
        LOG_FAILED_CALL(L"CHttpHelper::GetFileInfo() HttpQueryInfo(HTTP_QUERY_STATUS_CODE) error");
        return Result::StatusUnreadable;
    }
    if (!IsSuccess(statusCode))
    {
        LOG_ERROR(L"CNetDiskHttpHelper::GetFileInfo() HTTP response fail:dwStatusCode=" << statusCode);
        return static_cast<int>(statusCode);
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
    if (!OpenRequest(request, L"GET", objectPath))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::BufferDownload() WinHttpOpenRequest error");
        return Result::RequestOpenFailed;
    }
    if (const int result = SetRequestHeader(request); result != Result::Ok)
    {
        return result;
    }
    WideText<100> range;
    range << L"Range: bytes=" << start << L"-" << start + transferSize - 1;
    if (!request.AddHeader(range.view()))
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::BufferDownload() WinHttpAddRequestHeaders error");
        return Result::RangeHeaderAddFailed;
    }
    if (!request.Send())
    {
        // Receiving fails next and ends the request.
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::BufferDownload() WinHttpSendRequest error");
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(L"CNetDiskHttpHelper::FileCreate() Error on WinHttpReceiveResponse");
        return Result::ReceiveFailed;
    }
    std::string response;
    if (const int result = GetResponse(request, response); result != Result::Ok)
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
