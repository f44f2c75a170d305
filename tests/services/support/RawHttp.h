#pragma once

#include <string>
#include <string_view>

namespace quorvex::services::test
{

// A connection on which a test says exactly what it wants to.
class RawConnection
{
public:
    explicit RawConnection(int port);
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;
    ~RawConnection();

    // False when the other side has gone.
    bool Send(std::string_view bytes) const;

    // Everything up to the other side's close.
    std::string ReceiveAll() const;

private:
    int socket_;
};

struct RawAnswer
{
    int status = 0;
    std::string headers;
    std::string body;

    // The value behind a header's name, empty without the header.
    std::string Header(std::string_view name) const;
};

RawAnswer ParseAnswer(const std::string& text);

RawAnswer Exchange(int port, std::string_view request);

// The body of an answer sent in chunks, put together.
std::string JoinChunks(std::string_view body);

} // namespace quorvex::services::test
