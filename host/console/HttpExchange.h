#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace quorvex::console
{

/// One HTTP request of the console's own, for what the module has no operation for.

/// A server's address in its parts.
struct HttpAddress
{
    std::wstring host;
    std::wstring path;
    unsigned short port = 0;
    bool isSecure = false;
};

/// @return nothing when the text is no address
std::optional<HttpAddress> SplitAddress(const std::string& url);

/// How far an exchange has come when it fails.
enum class HttpStage
{
    Address,
    Resolve,
    Connect,
    Answer
};

class HttpError : public std::runtime_error
{
public:
    HttpError(HttpStage stage, unsigned long systemError);

    HttpStage Stage() const { return m_stage; }

private:
    HttpStage m_stage;
};

struct HttpAnswer
{
    int status = 0;
    std::string body; ///< not much more than 64 KiB of it
};

/// @param body         JSON; sent with a POST when there is one, and otherwise it is a GET
/// @param milliseconds for each step; 0 leaves the system's own times
/// @throws HttpError
HttpAnswer Exchange(const std::string& url, const std::string& body, int milliseconds = 0);

} // namespace quorvex::console
