#include "SearchUserOLHttpHelper.h"

#include "../CommonUtil.h"
#include "../Platform/LastError.h"
#include "../ResponseBody.h"

#include <quorvex/Results.h>

#include <array>
#include <string_view>

namespace quorvex
{

using Platform::Header;
using Platform::Request;

int CSearchUserOLHttpHelper::GetResponse(Request& request, std::string& response)
{
    response.clear();
    ResponseAttributes attributes;
    if (const int result = GetResponseAttribute(request, attributes); result != Result::Ok)
    {
        return result;
    }
    return ReadGoodResponse(request, attributes, response);
}

int CSearchUserOLHttpHelper::GetResponseAttribute(const Request& request, ResponseAttributes& attributes)
{
    if (const int result = QueryStatusCode(request, attributes.statusCode,
                                           L"GetResponseAttribute() HttpQueryInfo(HTTP_QUERY_STATUS_CODE) error");
        result != Result::Ok)
    {
        return result;
    }
    request.QueryNumber(Header::ContentLength, attributes.contentLength);

    // The header may be missing; too long a value is there all the same, and it is another one.
    std::array<wchar_t, 32> value = {};
    const bool isThere = request.QueryText(Header::TransferEncoding, value);
    if (isThere ? std::wstring_view(value.data()) != L"chunked"
                : Platform::LastError() == Platform::kInsufficientBuffer)
    {
        LOG_ERROR(
            L"GetResponseAttribute() HttpQueryInfo(HTTP_QUERY_TRANSFER_ENCODING) not expected result in (chunked)");
        return Result::TransferEncodingInvalid;
    }
    return QueryContentEncoding(
        request, attributes.encoding,
        L"GetResponseAttribute() HttpQueryInfo(HTTP_QUERY_CONTENT_ENCODING) not expected result in (gzip,deflate)");
}

} // namespace quorvex
