#include "ResponseBody.h"

#include "CommonUtil.h"
#include "Inflate.h"
#include "Platform/LastError.h"
#include "Platform/WinHttp.h"

#include <quorvex/Results.h>

#include <array>
#include <string_view>

namespace quorvex
{

using Platform::Header;
using Platform::Request;

namespace
{

/// @return whether the encoding is one that can be undone
bool QueryContentEncoding(const Request& request, std::uint32_t& encoding)
{
    std::array<wchar_t, 32> value = {};
    if (!request.QueryText(Header::ContentEncoding, value))
    {
        // Too long a value is there all the same, and it is none of the two.
        return Platform::LastError() != Platform::kInsufficientBuffer;
    }
    const std::wstring_view name = value.data();
    encoding = name == L"gzip" ? kEncodingGzip : name == L"deflate" ? kEncodingDeflate : 0;
    return encoding != 0;
}

int ReadBody(Request& request, std::string& body)
{
    std::array<char, 4096> chunk;
    std::uint32_t read = 0;
    do
    {
        if (!request.Read(chunk.data(), static_cast<std::uint32_t>(chunk.size()), read))
        {
            LOG_FAILED_CALL(L"GetResponse() InternetReadFile error");
            return Result::TransferFailed;
        }
        body.append(chunk.data(), read);
    } while (read != 0);
    return Result::Ok;
}

} // namespace

int GetResponseAttribute(const Request& request, ResponseAttributes& attributes)
{
    if (!request.QueryNumber(Header::StatusCode, attributes.statusCode))
    {
        LOG_FAILED_CALL(L"HttpQueryInfo(HTTP_QUERY_STATUS_CODE) error");
        return Result::StatusUnreadable;
    }
    // A response need not announce its length.
    request.QueryNumber(Header::ContentLength, attributes.contentLength);

    if (!QueryContentEncoding(request, attributes.encoding))
    {
        LOG_ERROR(L"HttpQueryInfo(HTTP_QUERY_CONTENT_ENCODING) not expected result in (gzip,deflate)");
        return Result::ContentEncodingInvalid;
    }
    return Result::Ok;
}

int ReadResponseBody(Request& request, const ResponseAttributes& attributes, std::string& response)
{
    if (!attributes.IsCompressed())
    {
        return ReadBody(request, response);
    }
    std::string data;
    if (const int result = ReadBody(request, data); result != Result::Ok)
    {
        return result;
    }
    const int result = InflateToString(response, data, attributes.encoding);
    LOG_TRACE(L"GetResponse() Receive:[strData.size()=" << data.size() << L", strResponse.size()=" << response.size()
                                                        << L"]");
    return result;
}

int CheckContentLength(const ResponseAttributes& attributes, const std::string& response)
{
    if (attributes.contentLength == 0 || response.size() == attributes.contentLength)
    {
        return Result::Ok;
    }
    LOG_ERROR(L"result not expect, dwContentLength=" << static_cast<int>(attributes.contentLength)
                                                     << L", strResponse.size()=" << static_cast<int>(response.size()));
    return Result::BadAnswer;
}

} // namespace quorvex
