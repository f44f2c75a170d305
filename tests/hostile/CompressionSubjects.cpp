// Compressed bodies: cut, damaged, mislabelled, and small ones that inflate to much.

#include "hostile/Subjects.h"
#include "wire/Compression.h"

#include <string_view>

namespace hostile
{
namespace
{

using wire::Encoding;

/// One for each way on which a body is inflated.
const std::vector<const Operation*>& inflaters()
{
    static const std::vector<const Operation*> all{
        &operation("CNetDisk.CapacityInfo"),
        &operation("CNetDisk.FileDownload"),
        &operation("CNetDisk.LargeFileDownload"),
        &operation("CFileStorage.UserPhotoUpload"),
        &operation("CFileStorage.UserPhotoDownload"),
        &operation("CFileStorage.LargeFileDownload"),
        &operation("COnlineUserSearch.QueryByCondition"),
    };
    return all;
}

Reply labelled(const Operation& operation, std::string_view label, std::string_view body)
{
    return reply(bare(body, operation.headers() + "Content-Encoding: " + std::string(label) + "\r\n"));
}

constexpr int needsMore = -5;
constexpr int damaged = -3;

/// A body that ends early is one without its end: whether that matters shows when it is read.
std::vector<Attack> cutBodies()
{
    std::vector<Attack> all;
    for (const Operation* each : inflaters())
    {
        for (const bool isGzip : {true, false})
        {
            const std::string whole = wire::compress(each->body, isGzip ? Encoding::Gzip : Encoding::Zlib);
            for (std::size_t size = 0; size <= whole.size(); ++size)
            {
                std::vector<int> expected{each->success};
                if (size < whole.size())
                    expected.push_back(needsMore);
                if (size < whole.size() && each->kind == Operation::Kind::Json)
                    expected.push_back(1);
                all.push_back({(isGzip ? "gzip cut at " : "deflate cut at ") + std::to_string(size), each,
                               labelled(*each, isGzip ? "gzip" : "deflate", whole.substr(0, size)), expected});
            }
        }
    }
    return all;
}

std::vector<Attack> damagedBodies()
{
    std::vector<Attack> all;
    for (const Operation* each : inflaters())
    {
        for (const bool isGzip : {true, false})
        {
            const std::string whole = wire::compress(each->body, isGzip ? Encoding::Gzip : Encoding::Zlib);
            for (std::size_t at = 0; at < whole.size(); ++at)
            {
                std::string body = whole;
                body[at] = static_cast<char>(static_cast<unsigned char>(body[at]) ^ (1U << (at % 8)));
                // Another text may come of it, which is as good as what it says.
                const std::vector<int> expected = each->kind == Operation::Kind::Json
                                                      ? std::vector<int>{}
                                                      : std::vector<int>{each->success, damaged, needsMore};
                all.push_back({(isGzip ? "gzip damaged at " : "deflate damaged at ") + std::to_string(at), each,
                               labelled(*each, isGzip ? "gzip" : "deflate", body), expected});
            }
        }
    }
    return all;
}

std::vector<Attack> mislabelledBodies()
{
    std::vector<Attack> all;
    for (const Operation* each : inflaters())
    {
        const std::string gzip = wire::compress(each->body, Encoding::Gzip);
        const std::string zlib = wire::compress(each->body, Encoding::Zlib);
        const std::string raw = wire::compress(each->body, Encoding::RawDeflate);
        const auto attack = [&](const char* name, const char* label, const std::string& body,
                                std::vector<int> expected) {
            all.push_back({name, each, labelled(*each, label, body), std::move(expected)});
        };
        attack("gzip that is zlib", "gzip", zlib, {each->success});
        attack("gzip that is raw", "gzip", raw, {damaged});
        attack("gzip that is plain", "gzip", each->body, {damaged});
        attack("deflate that is gzip", "deflate", gzip, {damaged});
        attack("deflate that is raw", "deflate", raw, {damaged});
        attack("deflate that is plain", "deflate", each->body, {damaged});
        attack("plain that is gzip", "identity", gzip, {-132});
        for (const char* const label :
             {"GZIP", "x-gzip", "gzip, gzip", "gzip;q=1", "br", "zstd", "compress", "gzi", "deflate, gzip", "\xC3\x28"})
            attack(label, label, gzip, {-132});
        attack("an empty label", "", gzip, {});
        attack("a label of 1 KiB", std::string(1024, 'g').c_str(), gzip, {-132});
        attack("garbage behind gzip", "gzip", gzip + "garbage", {each->success});
        attack("garbage behind deflate", "deflate", zlib + std::string(10000, '\xFF'), {each->success});
        attack("gzip behind gzip", "gzip", gzip + gzip, {each->success});
        attack("gzip in gzip", "gzip", wire::compress(gzip, Encoding::Gzip),
               {each->kind == Operation::Kind::Json ? 1 : each->success});
        // What is compared is the length after inflating.
        all.push_back({"gzip with its own length",
                       each,
                       reply(answer(gzip, each->headers() + "Content-Encoding: gzip\r\n")),
                       {each->kind == Operation::Kind::File ? each->success : 1}});
    }
    // The session service does not inflate, so that there is nothing to unpack.
    for (const char* const name : {"CFileStorage2.PictureDownload", "CFileStorage3.PictureDownload"})
    {
        all.push_back({"gzip",
                       &operation(name),
                       labelled(operation(name), "gzip", wire::compress("hello", Encoding::Gzip)),
                       {0}});
    }
    return all;
}

std::string repeated(std::string_view text, std::size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    while (count-- != 0)
        all += text;
    return all;
}

std::vector<Attack> bombs()
{
    static const std::string gzip = wire::compress(std::string(100 * MiB, '\0'), Encoding::Gzip);
    static const std::string zlib = wire::compress(std::string(100 * MiB, '\0'), Encoding::Zlib);
    static const std::string nested = wire::compress(gzip, Encoding::Gzip);
    static const std::string json =
        wire::compress(std::string(R"({"result":403,"x":[)").append(70 * MiB, ' ').append("1]}"), Encoding::Gzip);
    static const std::string values =
        wire::compress(R"({"result":200,"files":[)" + repeated("0,", 30 * MiB) + "0]}", Encoding::Gzip);
    static constexpr std::size_t mostMemory = 256 * MiB; // a text of 64 MiB that grows is there twice
    static constexpr unsigned errorsOnly = 8;

    std::vector<Attack> all;
    for (const Operation* each : inflaters())
    {
        const bool isFile = each->kind == Operation::Kind::File;
        const std::vector<int> tooLong{isFile ? 0 : -107};
        const std::size_t memory = isFile ? MiB : mostMemory;
        const auto attack = [&](const char* name, const Reply& sent, const std::vector<int>& expected) {
            all.push_back({name, each, sent, expected, memory, 8, errorsOnly});
        };
        attack("100 MiB of zeros in gzip", labelled(*each, "gzip", gzip), tooLong);
        if (isFile)
            continue;
        attack("100 MiB of zeros in deflate", labelled(*each, "deflate", zlib), tooLong);
        attack("70 MiB of blanks in JSON", labelled(*each, "gzip", json), tooLong);
        if (each->kind == Operation::Kind::Json)
            attack("30 million values in JSON", labelled(*each, "gzip", values), {1});
        attack("a bomb in a bomb", labelled(*each, "gzip", nested),
               {each->kind == Operation::Kind::Json ? 1 : each->success});
        // Of what is refused, the body is looked at for the log only.
        Reply refusal = reply(bare(gzip, each->headers() + "Content-Encoding: gzip\r\n", "404 Not Found"));
        attack("a bomb in a refusal", refusal, {each->of == Operation::Class::NetDisk ? -107 : 404});
    }
    const Operation& download = operation("CFileStorage.UserPhotoDownload");
    all.push_back({"a bomb in a refusal",
                   &download,
                   reply(bare(gzip, "Content-Encoding: gzip\r\n", "404 Not Found")),
                   {404},
                   mostMemory,
                   8,
                   errorsOnly});
    return all;
}

} // namespace

std::vector<Subject> compressionSubjects()
{
    return {{"CompressedCut", cutBodies},
            {"CompressedDamaged", damagedBodies},
            {"CompressedMislabelled", mislabelledBodies},
            {"CompressedBombs", bombs}};
}

} // namespace hostile
