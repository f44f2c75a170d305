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

int ReadBody(Request& request, std::string& body, std::size_t longest)
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
        if (read > longest - body.size())
        {
            LOG_ERROR(L"GetResponse() InternetReadFile gives too long a response, limit=" << longest);
            // Nobody reads on in it, and nobody logs it.
            body.clear();
            return Result::TransferFailed;
        }
        body.append(chunk.data(), read);
    } while (read != 0);
    return Result::Ok;
}

} // namespace

int GetResponseAttribute(const Request& request, ResponseAttributes& attributes)
{
    if (const int result =
            QueryStatusCode(request, attributes.statusCode, L"HttpQueryInfo(HTTP_QUERY_STATUS_CODE) error");
        result != Result::Ok)
    {
        return result;
    }
    request.QueryNumber(Header::ContentLength, attributes.contentLength);
    return QueryContentEncoding(request, attributes.encoding,
                                L"HttpQueryInfo(HTTP_QUERY_CONTENT_ENCODING) not expected result in (gzip,deflate)");
}

int QueryStatusCode(const Request& request, std::uint32_t& statusCode, const wchar_t* failure)
{
    if (request.QueryNumber(Header::StatusCode, statusCode))
    {
        return Result::Ok;
    }
    LOG_FAILED_CALL(failure);
    return Result::StatusUnreadable;
}

int QueryContentEncoding(const Request& request, std::uint32_t& encoding, const wchar_t* failure)
{
    if (FindContentEncoding(request, encoding))
    {
        return Result::Ok;
    }
    LOG_ERROR(failure);
    return Result::ContentEncodingInvalid;
}

bool FindContentEncoding(const Request& request, std::uint32_t& encoding)
{
    std::array<wchar_t, 32> value = {};
    if (!request.QueryText(Header::ContentEncoding, value))
    {
        // A value that cannot be had, too long a one for example, is there all the same: who knows what the body is?
        return Platform::LastError() == Platform::kHeaderNotFound;
    }
    const std::wstring_view name = value.data();
    encoding = name == L"gzip" ? kEncodingGzip : name == L"deflate" ? kEncodingDeflate : 0;
    return encoding != 0;
}

bool IsGoodStatus(std::uint32_t statusCode)
{
    return statusCode == 200 || statusCode == 206;
}

int RefusedStatus(std::uint32_t statusCode)
{
    return statusCode != 0 ? static_cast<int>(statusCode) : Result::BadAnswer;
}

int ReadResponseBody(Request& request, const ResponseAttributes& attributes, std::string& response,
                     std::size_t& receivedSize, std::size_t longest)
{
    if (!attributes.IsCompressed())
    {
        const int result = ReadBody(request, response, longest);
        receivedSize = response.size();
        return result;
    }
    std::string data;
    const int result = ReadBody(request, data, longest);
    receivedSize = data.size();
    return result == Result::Ok ? InflateToString(response, data, attributes.encoding, longest) : result;
}

int ReadGoodResponse(Request& request, const ResponseAttributes& attributes, std::string& response, std::size_t longest)
{
    if (!IsGoodStatus(attributes.statusCode))
    {
        LOG_ERROR(L"GetResponse() HTTP response fail:dwStatusCode=" << attributes.statusCode);
        return RefusedStatus(attributes.statusCode);
    }
    std::size_t receivedSize = 0;
    if (const int result = ReadResponseBody(request, attributes, response, receivedSize, longest); result != Result::Ok)
    {
        return result;
    }
    LOG_TRACE(L"GetResponse() Receive:[strData.size()=" << receivedSize << L", strResponse.size()=" << response.size()
                                                        << response);
    return CheckContentLength(attributes, response);
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
