// Lengths that lie, chunks that are none, and heads without an end.

#include "hostile/Subjects.h"

#include <ferrolink/http_session.h>

#include <initializer_list>
#include <iterator>

namespace hostile
{
namespace
{

/// One for each way through the transport on which a body's length matters.
const std::vector<const Operation*>& readers()
{
    static const std::vector<const Operation*> all{
        &operation("CNetDisk.CapacityInfo"),          &operation("CNetDisk.FileDownload"),
        &operation("CNetDisk.LargeFileDownload"),     &operation("CNetDisk.LargeFileUpload"),
        &operation("CFileStorage.UserPhotoUpload"),   &operation("CFileStorage.UserPhotoDownload"),
        &operation("CFileStorage.LargeFileDownload"), &operation("CFileStorage2.PictureDownload"),
        &operation("CFileStorage3.Bufferdownload"),   &operation("COnlineUserSearch.QueryCountByConditionString"),
    };
    return all;
}

std::string withLines(const Operation& operation, const std::string& lines, const std::string& body)
{
    return bare(body, operation.headers() + lines);
}

std::vector<Attack> contentLengths()
{
    static const char* const lengths[] = {
        "0",
        "1",
        "4",
        "6",
        "100000",
        "-1",
        "-5",
        "+5",
        "2147483647",
        "2147483648",
        "4294967295",
        "4294967296",
        "4294967301",
        "9223372036854775807",
        "9223372036854775808",
        "18446744073709551615",
        "18446744073709551616",
        "18446744073709551621",
        "99999999999999999999999999999999999999",
        "",
        " ",
        "x",
        "5x",
        "0x5",
        "5 5",
        "5,5",
        "5, 6",
        "5.0",
        "1e1",
        "\xB2",
        "5\r\nContent-Length: 6",
        "6\r\nContent-Length: 5",
        "5\r\nTransfer-Encoding: chunked",
        "5\r\nTransfer-Encoding: identity",
    };
    std::vector<Attack> all;
    for (const Operation* each : readers())
    {
        for (const char* const length : lengths)
        {
            all.push_back({std::string("length ") + length, each,
                           reply(withLines(*each, std::string("Content-Length: ") + length + "\r\n", each->body))});
        }
        // Longer than what is there: never a success where the length is compared.
        for (const std::size_t more : {std::size_t{1}, std::size_t{1000}, std::size_t{2147483000}})
        {
            const std::string length = std::to_string(each->body.size() + more);
            all.push_back({"longer by " + std::to_string(more), each,
                           reply(withLines(*each, "Content-Length: " + length + "\r\n", each->body)),
                           each->cutShort()});
        }
    }
    return all;
}

std::vector<Attack> chunks()
{
    struct Body
    {
        const char* name;
        const char* bytes;
    };
    static const Body bodies[] = {
        {"no last chunk", "5\r\nhello\r\n"},
        {"no line end behind a chunk", "5\r\nhello0\r\n\r\n"},
        {"only line feeds", "5\nhello\n0\n\n"},
        {"negative", "-5\r\nhello\r\n0\r\n\r\n"},
        {"signed", "+5\r\nhello\r\n0\r\n\r\n"},
        {"prefixed", "0x5\r\nhello\r\n0\r\n\r\n"},
        {"extension", "5;a=\"b;c\"\r\nhello\r\n0\r\n\r\n"},
        {"blank before", " 5\r\nhello\r\n0\r\n\r\n"},
        {"blank behind", "5 \r\nhello\r\n0\r\n\r\n"},
        {"no size", "\r\nhello\r\n0\r\n\r\n"},
        {"no hexadecimal", "zz\r\nhello\r\n0\r\n\r\n"},
        {"2^31", "80000000\r\nhello\r\n0\r\n\r\n"},
        {"2^32-1", "ffffffff\r\nhello\r\n0\r\n\r\n"},
        {"2^32+5", "100000005\r\nhello\r\n0\r\n\r\n"},
        {"2^63", "8000000000000000\r\nhello\r\n0\r\n\r\n"},
        {"2^64-1", "ffffffffffffffff\r\nhello\r\n0\r\n\r\n"},
        {"2^64+5", "10000000000000005\r\nhello\r\n0\r\n\r\n"},
        {"many zeros", "0000000000000000000000000000000000000000000005\r\nhello\r\n0\r\n\r\n"},
        {"longer than its size", "3\r\nhello\r\n0\r\n\r\n"},
        {"shorter than its size", "6\r\nhello\r\n0\r\n\r\n"},
        {"nothing", ""},
        {"last chunk first", "0\r\n\r\n5\r\nhello\r\n0\r\n\r\n"},
        {"trailers", "5\r\nhello\r\n0\r\nA: b\r\nContent-Length: 999\r\n\r\n"},
        {"garbage behind", "5\r\nhello\r\n0\r\n\r\nHTTP/1.1 403 Forbidden\r\n\r\n"},
        {"no chunks at all", "hello"},
    };
    std::vector<Attack> all;
    for (const Operation* each : readers())
    {
        for (const Body& body : bodies)
        {
            all.push_back({std::string("chunks, ") + body.name, each,
                           reply(withLines(*each, "Transfer-Encoding: chunked\r\n", body.bytes))});
        }
        // A size line that goes on and on.
        Reply endless = reply(withLines(*each, "Transfer-Encoding: chunked\r\n", ""));
        endless.pieces.push_back({std::string(65536, '0'), 64});
        all.push_back({"a chunk's size of 4 MiB", each, endless});
        for (const char* const coding : {"gzip", "Chunked", "chunked, chunked", "gzip, chunked", "", "x"})
        {
            all.push_back({std::string("transfer encoding ") + coding, each,
                           reply(withLines(*each, std::string("Transfer-Encoding: ") + coding + "\r\n", each->body))});
        }
    }
    return all;
}

/// One client of each transport.
const std::vector<const Operation*>& transports()
{
    static const std::vector<const Operation*> all{
        &operation("CNetDisk.CapacityInfo"), &operation("CNetDisk.FileDownload"),
        &operation("CFileStorage.LargeFileGetInfo"), &operation("CFileStorage2.PictureDownload"),
        &operation("COnlineUserSearch.UserReportStatus")};
    return all;
}

/// The server sends so much and no more; how much of it a system takes in is its own affair.
std::vector<Attack> endlessHeads()
{
    static const std::string start = "HTTP/1.1 200 OK\r\nConnection: close\r\n";

    const auto repeated = [](std::string first, std::string bytes, std::size_t times, std::string last) {
        return Reply{.pieces = {{std::move(first)}, {std::move(bytes), times}, {std::move(last)}}};
    };
    std::vector<Attack> all;
    for (const Operation* each : transports())
    {
        const std::string rest =
            each->headers() + "Content-Length: " + std::to_string(each->body.size()) + "\r\n\r\n" + each->body;
        const auto attack = [&](const char* name, const Reply& sent) {
            all.push_back({name, each, sent, {}, 16 * MiB, 8, 8});
        };
        attack("300 headers", repeated(start, "X-A: b\r\n", 300, rest));
        attack("300 headers of one name and 1 KiB",
               repeated(start, "X-A: " + std::string(1024, 'b') + "\r\n", 300, rest));
        attack("3000 headers", repeated(start, "X-A: b\r\n", 3000, rest));
        attack("a header of 8 KiB", reply(start + "X-A: " + std::string(8192, 'b') + "\r\n" + rest));
        attack("a header of 64 KiB", reply(start + "X-A: " + std::string(65536, 'b') + "\r\n" + rest));
        attack("a header of 4 MiB", repeated(start + "X-A: ", std::string(65536, 'b'), 64, "\r\n" + rest));
        attack("a header's name of 64 KiB", reply(start + std::string(65536, 'X') + ": b\r\n" + rest));
        attack("16 MiB of a header", repeated(start + "X-A: ", std::string(65536, 'b'), 256, ""));
        attack("a status line of 4 MiB", repeated("HTTP/1.1 200 ", std::string(65536, 'O'), 64, "\r\n" + rest));
        attack("4 MiB of blank lines", repeated("", std::string(32768, '\n'), 128, start + rest));
        attack("4 MiB without a line end", repeated("", std::string(65536, 'H'), 64, ""));
        attack("4 MiB of zero bytes", repeated("", std::string(65536, '\0'), 64, ""));
        attack("folded lines", repeated(start + "X-A: b\r\n", " folded\r\n", 300, rest));
        attack("no colon", reply(start + "X-A\r\n: b\r\n:\r\n" + rest));
        attack("zero bytes in a header", reply(start + std::string("X-A: a\0b\r\n\0: c\r\n", 17) + rest));
        attack("bare carriage returns", reply(start + "X-A: a\rb\rContent-Length: 1\r\r\n" + rest));
        attack("only line feeds", reply("HTTP/1.1 200 OK\nConnection: close\n\n" + each->body));
        for (const std::size_t times : {1U, 10U, 200U})
            attack(times == 1    ? "a continue"
                   : times == 10 ? "ten continues"
                                 : "200 continues",
                   repeated("", "HTTP/1.1 100 Continue\r\n\r\n", times, start + rest));
        attack("continues without an answer", repeated("", "HTTP/1.1 100 Continue\r\n\r\n", 50, ""));
    }
    return all;
}

/// Bodies that are held in memory go on to the bound, downloads into files as long as there is something.
std::vector<Attack> endlessBodies()
{
    static constexpr std::size_t bound = 64 * MiB;
    static constexpr std::size_t block = 65536;
    static constexpr std::size_t mostMemory = 4 * bound; // a text that grows is there twice

    std::vector<Attack> all;
    const auto attack = [&](const char* name, const std::string& headers, int expected, std::size_t memory) {
        Reply sent = reply(bare("", headers));
        sent.pieces.push_back({std::string(block, '['), bound / block + 16});
        all.push_back({"65 MiB", &operation(name), sent, {expected}, memory, 8, 8});
    };
    attack("CNetDisk.CapacityInfo", "", -107, mostMemory);
    attack("CFileStorage.LargeFileDownload", "", -107, mostMemory);
    attack("COnlineUserSearch.QueryByCondition", "", -107, mostMemory);
    attack("CFileStorage2.LargeFileDownload", "", FRL_HTTP_FAILED, MiB);
    attack("CFileStorage3.PictureDownload", "", FRL_HTTP_FAILED, MiB);
    attack("CNetDisk.FileDownload", "", 0, MiB);
    attack("CFileStorage.PictureDownload", "", 0, MiB);
    return all;
}

} // namespace

std::vector<Subject> lengthSubjects()
{
    return {{"ContentLengths", contentLengths},
            {"Chunks", chunks},
            {"EndlessHeads", endlessHeads},
            {"EndlessBodies", endlessBodies}};
}

} // namespace hostile
