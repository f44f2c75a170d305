#pragma once

#include "ResponseLimit.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace quorvex
{

namespace Platform
{
class Request;
}

/// Reading a response whose head has been received: its attributes and its body.

struct ResponseAttributes
{
    std::uint32_t statusCode = 505;
    std::uint32_t contentLength = 0;
    /// kEncodingGzip, kEncodingDeflate, or 0 for a plain body.
    std::uint32_t encoding = 0;

    bool IsCompressed() const { return encoding != 0; }
};

/// Reads the three attributes. A length that is not announced stays 0.
/// @return 0, -130 or -132
int GetResponseAttribute(const Platform::Request& request, ResponseAttributes& attributes);

/// The steps of GetResponseAttribute, for a service whose failures have other words.
/// @param failure the line for a status that cannot be read
/// @return 0 or -130
int QueryStatusCode(const Platform::Request& request, std::uint32_t& statusCode, const wchar_t* failure);
/// @param failure the line for an encoding that cannot be undone
/// @return 0, also without the header; -132
int QueryContentEncoding(const Platform::Request& request, std::uint32_t& encoding, const wchar_t* failure);

/// Reads the whole body and inflates it when it is compressed.
/// @param response     the body is appended to it
/// @param receivedSize receives how many bytes came, before inflating
/// @param longest      bytes that the body may have, before and after inflating
/// @return 0; -107, also for a longer body, of which nothing is kept; or a zlib code
int ReadResponseBody(Platform::Request& request, const ResponseAttributes& attributes, std::string& response,
                     std::size_t& receivedSize, std::size_t longest = kLongestResponse);

/// The services other than the network disk know two good statuses.
bool IsGoodStatus(std::uint32_t statusCode);

/// @return the status of a refused request as its result; a status of 0 must not pass for success and becomes 1
int RefusedStatus(std::uint32_t statusCode);

/// @return whether the body's encoding is none, or one that can be undone
bool FindContentEncoding(const Platform::Request& request, std::uint32_t& encoding);

/// Reads the response of a service for which only 200 and 206 are good; of any other nothing but the status is read.
/// @param response the body is appended to it
/// @param longest  as for ReadResponseBody
/// @return 0, -107, a zlib code, the status of a refused request, or 1 for a body of another length than announced
int ReadGoodResponse(Platform::Request& request, const ResponseAttributes& attributes, std::string& response,
                     std::size_t longest = kLongestResponse);

/// Compares a body's size, after inflating, with its announced length.
/// @return 0 when they agree or no length was announced, otherwise 1
int CheckContentLength(const ResponseAttributes& attributes, const std::string& response);

} // namespace quorvex
