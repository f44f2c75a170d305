// The transfers that the services' helpers are made of.

#include "CommonUtil.h"
#include "HttpHelper.h"
#include "LocalFile.h"
#include "Multipart.h"
#include "RequestBody.h"
#include "ResponseBody.h"

#include <quorvex/Results.h>

namespace quorvex
{

int CHttpHelper::UploadFile(const wchar_t* objectPath, const UploadPath& path, std::string_view announcedName,
                            const UploadRules& rules, const FormMessages& messages, std::string& response)
{
    response.clear();
    Platform::Request request;
    if (const int result = OpenRequest(request, L"POST", objectPath, messages.openFailed); result != Result::Ok)
    {
        return result;
    }
    const std::string boundary = BoundaryToken();
    const std::string head = Multipart::UploadHead(boundary, announcedName);
    const std::string tail = Multipart::Tail(boundary);
    if (!request.AddHeader(rules.contentType(boundary)))
    {
        LOG_FAILED_CALL(messages.headerFailed);
        return Result::HeaderAddFailed;
    }

    Platform::File file;
    std::uint64_t fileSize = 0;
    if (!OpenUploadFile(file, path, rules.share))
    {
        return Result::LocalFileFailed;
    }
    LOG_DEBUG(rules.openedFile << path.c_str() << L" open successfully");
    if (!file.Size(fileSize))
    {
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    const auto dwFileSize = static_cast<std::uint32_t>(fileSize);
    LOG_DEBUG(L"dwFileSize=" << dwFileSize);

    if (!request.SendHead(std::uint64_t{head.size()} + dwFileSize + tail.size()))
    {
        LOG_FAILED_CALL(messages.sendFailed);
        return Result::UploadSendFailed;
    }
    WriteBody(request, head);
    if (!WriteFileBody(request, file, dwFileSize))
    {
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    WriteBody(request, tail);

    if (rules.closing == UploadRules::Closing::BeforeReceiving)
    {
        CloseLocalFile(file);
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(messages.receiveFailed);
        return Result::ReceiveFailed;
    }
    if (rules.closing == UploadRules::Closing::AfterReceiving)
    {
        CloseLocalFile(file);
    }
    return ReadAnswer(request, messages, response);
}

int CHttpHelper::PostForm(const wchar_t* objectPath, const std::string& boundary,
                          std::initializer_list<std::string_view> pieces, const FormMessages& messages,
                          std::string& response)
{
    response.clear();
    Platform::Request request;
    if (const int result = OpenRequest(request, L"POST", objectPath, messages.openFailed); result != Result::Ok)
    {
        return result;
    }
    if (!request.AddHeader(Multipart::FormContentType(boundary)))
    {
        LOG_FAILED_CALL(messages.headerFailed);
        return Result::HeaderAddFailed;
    }
    std::uint64_t length = 0;
    for (const std::string_view piece : pieces)
    {
        length += piece.size();
    }
    if (!request.SendHead(length))
    {
        LOG_FAILED_CALL(messages.sendFailed);
        return Result::UploadSendFailed;
    }
    for (const std::string_view piece : pieces)
    {
        WriteBody(request, piece);
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(messages.receiveFailed);
        return Result::ReceiveFailed;
    }
    return ReadAnswer(request, messages, response);
}

int CHttpHelper::GetDownload(Platform::Request& request, const wchar_t* objectPath, const DownloadMessages& messages,
                             ResponseAttributes& attributes)
{
    if (const int result = OpenRequest(request, L"GET", objectPath, messages.openFailed); result != Result::Ok)
    {
        return result;
    }
    if (request.Send())
    {
        LOG_DEBUG(messages.sent);
    }
    else
    {
        // Receiving fails next and ends the request.
        LOG_FAILED_CALL(messages.sendFailed);
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(messages.receiveFailed);
        return Result::ReceiveFailed;
    }
    return GetResponseAttribute(request, attributes);
}

int CHttpHelper::GetRange(Platform::Request& request, const wchar_t* objectPath, std::wstring_view rangeHeader,
                          const RangeMessages& messages, RangeFailures failures)
{
    if (const int result = OpenRequest(request, L"GET", objectPath, messages.openFailed); result != Result::Ok)
    {
        return result;
    }
    if (!request.AddHeader(rangeHeader))
    {
        LOG_FAILED_CALL(messages.headerFailed);
        return Result::RangeHeaderAddFailed;
    }
    if (!request.Send())
    {
        LOG_FAILED_CALL(messages.sendFailed);
        if (failures.send != Result::Ok)
        {
            return failures.send;
        }
    }
    else if (messages.sent != nullptr)
    {
        LOG_TRACE(messages.sent);
    }
    if (!request.Receive())
    {
        LOG_FAILED_CALL(messages.receiveFailed);
        return failures.receive;
    }
    return Result::Ok;
}

int CHttpHelper::ReadAnswer(Platform::Request& request, const FormMessages& messages, std::string& response)
{
    if (const int result = GetResponse(request, response); result != Result::Ok)
    {
        return result;
    }
    LOG_DEBUG(messages.received << response << L"], size=" << response.size());
    return Result::Ok;
}

} // namespace quorvex
