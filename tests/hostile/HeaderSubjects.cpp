// Content-Disposition and Content-Range of every odd shape: what a server calls a file must never lead out of the
// caller's folder, nor out of the caller's room.

#include "hostile/Subjects.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace hostile
{
namespace
{

std::string withName(std::string_view name)
{
    return "attachment;filename=\"" + std::string(name) + ";md5=0";
}

bool isDevice(std::string_view name)
{
    std::string stem(name.substr(0, name.find('.')));
    stem.erase(stem.find_last_not_of(' ') + 1);
    std::ranges::transform(stem, stem.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const char* const device : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"})
    {
        if (stem == device)
            return true;
    }
    return stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) && stem[3] >= '0' && stem[3] <= '9';
}

/// What a download ends with under a name that the server gives: a name that leads elsewhere is refused, and of the
/// others the system decides which ones a file may have.
std::vector<int> resultOfName(std::string_view name)
{
    static constexpr int refused = -120;

    const bool leadsElsewhere = name.find_first_not_of(". ") == std::string_view::npos ||
                                name.find_first_of("\\/:") != std::string_view::npos || isDevice(name);
    return leadsElsewhere ? std::vector<int>{refused} : std::vector<int>{0, refused};
}

const std::vector<std::string>& oddNames()
{
    static const std::vector<std::string> all{
        "..\\escaped.txt",
        "../escaped.txt",
        "..\\..\\escaped.txt",
        "a\\..\\..\\escaped.txt",
        "in\\escaped.txt",
        "./escaped.txt",
        ".\\escaped.txt",
        "\\escaped.txt",
        "/escaped.txt",
        "\\\\127.0.0.1\\share\\escaped.txt",
        "//127.0.0.1/share/escaped.txt",
        "C:\\escaped.txt",
        "C:escaped.txt",
        "Z:\\tmp\\escaped.txt",
        "c:",
        "C:\\",
        "\\\\?\\C:\\escaped.txt",
        "\\\\.\\C:",
        "\\\\.\\pipe\\escaped",
        "\\??\\C:\\escaped.txt",
        "d.txt:stream",
        "d.txt::$DATA",
        ":stream",
        "a:b",
        ".",
        "..",
        "...",
        ". .",
        " ",
        "  ",
        ".. ",
        " ..",
        "NUL",
        "nul",
        "Nul.txt",
        "CON",
        "con.txt",
        "PRN",
        "AUX",
        "COM1",
        "com1.txt",
        "COM0",
        "COM9.a.b",
        "LPT1",
        "lpt9.txt",
        "CONIN$",
        "CONOUT$",
        "nul ",
        "nul .txt",
        "NUL.",
        "com1 ",
        "COM10",
        "COMA",
        "NULL",
        "CONSOLE",
        "CLOCK$",
        "d.txt.",
        "d.txt ",
        "d.txt. . .",
        " d.txt",
        ".d",
        "d",
        "a*b",
        "a?b",
        "a<b>c",
        "a|b",
        "a\"b\"",
        "\"\"",
        "a%2fb",
        "a%5cb",
        "%2e%2e%5cx",
        "a\tb",
        "a\x01"
        "b",
        "a\x7f"
        "b",
        "\xC3\xA4.txt",
        "\xE4.txt",
        "\xC0\xAE\xC0\xAE\xC0\xAF"
        "x",
        "\xE2\x80\xAE"
        "txt.exe",
        "\xEF\xBC\x8F"
        "x",
        "\xEF\xBC\xBC"
        "x",
        "\xE2\x88\x95"
        "x",
        "\xFF\xFE",
        "\xED\xA0\x80",
        "~1.txt",
        "desktop.ini",
        std::string(100, 'a'),
        std::string(255, 'a'),
        std::string(256, 'a'),
        std::string(323, 'a'),
        std::string(450, 'a'),
        std::string(200, '.') + "a",
    };
    return all;
}

std::vector<Attack> names()
{
    std::vector<Attack> all;
    for (const std::string& name : oddNames())
    {
        const std::string line = "Content-Disposition: " + withName(name) + "\r\n";
        const std::string shown = name.substr(0, 40);
        all.push_back({"named " + shown, &operation("CNetDisk.FileDownloadNamed"), reply(answer("hello", line)),
                       resultOfName(name)});
        // A host that asks for the name alone gets it as it is, cut to its room.
        for (const char* const info : {"CNetDisk.LargeFileGetInfo", "CFileStorage.LargeFileGetInfo"})
        {
            all.push_back(
                {"told " + shown, &operation(info), reply(answer("h", "Content-Range: bytes 0-0/5\r\n" + line)), {0}});
        }
        // A host that names the file itself is not led astray.
        all.push_back({"overruled " + shown, &operation("CNetDisk.FileDownload"), reply(answer("hello", line)), {0}});
    }
    return all;
}

std::vector<std::string> oddDispositions()
{
    std::vector<std::string> all{
        "attachment",
        "attachment;",
        "attachment;filename",
        "attachment;filename=",
        "attachment;filename=\"",
        "attachment;filename=\"\"",
        "attachment;filename=\";",
        "attachment;filename=\";;",
        "attachment;filename=\";;;",
        "attachment;filename=\"d",
        "attachment;filename=\"d;",
        "attachment;filename=\"d;;",
        "attachment;filename=\"d;;;",
        "attachment;filename=\"d;md5=",
        "attachment;filename=\"d;md5=;",
        "attachment;filename=\"d;md5=;;",
        "attachment;filename=\"d;md5=0;a",
        "attachment;filename=\"d;md5=0;a=",
        "attachment;filename=\"d;md5=0;=",
        "attachment;filename=\"d;md5=0;a=b;c",
        "attachment;filename=\"d;md5=0;a=b;",
        "attachment; filename=\"d\"",
        "attachment; filename=d.txt",
        "inline;filename=\"d.txt\"",
        "filename=\"d.txt\"",
        "d.txt",
        "\"",
        "\"\"",
        "=",
        ";",
        ";;;;;;;;;;;;;;;;;;;;;;;;;;;;;;",
        "\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"",
        "a",
        "====================================",
        "attachment;filename*=UTF-8''d.txt",
        "\xFF\xFF\xFF",
        "attachment;filename=\"d;" + std::string(100, 'a'),
        "attachment;filename=\"d;md5=" + std::string(450, 'a'),
        "attachment;filename=\"d;md5=0;" + std::string(200, 'b') + "=" + std::string(200, 'c'),
    };
    // Everything that is shorter than what stands before a name.
    const std::string whole = withName("d.txt") + ";sha1=1";
    for (std::size_t size = 0; size <= whole.size(); ++size)
        all.push_back(whole.substr(0, size));
    return all;
}

std::vector<Attack> dispositions()
{
    std::vector<Attack> all;
    for (const std::string& value : oddDispositions())
    {
        const std::string line = "Content-Disposition: " + value + "\r\n";
        all.push_back({"disposition " + value,
                       &operation("CNetDisk.FileDownloadNamed"),
                       reply(answer("hello", line)),
                       {0, -120, -134}});
        for (const char* const info : {"CNetDisk.LargeFileGetInfo", "CFileStorage.LargeFileGetInfo"})
        {
            all.push_back({"disposition " + value,
                           &operation(info),
                           reply(answer("h", "Content-Range: bytes 0-0/5\r\n" + line)),
                           {0, -112}});
        }
    }
    // Longer than any room for a header.
    for (const std::size_t size : {std::size_t{512}, std::size_t{1024}, std::size_t{8000}, std::size_t{65536}})
    {
        const std::string line = "Content-Disposition: " + withName(std::string(size, 'a')) + "\r\n";
        const std::string shown = "a name of " + std::to_string(size) + " bytes";
        all.push_back({shown, &operation("CNetDisk.FileDownloadNamed"), reply(answer("hello", line)), {-134, -111}});
        all.push_back({shown,
                       &operation("CNetDisk.LargeFileGetInfo"),
                       reply(answer("h", "Content-Range: bytes 0-0/5\r\n" + line)),
                       {-112, -111}});
        all.push_back({shown,
                       &operation("CFileStorage.LargeFileGetInfo"),
                       reply(answer("h", "Content-Range: bytes 0-0/5\r\n" + line)),
                       {-112, -114}});
    }
    return all;
}

std::vector<Attack> ranges()
{
    const std::vector<std::string> values{
        "",
        " ",
        "*",
        "*/*",
        "bytes",
        "bytes ",
        "bytes */5",
        "bytes */*",
        "bytes 0-0/*",
        "bytes 0-0/",
        "bytes 0-0",
        "bytes 0-0/-1",
        "bytes 0-0/+5",
        "bytes 0-0/ 5",
        "bytes 0-0/0x10",
        "bytes 0-0/5.5",
        "bytes 0-0/1e9",
        "bytes 0-0/4294967295",
        "bytes 0-0/4294967296",
        "bytes 0-0/9223372036854775808",
        "bytes 0-0/18446744073709551616",
        "bytes 0-0/99999999999999999999999999999999",
        "bytes 5-0/5",
        "bytes -1-0/5",
        "bytes --/5",
        "bytes 0-99999999999999999999/5",
        "bytes 00-00/5",
        "bytes=0-0/5",
        "items 0-0/5",
        "BYTES 0-0/5",
        "0-0/5",
        "/5",
        "5",
        "-",
        "bytes 0-0/5, bytes 1-1/5",
        "bytes\t0-0/5",
        "\xFF\xFF",
        "bytes 0-0/x",
        "bytes 0-0/5;a=b",
        std::string(300, '9'),
        "bytes 0-0/" + std::string(450, '9'),
        std::string(450, '-'),
    };
    const std::string disposition = "Content-Disposition: " + withName("d.txt") + "\r\n";

    std::vector<Attack> all;
    for (const char* const name : {"CNetDisk.LargeFileGetInfo", "CFileStorage.LargeFileGetInfo"})
    {
        for (const std::string& value : values)
        {
            const std::string line = "Content-Range: " + value + "\r\n";
            // Without a value some systems have no such header.
            const std::vector<int> expected =
                value.find_first_not_of(' ') == std::string::npos ? std::vector<int>{0, -112} : std::vector<int>{0};
            all.push_back({"range " + value.substr(0, 40), &operation(name),
                           reply(answer("h", line + disposition, "206 Partial Content")), expected});
        }
        all.push_back({"no range", &operation(name), reply(answer("h", disposition, "206 Partial Content")), {-112}});
        all.push_back({"a range of 1 KiB",
                       &operation(name),
                       reply(answer("h", "Content-Range: " + std::string(1024, '9') + "\r\n" + disposition)),
                       {-112}});
        all.push_back(
            {"no disposition", &operation(name), reply(answer("h", "Content-Range: bytes 0-0/5\r\n")), {-112}});
    }
    // A range is taken as it comes; more than was asked for never reaches the caller.
    for (const char* const name :
         {"CNetDisk.LargeFileDownload", "CNetDisk.LargePcodeDown", "CFileStorage.LargeFileDownload",
          "CFileStorage2.LargeFileDownload", "CFileStorage3.Bufferdownload"})
    {
        const Operation& each = operation(name);
        for (const std::string& value : values)
        {
            all.push_back({"range " + value.substr(0, 40),
                           &each,
                           reply(answer("hello", "Content-Range: " + value + "\r\n")),
                           {each.success}});
        }
        for (const std::size_t size : {0U, 1U, 4U, 6U, 64U, 4096U, 4097U, 1000000U})
        {
            const std::vector<int> expected{size > 5 && each.overSessionService() ? -11 : each.success};
            all.push_back(
                {"a body of " + std::to_string(size), &each, reply(answer(std::string(size, 'z'))), expected});
            all.push_back({"an unannounced body of " + std::to_string(size), &each, reply(bare(std::string(size, 'z'))),
                           expected});
        }
    }
    return all;
}

} // namespace

std::vector<Subject> headerSubjects()
{
    return {{"FileNames", names}, {"Dispositions", dispositions}, {"Ranges", ranges}};
}

} // namespace hostile
