// What the module hands to the system: arguments that do not show on the wire.

#include "support/ImportTable.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"

#include <winhttp.h>

#include <quorvex/quorvex.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace
{

using quorvex::netdisk::CNetDisk;

struct Recorded
{
    std::wstring userAgent;
    DWORD accessType = 0xFFFFFFFF;
    DWORD sessionFlags = 0xFFFFFFFF;
    DWORD crackFlags = 0;
    std::vector<DWORD> crackRooms;
    std::vector<std::wstring> verbs;
    std::vector<std::wstring> objects;
    std::vector<std::wstring> versions;
    std::vector<DWORD> requestFlags;
    std::vector<std::wstring> acceptTypes;
    std::vector<std::wstring> headers;
    std::vector<DWORD> headerModes;
    std::vector<DWORD> totalLengths;
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
        recorded.totalLengths.push_back(totalLength);
        return original<decltype(&WinHttpSendRequest)>(s_self->m_send)(request, headers, headersLength, optional,
                                                                       optionalLength, totalLength, context);
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
};

class SystemCallArguments : public testing::Test
{
protected:
    std::wstring url(const wchar_t* scheme = L"http://") const
    {
        return scheme + (L"127.0.0.1:" + std::to_wstring(m_server.port())) + L"/api";
    }

    void answer(const std::string& body)
    {
        support::Exchange exchange;
        exchange.pieces = {"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Range: bytes 0-0/5\r\n"
                           "Content-Disposition: attachment;filename=\"a;md5=0\r\n\r\n" +
                           body};
        m_server.play({exchange});
    }

    Recorder m_recorder;
    support::ScriptedServer m_server;
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
    EXPECT_EQ(recorded.totalLengths, std::vector<DWORD>{12});
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

bool isFormHeader(const std::wstring& header, std::wstring_view start)
{
    return header.starts_with(start) && header.ends_with(L"\r\n") && header.size() == start.size() + 40 + 2;
}

TEST_F(SystemCallArguments, OfAnUploadHaveNoBlanks)
{
    const support::TempFolder folder;
    support::writeFile(folder.path() / "a.txt", "hello");
    answer("{\"fkey\":\"K\",\"fsize\":5,\"cflag\":1}");
    const CNetDisk disk(url().c_str());
    wchar_t key[40];
    EXPECT_EQ(disk.FileUpload(folder.path().c_str(), L"a.txt", key, 20), 0);
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
