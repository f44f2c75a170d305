// What the module hands to the system: arguments that do not show on the wire.

#include "support/ImportTable.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"
#include "wire/Compression.h"

#include <winhttp.h>

#include <quorvex/quorvex.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using quorvex::CFileStorage;
using quorvex::COnlineUserSearch;
using quorvex::netdisk::CNetDisk;

/// The arguments of WinHttpSendRequest.
struct Sent
{
    std::optional<std::wstring> headers;
    DWORD headersLength = 0;
    std::optional<std::string> body; ///< the optional data
    DWORD bodyLength = 0;
    DWORD totalLength = 0;
    DWORD_PTR context = 0;

    bool operator==(const Sent&) const = default;
};

/// The arguments of CreateFileW that say how.
struct OpenedFile
{
    DWORD access = 0;
    DWORD share = 0;
    DWORD creation = 0;
    DWORD attributes = 0;

    bool operator==(const OpenedFile&) const = default;
};

struct TextRequest
{
    DWORD flags = 0;
    bool hasSource = false;
    DWORD language = 0;
    bool hasArguments = false;

    bool operator==(const TextRequest&) const = default;
};

struct Recorded
{
    std::wstring userAgent;
    DWORD accessType = 0xFFFFFFFF;
    bool hasProxy = true;
    bool hasBypassList = true;
    DWORD sessionFlags = 0xFFFFFFFF;
    DWORD crackFlags = 0;
    std::vector<DWORD> crackRooms;
    std::vector<std::wstring> verbs;
    std::vector<std::wstring> objects;
    std::vector<std::wstring> versions;
    std::vector<bool> referrers; ///< whether there was one
    std::vector<DWORD> requestFlags;
    std::vector<std::wstring> acceptTypes;
    std::vector<std::wstring> headers;
    std::vector<DWORD> headerModes;
    std::vector<Sent> sent;
    std::vector<DWORD> bodyWrites; ///< sizes given to WinHttpWriteData
    std::vector<DWORD> bodyReads;  ///< rooms given to WinHttpReadData
    std::vector<DWORD> fileReads;  ///< rooms given to ReadFile
    std::vector<DWORD> fileWrites; ///< sizes given to WriteFile
    std::vector<OpenedFile> openedFiles;
    std::vector<TextRequest> textRequests;

    // What the module is told instead of the truth.
    std::optional<DWORD> fileSize;
    std::optional<DWORD> contentLength;
};

Recorded recorded;

template <typename Function>
Function original(const support::ImportPatch& patch)
{
    return reinterpret_cast<Function>(patch.original());
}

/// The system's functions with a recorder before each.
class Recorder
{
public:
    Recorder() : m_table(GetModuleHandleW(L"quorvex.dll"))
    {
        recorded = {};
        s_self = this;
    }

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

private:
    static HINTERNET WINAPI open(LPCWSTR agent, DWORD accessType, LPCWSTR proxy, LPCWSTR bypass, DWORD flags)
    {
        recorded.userAgent = agent;
        recorded.accessType = accessType;
        recorded.hasProxy = proxy != nullptr;
        recorded.hasBypassList = bypass != nullptr;
        recorded.sessionFlags = flags;
        return original<decltype(&WinHttpOpen)>(s_self->m_open)(agent, accessType, proxy, bypass, flags);
    }

    static BOOL WINAPI crackUrl(LPCWSTR url, DWORD length, DWORD flags, LPURL_COMPONENTS parts)
    {
        recorded.crackFlags = flags;
        recorded.crackRooms = {parts->dwHostNameLength, parts->dwUrlPathLength, parts->dwExtraInfoLength};
        return original<decltype(&WinHttpCrackUrl)>(s_self->m_crackUrl)(url, length, flags, parts);
    }

    static HINTERNET WINAPI openRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR object, LPCWSTR version,
                                        LPCWSTR referrer, LPCWSTR* acceptTypes, DWORD flags)
    {
        recorded.verbs.emplace_back(verb);
        recorded.objects.emplace_back(object);
        recorded.versions.emplace_back(version);
        recorded.referrers.push_back(referrer != nullptr);
        recorded.requestFlags.push_back(flags);
        recorded.acceptTypes.clear();
        for (LPCWSTR* type = acceptTypes; *type != nullptr; ++type)
            recorded.acceptTypes.emplace_back(*type);
        return original<decltype(&WinHttpOpenRequest)>(s_self->m_openRequest)(connection, verb, object, version,
                                                                              referrer, acceptTypes, flags);
    }

    static BOOL WINAPI addHeaders(HINTERNET request, LPCWSTR header, DWORD length, DWORD mode)
    {
        recorded.headers.emplace_back(header, length);
        recorded.headerModes.push_back(mode);
        return original<decltype(&WinHttpAddRequestHeaders)>(s_self->m_addHeaders)(request, header, length, mode);
    }

    static BOOL WINAPI send(HINTERNET request, LPCWSTR headers, DWORD headersLength, LPVOID optional,
                            DWORD optionalLength, DWORD totalLength, DWORD_PTR context)
    {
        Sent& sent = recorded.sent.emplace_back();
        if (headers != nullptr)
            sent.headers = headers;
        sent.headersLength = headersLength;
        if (optional != nullptr)
            sent.body.emplace(static_cast<const char*>(optional), optionalLength);
        sent.bodyLength = optionalLength;
        sent.totalLength = totalLength;
        sent.context = context;
        return original<decltype(&WinHttpSendRequest)>(s_self->m_send)(request, headers, headersLength, optional,
                                                                       optionalLength, totalLength, context);
    }

    static BOOL WINAPI writeBody(HINTERNET request, LPCVOID data, DWORD size, LPDWORD written)
    {
        recorded.bodyWrites.push_back(size);
        return original<decltype(&WinHttpWriteData)>(s_self->m_writeBody)(request, data, size, written);
    }

    static BOOL WINAPI readBody(HINTERNET request, LPVOID buffer, DWORD room, LPDWORD read)
    {
        recorded.bodyReads.push_back(room);
        return original<decltype(&WinHttpReadData)>(s_self->m_readBody)(request, buffer, room, read);
    }

    static BOOL WINAPI queryHeaders(HINTERNET request, DWORD info, LPCWSTR name, LPVOID buffer, LPDWORD size,
                                    LPDWORD index)
    {
        if (recorded.contentLength && info == (WINHTTP_QUERY_CONTENT_LENGTH | WINHTTP_QUERY_FLAG_NUMBER))
        {
            *static_cast<DWORD*>(buffer) = *recorded.contentLength;
            return TRUE;
        }
        return original<decltype(&WinHttpQueryHeaders)>(s_self->m_queryHeaders)(request, info, name, buffer, size,
                                                                                index);
    }

    static HANDLE WINAPI openFile(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                  DWORD creation, DWORD attributes, HANDLE pattern)
    {
        recorded.openedFiles.push_back({access, share, creation, attributes});
        return original<decltype(&CreateFileW)>(s_self->m_openFile)(path, access, share, security, creation, attributes,
                                                                    pattern);
    }

    static DWORD WINAPI fileSize(HANDLE file, LPDWORD high)
    {
        const DWORD low = original<decltype(&GetFileSize)>(s_self->m_fileSize)(file, high);
        return recorded.fileSize.value_or(low);
    }

    static BOOL WINAPI readFile(HANDLE file, LPVOID buffer, DWORD room, LPDWORD read, LPOVERLAPPED overlapped)
    {
        recorded.fileReads.push_back(room);
        return original<decltype(&ReadFile)>(s_self->m_readFile)(file, buffer, room, read, overlapped);
    }

    static BOOL WINAPI writeFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
    {
        recorded.fileWrites.push_back(size);
        return original<decltype(&WriteFile)>(s_self->m_writeFile)(file, data, size, written, overlapped);
    }

    static DWORD WINAPI formatMessage(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer,
                                      DWORD size, va_list* arguments)
    {
        recorded.textRequests.push_back({flags, source != nullptr, language, arguments != nullptr});
        return original<decltype(&FormatMessageW)>(s_self->m_formatMessage)(flags, source, code, language, buffer, size,
                                                                            arguments);
    }

    template <typename Function>
    static void* address(Function function)
    {
        return reinterpret_cast<void*>(function);
    }

    static inline Recorder* s_self = nullptr;

    support::ImportTable m_table;
    support::ImportPatch m_open{m_table.entry("WinHttpOpen"), address(&open)};
    support::ImportPatch m_crackUrl{m_table.entry("WinHttpCrackUrl"), address(&crackUrl)};
    support::ImportPatch m_openRequest{m_table.entry("WinHttpOpenRequest"), address(&openRequest)};
    support::ImportPatch m_addHeaders{m_table.entry("WinHttpAddRequestHeaders"), address(&addHeaders)};
    support::ImportPatch m_send{m_table.entry("WinHttpSendRequest"), address(&send)};
    support::ImportPatch m_writeBody{m_table.entry("WinHttpWriteData"), address(&writeBody)};
    support::ImportPatch m_readBody{m_table.entry("WinHttpReadData"), address(&readBody)};
    support::ImportPatch m_queryHeaders{m_table.entry("WinHttpQueryHeaders"), address(&queryHeaders)};
    support::ImportPatch m_openFile{m_table.entry("CreateFileW"), address(&openFile)};
    support::ImportPatch m_fileSize{m_table.entry("GetFileSize"), address(&fileSize)};
    support::ImportPatch m_readFile{m_table.entry("ReadFile"), address(&readFile)};
    support::ImportPatch m_writeFile{m_table.entry("WriteFile"), address(&writeFile)};
    support::ImportPatch m_formatMessage{m_table.entry("FormatMessageW"), address(&formatMessage)};
};

class SystemCallArguments : public testing::Test
{
protected:
    std::wstring url(const wchar_t* scheme = L"http://") const
    {
        return scheme + (L"127.0.0.1:" + std::to_wstring(m_server.port())) + L"/api";
    }

    /// @param lines further ones of the head, each with its line end
    void answer(const std::string& body, const std::string& lines = "")
    {
        support::Exchange exchange;
        exchange.pieces = {"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Range: bytes 0-0/5\r\n"
                           "Content-Disposition: attachment;filename=\"a;md5=0\r\n" +
                           lines + "\r\n" + body};
        m_server.play({exchange});
    }

    void answerCompressed(const std::string& body)
    {
        answer(wire::compress(body, wire::Encoding::Gzip), "Content-Encoding: gzip\r\n");
    }

    const wchar_t* folder() const { return m_folder.path().c_str(); }

    /// @return the name of a file with that content
    const wchar_t* file(const std::string& content) const
    {
        support::writeFile(m_folder.path() / "a.txt", content);
        return L"a.txt";
    }

    Recorder m_recorder;
    support::ScriptedServer m_server;

private:
    support::TempFolder m_folder;
};

const std::vector<std::wstring> standardHeaders{
    L"Accept-Language: zh-cn", L"Accept-Encoding: gzip, deflate", L"Pragma: no-cache", L"Cache-Control: no-cache",
    L"Connection: close",
};

std::vector<std::wstring> withStandardHeaders(const std::wstring& own)
{
    std::vector<std::wstring> all = standardHeaders;
    all.push_back(own);
    return all;
}

TEST_F(SystemCallArguments, OfTheSession)
{
    const CNetDisk disk(url().c_str());
    EXPECT_EQ(recorded.userAgent, L"Mozilla/4.0 (compatible; MSIE 7.0; Windows NT 5.1; Trident/4.0)");
    EXPECT_EQ(recorded.accessType, 0u);
    EXPECT_FALSE(recorded.hasProxy);
    EXPECT_FALSE(recorded.hasBypassList);
    EXPECT_EQ(recorded.sessionFlags, 0u);
    EXPECT_EQ(recorded.crackFlags, 0x10000000u);
    EXPECT_EQ(recorded.crackRooms, (std::vector<DWORD>{64, 256, 256}));
}

TEST_F(SystemCallArguments, OfAGet)
{
    answer("{}");
    CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.UserLogout(), 0);
    EXPECT_EQ(recorded.verbs, std::vector<std::wstring>{L"GET"});
    EXPECT_EQ(recorded.objects, std::vector<std::wstring>{L"api/passport/logout"});
    EXPECT_EQ(recorded.versions, std::vector<std::wstring>{L"HTTP/1.1"});
    EXPECT_EQ(recorded.referrers, std::vector<bool>{false});
    EXPECT_EQ(recorded.sent, std::vector<Sent>{Sent{}});
    EXPECT_EQ(recorded.requestFlags, std::vector<DWORD>{0});
    EXPECT_EQ(recorded.headers, standardHeaders);
    EXPECT_EQ(recorded.headerModes, std::vector<DWORD>(5, 0x20000000));
    const std::vector<std::wstring> acceptTypes{L"image/bmp",
                                                L"image/gif",
                                                L"image/jpeg",
                                                L"image/pjpeg",
                                                L"image/pjpeg",
                                                L"application/x-shockwave-flash",
                                                L"application/vnd.ms-powerpoint",
                                                L"Lapplication/vnd.ms-excel",
                                                L"application/msword",
                                                L"application/x-ms-application",
                                                L"application/x-ms-xbap",
                                                L"application/vnd.ms-xpsdocument",
                                                L"application/xaml+xml",
                                                L"*/*"};
    EXPECT_EQ(recorded.acceptTypes, acceptTypes);
}

TEST_F(SystemCallArguments, OfAnHttpsAddressHaveNoFlagsEither)
{
    answer("{}");
    CNetDisk disk(url(L"https://").c_str());
    EXPECT_EQ(disk.UserLogout(), 0);
    EXPECT_EQ(recorded.requestFlags, std::vector<DWORD>{0});
}

TEST_F(SystemCallArguments, OfAPost)
{
    answer("{}");
    const CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.FileDelete(L"K"), 0);
    EXPECT_EQ(recorded.verbs, std::vector<std::wstring>{L"POST"});
    EXPECT_EQ(recorded.headers, withStandardHeaders(L"Content-Type: application/x-www-form-urlencoded"));
    EXPECT_EQ(recorded.headerModes, std::vector<DWORD>(6, 0x20000000));
    EXPECT_EQ(recorded.sent, std::vector<Sent>{(Sent{{}, 0, "{\"fkey\":\"K\"}", 12, 12, 0})});
    EXPECT_TRUE(recorded.bodyWrites.empty());
}

TEST_F(SystemCallArguments, OfAProbe)
{
    answer("h");
    const CNetDisk disk(url().c_str());
    unsigned long size = 0;
    EXPECT_EQ(disk.LargeFileGetInfo(L"K", nullptr, 0, size, nullptr), 0);
    EXPECT_EQ(recorded.headers, withStandardHeaders(L"Range: bytes=0-0\r\n"));
}

TEST_F(SystemCallArguments, OfARange)
{
    answer("hello");
    const CNetDisk disk(url().c_str());
    char buffer[5];
    unsigned long size = 5;
    EXPECT_EQ(disk.LargeFileDownload(L"K", 10, buffer, size), 0);
    EXPECT_EQ(recorded.headers, withStandardHeaders(L"Range: bytes=10-14"));
}

constexpr const char* diskUploaded = "{\"fkey\":\"K\",\"fsize\":5,\"cflag\":1}";
constexpr const char* storageDone = "{\"result\":200,\"fkey\":\"K\",\"fsize\":5,\"errorinfo\":\"\"}";

bool isFormHeader(const std::wstring& header, std::wstring_view start)
{
    return header.starts_with(start) && header.ends_with(L"\r\n") && header.size() == start.size() + 40 + 2;
}

TEST_F(SystemCallArguments, OfAnUploadHaveNoBlanks)
{
    answer(diskUploaded);
    const CNetDisk disk(url().c_str());
    wchar_t key[40];
    EXPECT_EQ(disk.FileUpload(folder(), file("hello"), key, 20), 0);
    ASSERT_EQ(recorded.headers.size(), 6u);
    EXPECT_TRUE(isFormHeader(recorded.headers.back(), L"Content-Type:multipart/form-data;boundary="));
}

TEST_F(SystemCallArguments, OfABlockHaveOneBlank)
{
    answer("{\"fkey\":\"K\",\"fsize\":5}");
    const CNetDisk disk(url().c_str());
    char data[] = "hello";
    EXPECT_EQ(disk.LargeFileUpload(L"K", data, 5, 0), 0);
    ASSERT_EQ(recorded.headers.size(), 6u);
    EXPECT_TRUE(isFormHeader(recorded.headers.back(), L"Content-Type:multipart/form-data; boundary="));
}

TEST_F(SystemCallArguments, OfTheStoragesProbe)
{
    answer("h");
    const CFileStorage storage(url().c_str(), nullptr);
    unsigned long size = 0;
    EXPECT_EQ(storage.LargeFileGetInfo(L"7", L"K", nullptr, 0, size, nullptr, nullptr), 0);
    EXPECT_EQ(recorded.headers, withStandardHeaders(L"Range: bytes=0-0\r\n"));
    EXPECT_EQ(recorded.sent, std::vector<Sent>{Sent{}});
}

TEST_F(SystemCallArguments, OfTheStoragesRange)
{
    answer("hello");
    const CFileStorage storage(url().c_str(), nullptr);
    char buffer[5];
    unsigned long size = 5;
    EXPECT_EQ(storage.LargeFileDownload(L"7", L"K", 10, buffer, size), 0);
    EXPECT_EQ(recorded.headers, withStandardHeaders(L"Range: bytes=10-14"));
    EXPECT_EQ(recorded.sent, std::vector<Sent>{Sent{}});
}

TEST_F(SystemCallArguments, OfTheStoragesUploadHaveOneBlank)
{
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    EXPECT_EQ(storage.UserPhotoUpload(folder(), file("hello"), L"n"), 0);
    ASSERT_EQ(recorded.headers.size(), 6u);
    EXPECT_TRUE(isFormHeader(recorded.headers.back(), L"Content-Type:multipart/form-data; boundary="));
}

TEST_F(SystemCallArguments, OfTheStoragesBlockHaveOneBlank)
{
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    char data[] = "hello";
    EXPECT_EQ(storage.LargeFileUpload(L"K", data, 5, 0), 0);
    ASSERT_EQ(recorded.headers.size(), 6u);
    EXPECT_TRUE(isFormHeader(recorded.headers.back(), L"Content-Type:multipart/form-data; boundary="));
    EXPECT_EQ(recorded.headerModes, std::vector<DWORD>(6, 0x20000000));
}

/// The line end, two hyphens, the boundary, two hyphens and a line end.
constexpr DWORD formTail = 48;

/// A form is announced by its length alone, and then written.
void expectWritten(std::vector<DWORD> last)
{
    EXPECT_EQ(recorded.sent.size(), 1u);
    for (const Sent& sent : recorded.sent)
        EXPECT_EQ(sent, (Sent{{}, 0, {}, 0, std::reduce(recorded.bodyWrites.begin(), recorded.bodyWrites.end()), 0}));
    last.push_back(formTail);
    ASSERT_GT(recorded.bodyWrites.size(), last.size());
    EXPECT_TRUE(std::equal(last.rbegin(), last.rend(), recorded.bodyWrites.rbegin()));
}

TEST_F(SystemCallArguments, OfAnUploadWriteTheFileInChunks)
{
    answer(diskUploaded);
    const CNetDisk disk(url().c_str());
    wchar_t key[40];
    EXPECT_EQ(disk.FileUpload(folder(), file(support::patternBytes(131082)), key, 20), 0);
    expectWritten({65536, 65536, 10});
}

TEST_F(SystemCallArguments, OfTheStoragesUploadReadWhatIsLeft)
{
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    EXPECT_EQ(storage.UserPhotoUpload(folder(), file(support::patternBytes(131082)), L"n"), 0);
    expectWritten({65536, 65536, 10});
    EXPECT_EQ(recorded.fileReads, (std::vector<DWORD>{65536, 65536, 10}));
}

TEST_F(SystemCallArguments, OfALargeFilesCreationAreOneWrite)
{
    answer(diskUploaded);
    const CNetDisk disk(url().c_str());
    wchar_t key[40];
    int complete = 0;
    EXPECT_EQ(disk.LargeFileCreate(folder(), file("hello"), key, 20, complete), 0);
    ASSERT_EQ(recorded.bodyWrites.size(), 1u);
    EXPECT_EQ(recorded.sent, std::vector<Sent>{(Sent{{}, 0, {}, 0, recorded.bodyWrites.front(), 0})});
}

TEST_F(SystemCallArguments, OfABlockAreThreeWrites)
{
    answer("{\"fkey\":\"K\",\"fsize\":5}");
    const CNetDisk disk(url().c_str());
    char data[] = "hello";
    EXPECT_EQ(disk.LargeFileUpload(L"K", data, 5, 0), 0);
    EXPECT_EQ(recorded.bodyWrites.size(), 3u);
    expectWritten({5});
}

TEST_F(SystemCallArguments, OfTheStoragesBlockAnnounceItsLength)
{
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    char data[] = "hello";
    EXPECT_EQ(storage.LargeFileUpload(L"K", data, 5, 0), 0);
    expectWritten({5});
}

void expectEach(const std::vector<DWORD>& rooms, DWORD room)
{
    EXPECT_FALSE(rooms.empty());
    EXPECT_EQ(rooms, std::vector<DWORD>(rooms.size(), room));
}

TEST_F(SystemCallArguments, OfReadingAnAnswer)
{
    answer("{}");
    CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.UserLogout(), 0);
    expectEach(recorded.bodyReads, 4096);
}

TEST_F(SystemCallArguments, OfReadingACompressedAnswer)
{
    answerCompressed("{}");
    CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.UserLogout(), 0);
    expectEach(recorded.bodyReads, 4096);
}

TEST_F(SystemCallArguments, OfReadingTheStoragesAnswer)
{
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    EXPECT_EQ(storage.LargeFileRemove(L"K"), 0);
    expectEach(recorded.bodyReads, 4096);
}

TEST_F(SystemCallArguments, OfReadingTheStoragesCompressedAnswer)
{
    answerCompressed(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    EXPECT_EQ(storage.LargeFileRemove(L"K"), 0);
    expectEach(recorded.bodyReads, 4096);
}

TEST_F(SystemCallArguments, OfReadingTheSearchsAnswer)
{
    answer(storageDone);
    COnlineUserSearch search(url().c_str());
    EXPECT_EQ(search.UserReportStatus("im", 1), 0);
    expectEach(recorded.bodyReads, 4096);
}

TEST_F(SystemCallArguments, OfReadingTheSearchsCompressedAnswer)
{
    answerCompressed(storageDone);
    COnlineUserSearch search(url().c_str());
    EXPECT_EQ(search.UserReportStatus("im", 1), 0);
    expectEach(recorded.bodyReads, 4096);
}

TEST_F(SystemCallArguments, OfADownload)
{
    answer("hello");
    const CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.FileDownload(L"K", folder(), L"d.txt"), 0);
    expectEach(recorded.bodyReads, 65536);
    const OpenedFile expected{GENERIC_READ | GENERIC_WRITE, 0, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL};
    EXPECT_EQ(recorded.openedFiles, std::vector<OpenedFile>{expected});
}

TEST_F(SystemCallArguments, OfACompressedDownload)
{
    answerCompressed(std::string(10000, 'x'));
    const CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.FileDownload(L"K", folder(), L"d.txt"), 0);
    expectEach(recorded.bodyReads, 4096);
    EXPECT_EQ(recorded.fileWrites, (std::vector<DWORD>{4096, 4096, 1808}));
}

TEST_F(SystemCallArguments, OfTheStoragesDownload)
{
    answer("hello");
    const CFileStorage storage(url().c_str(), nullptr);
    EXPECT_EQ(storage.UserPhotoDownload(folder(), L"K", L"d.txt"), 0);
    expectEach(recorded.bodyReads, 65536);
}

TEST_F(SystemCallArguments, OfAnUploadsFile)
{
    answer(diskUploaded);
    const CNetDisk disk(url().c_str());
    wchar_t key[40];
    EXPECT_EQ(disk.FileUpload(folder(), file("hello"), key, 20), 0);
    const OpenedFile expected{GENERIC_READ, 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL};
    EXPECT_EQ(recorded.openedFiles, std::vector<OpenedFile>{expected});
}

TEST_F(SystemCallArguments, OfTheStoragesUploadsFile)
{
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    EXPECT_EQ(storage.UserPhotoUpload(folder(), file("hello"), L"n"), 0);
    const OpenedFile expected{GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL};
    EXPECT_EQ(recorded.openedFiles, std::vector<OpenedFile>{expected});
}

const OpenedFile digestedFile{GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS};

TEST_F(SystemCallArguments, OfADigestedFile)
{
    const CNetDisk disk(url().c_str());
    unsigned long size = 0;
    wchar_t md5[33];
    EXPECT_EQ(disk.FileGetChecksum(folder(), file("hello"), size, md5), 0);
    EXPECT_EQ(recorded.openedFiles, std::vector<OpenedFile>{digestedFile});
}

TEST_F(SystemCallArguments, OfTheStoragesDigestedFile)
{
    const CFileStorage storage(url().c_str(), nullptr);
    unsigned long size = 0;
    wchar_t md5[33];
    wchar_t sha1[41];
    EXPECT_EQ(storage.FileGetChecksum(folder(), file("hello"), size, md5, sha1), 0);
    EXPECT_EQ(recorded.openedFiles, std::vector<OpenedFile>{digestedFile});
}

TEST_F(SystemCallArguments, OfAStreamedDigest)
{
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    wchar_t key[40];
    EXPECT_EQ(storage.LargeFileCreate(folder(), file(std::string(1048576 + 5, 'x')), key, 40), 0);
    expectEach(recorded.fileReads, 1048576);
}

TEST_F(SystemCallArguments, OfAnErrorsText)
{
    const CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.FileUpload(folder(), L"missing", nullptr, 0), -120);
    EXPECT_EQ(recorded.textRequests, std::vector<TextRequest>{(TextRequest{0x1300, false, 0, false})});
}

TEST_F(SystemCallArguments, AFileThatOthersWriteIsUploadedByTheStorageOnly)
{
    const std::wstring path = folder() + (L"\\" + std::wstring(file("hello")));
    const HANDLE writer = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(writer, INVALID_HANDLE_VALUE);
    answer(storageDone);
    const CFileStorage storage(url().c_str(), nullptr);
    EXPECT_EQ(storage.UserPhotoUpload(folder(), L"a.txt", L"n"), 0);
    const CNetDisk disk(url().c_str());
    wchar_t key[40];
    EXPECT_EQ(disk.FileUpload(folder(), L"a.txt", key, 20), -120);
    CloseHandle(writer);
}

TEST_F(SystemCallArguments, AFileThatEndsEarlierThanAnnouncedEndsItsUpload)
{
    const support::LogCapture log(8);
    answer(diskUploaded);
    recorded.fileSize = 10;
    const CNetDisk disk(url().c_str());
    wchar_t key[40];
    EXPECT_EQ(disk.FileUpload(folder(), file("hello"), key, 20), -120);
    ASSERT_EQ(log.messages("ERROR").size(), 1u);
    EXPECT_TRUE(log.messages("ERROR").front().starts_with("GetLastError()=38 : "));
}

TEST_F(SystemCallArguments, AnnouncedLengthsAreLoggedAsSignedNumbers)
{
    const support::LogCapture log(8);
    answer("{}");
    recorded.contentLength = 3000000000;
    CNetDisk disk(url().c_str());
    EXPECT_EQ(disk.UserLogout(), 1);
    ASSERT_FALSE(log.messages("ERROR").empty());
    EXPECT_EQ(log.messages("ERROR").front(), "result not expect, dwContentLength=-1294967296, strResponse.size()=2");
}

TEST_F(SystemCallArguments, ACutPathNeverNamesAnotherFileToUpload)
{
    const std::size_t rest = 259 - std::wstring_view(folder()).size() - 1;
    const std::wstring name(rest, L'x');
    support::writeFile(std::wstring(folder()) + L"\\" + name, "hello");
    const CNetDisk disk(url().c_str());
    const CFileStorage storage(url().c_str(), nullptr);
    wchar_t key[40];
    EXPECT_EQ(disk.FileUpload(folder(), (name + L"y").c_str(), key, 20), -120);
    EXPECT_EQ(storage.UserPhotoUpload(folder(), (name + L"y").c_str(), L"n"), -120);
    EXPECT_TRUE(recorded.openedFiles.empty());
    answer(diskUploaded);
    EXPECT_EQ(disk.FileUpload(folder(), name.c_str(), key, 20), 0);
}

/// How often the system's text of an error is fetched and its buffer released in one failed operation.
void expectTextIsReleased(unsigned levels, std::size_t lines)
{
    const support::LogCapture log(levels);
    support::SystemCalls calls;
    const CNetDisk disk(L"http://127.0.0.1:1/");
    calls.fail("WinHttpOpenRequest", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(disk.FileDelete(L"K"), -108);
    EXPECT_EQ(calls.calls("FormatMessageW"), 1u);
    EXPECT_EQ(calls.calls("LocalFree"), 1u);
    EXPECT_EQ(log.lines().size(), lines);
}

TEST(ErrorText, IsReleasedWhenItHasBeenLogged)
{
    expectTextIsReleased(8, 2);
}

TEST(ErrorText, IsReleasedWhenTheLevelIsDisabled)
{
    expectTextIsReleased(0, 0);
}

TEST(LastErrorText, IsOneEmptyBufferOfAllObjectsOfAllClasses)
{
    const CNetDisk one;
    const CNetDisk other(L"http://127.0.0.1:1/", L"S");
    const wchar_t* const text = one.GetLastErrMsg();
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(other.GetLastErrMsg(), text);
    const quorvex::CFileStorage storage(nullptr, nullptr);
    EXPECT_EQ(storage.GetLastErrMsg(), text);
    const quorvex::COnlineUserSearch search(nullptr);
    EXPECT_EQ(search.GetLastErrMsg(), text);
    EXPECT_EQ(one.FileDelete(L"K"), -100);
    EXPECT_EQ(storage.EmoticonRemove(L"K"), -100);
    EXPECT_EQ(search.UserReportStatus("im", 1), -100);
    EXPECT_EQ(one.GetLastErrMsg(), text);
    EXPECT_EQ(*text, L'\0');
}

} // namespace
