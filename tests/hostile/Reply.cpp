#include "hostile/Reply.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace hostile
{
namespace
{

std::string head(std::string_view status, std::string_view headers, std::string_view length)
{
    return std::string("HTTP/1.1 ")
        .append(status)
        .append("\r\nConnection: close\r\n")
        .append(headers)
        .append(length)
        .append("\r\n");
}

std::string hex(std::size_t number)
{
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, number, 16).ptr;
    return {digits, end};
}

} // namespace

std::size_t Reply::size() const
{
    std::size_t sum = 0;
    for (const Piece& piece : pieces)
        sum += piece.bytes.size() * piece.times;
    return sum;
}

std::string Reply::identity() const
{
    std::string text = std::to_string(requestBytes) + " " + std::to_string(static_cast<int>(ending));
    for (const Piece& piece : pieces)
        text += " " + std::to_string(piece.times) + "*" + std::to_string(piece.bytes.size()) + ":" + piece.bytes;
    return text;
}

Reply reply(std::string bytes)
{
    return {.pieces = {{std::move(bytes)}}};
}

std::string answer(std::string_view body, std::string_view headers, std::string_view status)
{
    return head(status, headers, "Content-Length: " + std::to_string(body.size()) + "\r\n").append(body);
}

std::string bare(std::string_view body, std::string_view headers, std::string_view status)
{
    return head(status, headers, {}).append(body);
}

std::string chunked(std::string_view body, std::string_view headers)
{
    static constexpr std::size_t most = 16;

    std::string text = head("200 OK", headers, "Transfer-Encoding: chunked\r\n");
    for (; !body.empty(); body.remove_prefix(std::min(body.size(), most)))
    {
        const std::string_view chunk = body.substr(0, most);
        text.append(hex(chunk.size())).append("\r\n").append(chunk).append("\r\n");
    }
    return text.append("0\r\n\r\n");
}

} // namespace hostile
