// Status lines of every kind, and answers that send the client elsewhere.

#include "hostile/Subjects.h"

#include <algorithm>

namespace hostile
{
namespace
{

/// What an answer with this status ends with.
std::vector<int> resultOfStatus(const Operation& operation, int status)
{
    const bool isOfDisk = operation.of == Operation::Class::NetDisk;
    // No status is none: it must not pass for success.
    const int refusal = status != 0 ? status : 1;
    if (operation.overSessionService())
    {
        // A picture in memory tells by its buffer whether it came.
        if (operation.name == "CFileStorage3.PictureDownload")
            return {0};
        if (operation.kind == Operation::Kind::Memory && status == 206)
            return {operation.success == 200 ? 206 : operation.success};
        return {refusal};
    }
    if (status == 200 || status == 206 || (status == 201 && isOfDisk))
        return {operation.success};
    if (operation.kind == Operation::Kind::File && isOfDisk)
        return {-134};
    if (operation.kind == Operation::Kind::HeadOnly && !isOfDisk)
        return {-112};
    return {refusal};
}

/// One for each way through the transport.
const std::vector<const Operation*>& transports()
{
    static const std::vector<const Operation*> all{
        &operation("CNetDisk.CapacityInfo"),          &operation("CNetDisk.FileDownload"),
        &operation("CNetDisk.LargeFileGetInfo"),      &operation("CFileStorage.UserPhotoUpload"),
        &operation("CFileStorage.LargeFileDownload"), &operation("CFileStorage2.PictureDownload"),
        &operation("CFileStorage3.BufferUpload"),     &operation("COnlineUserSearch.QueryByCondition"),
    };
    return all;
}

/// Every operation meets refusals; the login that follows a 403 is refused, too.
std::vector<Attack> refusals()
{
    std::vector<Attack> all;
    for (const Operation& each : operations())
    {
        // Large uploads are refused elsewhere, while they are being sent.
        if (each.name.ends_with("Large"))
            continue;
        for (const int status : {201, 206, 400, 403, 404, 409, 413, 416, 500, 503, 599})
        {
            std::vector<int> expected = resultOfStatus(each, status);
            // The login after it has a result of its own, which some operations end with.
            if (status == 403)
                expected.push_back(403);
            all.push_back({"status " + std::to_string(status), &each,
                           reply(answer(each.body, each.headers(), std::to_string(status) + " X")), expected});
        }
    }
    return all;
}

std::vector<Attack> statusLines()
{
    static const char* const lines[] = {
        "HTTP/1.1 1 X",
        "HTTP/1.1 20 X",
        "HTTP/1.1 99 X",
        "HTTP/1.1 199 X",
        "HTTP/1.1 204 X",
        "HTTP/1.1 205 X",
        "HTTP/1.1 226 X",
        "HTTP/1.1 304 X",
        "HTTP/1.1 600 X",
        "HTTP/1.1 999 X",
        "HTTP/1.1 1000 X",
        "HTTP/1.1 2000 X",
        "HTTP/1.1 99999 X",
        "HTTP/1.1 -200 X",
        "HTTP/1.1 4294967496 X",
        "HTTP/1.1 2147483648 X",
        "HTTP/1.1 99999999999999999999 X",
        "HTTP/1.1 x X",
        "HTTP/1.1",
        "HTTP/1.1 ",
        "HTTP/1.1 200",
        "HTTP/1.1  200 OK",
        "HTTP/1.1\t200\tOK",
        "HTTP/1.0 200 OK",
        "HTTP/0.9 200 OK",
        "HTTP/2.0 200 OK",
        "HTTP/9.9 200 OK",
        "HTTP/99999999999.1 200 OK",
        "HTTP/ 200 OK",
        "http/1.1 200 OK",
        "HTTPS/1.1 200 OK",
        "XTTP/1.1 200 OK",
        "ICY 200 OK",
        "200 OK",
        "",
        "<html>",
        "\xFF\xFE\xFD",
        "HTTP/1.1 200 \xC3\x28\x80",
        "HTTP/1.1 401 X",
        "HTTP/1.1 407 X",
        "HTTP/1.1 426 X",
        "HTTP/1.1 101 X",
        "HTTP/1.1 102 X",
        "HTTP/1.1 103 X",
    };
    std::vector<Attack> all;
    for (const Operation* each : representatives())
        all.push_back(
            {"status 0", each, reply(answer(each->body, each->headers(), "000 X")), resultOfStatus(*each, 0)});
    for (const Operation* each : transports())
    {
        for (const char* const line : lines)
        {
            all.push_back({line, each,
                           reply(std::string(line) + "\r\nConnection: close\r\n" + each->headers() +
                                 "Content-Length: " + std::to_string(each->body.size()) + "\r\n\r\n" + each->body)});
        }
        all.push_back({"text without a head", each, reply("hello")});
        all.push_back({"lines without a head", each, reply("a\r\nb: c\r\n\r\nhello")});
        for (const char* const scheme :
             {"Basic realm=\"r\"", "Basic", "Digest", "NTLM", "Negotiate", "NTLM AAAA", "Negotiate ====", "X", ""})
        {
            for (const char* const status : {"401 X", "407 X"})
            {
                const std::string name =
                    *status == '4' && status[2] == '1' ? "WWW-Authenticate: " : "Proxy-Authenticate: ";
                all.push_back({name + scheme, each, reply(answer(each->body, name + scheme + "\r\n", status))});
            }
        }
    }
    return all;
}

/// Where a redirection leads is the system's affair; it ends somewhere.
std::vector<Attack> redirections()
{
    static const char* const places[] = {
        "/api/capacity/info",
        "",
        "?",
        "//",
        "http://",
        "http:///",
        "http://127.0.0.1:0/",
        "ftp://127.0.0.1/",
        "file:///c:/windows/win.ini",
        "x",
        "../../..",
        "\\\\127.0.0.1\\x",
        "javascript:1",
        "http://[::1",
        "http://127.0.0.1:99999/",
        "\xC3\x28",
        "%00",
        "a b",
        "mailto:a",
    };
    static constexpr std::size_t mostRedirections = 60; // some follow ten, for each of the requests and logins

    std::vector<Attack> all;
    for (const Operation* each : transports())
    {
        const auto attack = [&](const std::string& name, const std::string& place, const char* status) {
            all.push_back({name + " with " + status,
                           each,
                           reply(answer(each->body, "Location: " + place + "\r\n", status)),
                           {},
                           16 * MiB,
                           mostRedirections,
                           support::AllLevels,
                           place.find("//") != std::string::npos});
        };
        for (const char* const place : places)
            attack(std::string("redirected to ") + place, place, "302 Found");
        for (const char* const status : {"300 X", "301 X", "303 X", "305 X", "306 X", "307 X", "308 X"})
            attack("redirected to itself", "/api/x", status);
        attack("redirected far", "/" + std::string(3000, 'x'), "302 Found");
        attack("redirected farther", "/" + std::string(65000, 'x'), "302 Found");
        all.push_back(
            {"redirected nowhere", each, reply(answer(each->body, "", "302 Found")), {}, 16 * MiB, mostRedirections});
    }
    return all;
}

} // namespace

std::vector<Subject> statusSubjects()
{
    return {{"Refusals", refusals}, {"StatusLines", statusLines}, {"Redirections", redirections}};
}

} // namespace hostile
