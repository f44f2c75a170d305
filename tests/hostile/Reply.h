#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace hostile
{

/// What the server does to one connection.
struct Reply
{
    enum class Ending
    {
        Close, ///< at once; the rest of the request is still taken in
        Reset,
        WholeRequestFirst ///< closed when the whole request is there
    };

    /// Some bytes, several times over.
    struct Piece
    {
        std::string bytes;
        std::size_t times = 1;
    };

    static constexpr std::size_t WholeRequest = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t RequestHead = WholeRequest - 1;

    std::vector<Piece> pieces{};
    std::size_t requestBytes = WholeRequest; ///< that are read before the reply
    Ending ending = Ending::Close;

    std::size_t size() const;

    /// Tells replies from one another.
    std::string identity() const;
};

Reply reply(std::string bytes);

/// A whole answer, its body's length announced.
std::string answer(std::string_view body, std::string_view headers = {}, std::string_view status = "200 OK");

/// An answer without any announcement: its body ends with the connection.
std::string bare(std::string_view body, std::string_view headers = {}, std::string_view status = "200 OK");

/// An answer in chunks of a few bytes.
std::string chunked(std::string_view body, std::string_view headers = {});

} // namespace hostile
