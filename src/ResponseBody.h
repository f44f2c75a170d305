#pragma once

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

/// @return 0, -130 or -132
int GetResponseAttribute(const Platform::Request& request, ResponseAttributes& attributes);

/// Reads the whole body and inflates it when it is compressed.
/// @param response the body is appended to it
/// @return 0, -107, or a zlib code
int ReadResponseBody(Platform::Request& request, const ResponseAttributes& attributes, std::string& response);

/// Compares a body's size, after inflating, with its announced length.
/// @return 0 when they agree or no length was announced, otherwise 1
int CheckContentLength(const ResponseAttributes& attributes, const std::string& response);

} // namespace quorvex
