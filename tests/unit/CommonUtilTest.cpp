#include "CommonUtil.h"

#include "Platform/LastError.h"
#include "support/LogCapture.h"

#include <ferrolink/log.h>
#include <gtest/gtest.h>

#include <array>
#include <regex>
#include <set>
#include <string>

using namespace quorvex;

namespace
{

// The source-file tag needs a path below the module's folder, which a test has not; the form is the same.
std::string RawLine(unsigned int levels, void (*write)())
{
    std::wstring text;
    frl_log_set_callback([](void* context, unsigned, const wchar_t* line,
                            std::size_t length) { static_cast<std::wstring*>(context)->append(line, length); },
                         &text);
    frl_log_set_level(levels);
    write();
    frl_log_set_level(0);
    frl_log_set_stderr();
    return WideToUtf8(text);
}

} // namespace

TEST(SourceTag, StartsAtTheLastSrcFolder)
{
    EXPECT_STREQ(SourceTag("/home/src/module/src/Netdisk/NetDisk.cpp").text, ".\\src\\Netdisk\\NetDisk.cpp");
    EXPECT_STREQ(SourceTag("C:\\module\\src\\HttpHelper.cpp").text, ".\\src\\HttpHelper.cpp");
    EXPECT_STREQ(SourceTag("src/HttpHelper.cpp").text, ".\\src\\HttpHelper.cpp");
    EXPECT_STREQ(SourceTag("/mysrc/src/A.cpp").text, ".\\src\\A.cpp");
}

TEST(SourceTag, LeavesOutDetours)
{
    EXPECT_STREQ(SourceTag("/module/src/Netdisk/../NoThrow.h").text, ".\\src\\NoThrow.h");
    EXPECT_STREQ(SourceTag("src/A/B/../../C/D.h").text, ".\\src\\C\\D.h");
    EXPECT_STREQ(SourceTag("src\\A\\..\\D.h").text, ".\\src\\D.h");
}

TEST(Log, LineHasPrefixMessageTabTagAndNewline)
{
    const std::string line = RawLine(kLogError, [] { LOG_ERROR(L"InternetOpen error"); });
    EXPECT_TRUE(std::regex_match(line, std::regex("\\[ERROR\\] InternetOpen error\t\\[\\.\\\\.*CommonUtilTest\\.cpp:"
                                                  "[0-9]+\\]\n")))
        << line;
}

TEST(Log, PiecesFollowEachOtherWithoutSeparators)
{
    const std::string line =
        RawLine(kLogDebug, [] { LOG_DEBUG(L"size=" << 5U << L"," << std::string("n\xC3\xA9") << "x" << -1); });
    EXPECT_TRUE(line.starts_with("[DEBUG] size=5,n\xC3\xA9x-1\t[")) << line;
}

TEST(Log, NothingIsEvaluatedWhileTheLevelIsOff)
{
    static int evaluations = 0;
    evaluations = 0;
    EXPECT_EQ(RawLine(kLogError, [] { LOG_TRACE(L"n=" << ++evaluations); }), "");
    EXPECT_EQ(evaluations, 0);
    EXPECT_NE(RawLine(kLogTrace, [] { LOG_TRACE(L"n=" << ++evaluations); }), "");
    EXPECT_EQ(evaluations, 1);
}

TEST(Log, InfoSharesTheBitOfDebug)
{
    EXPECT_TRUE(RawLine(2, [] { LOG_INFO(L"message"); }).starts_with("[INFO] message\t["));
    EXPECT_EQ(RawLine(4, [] { LOG_INFO(L"message"); }), "");
}

TEST(Log, EachLevelHasItsBit)
{
    EXPECT_NE(RawLine(1, [] { LOG_TRACE(L"m"); }), "");
    EXPECT_EQ(RawLine(14, [] { LOG_TRACE(L"m"); }), "");
    EXPECT_NE(RawLine(2, [] { LOG_DEBUG(L"m"); }), "");
    EXPECT_EQ(RawLine(13, [] { LOG_DEBUG(L"m"); }), "");
    EXPECT_NE(RawLine(8, [] { LOG_ERROR(L"m"); }), "");
    EXPECT_EQ(RawLine(7, [] { LOG_ERROR(L"m"); }), "");
}

TEST(ErrorText, NamesCodeTextCallerAndItself)
{
    const support::LogCapture log;
    Platform::SetLastError(2);
    LogErrorText(".\\src\\Caller.cpp", 77);
    ASSERT_EQ(log.lines().size(), 1U);
    const support::LogLine& line = log.lines().front();
    EXPECT_EQ(line.level, "ERROR");
    EXPECT_EQ(line.defect, "");
    EXPECT_EQ(line.tag, ".\\src\\CommonUtil.cpp");
    EXPECT_TRUE(line.message.starts_with("GetLastError()=2 : ")) << line.message;
    EXPECT_TRUE(line.message.ends_with("\r\n.\\src\\Caller.cpp:77")) << line.message;
}

TEST(ErrorText, UnknownCodeHasTheReplacementText)
{
    const support::LogCapture log;
    Platform::SetLastError(0x2FFFFFFF);
    LogErrorText(".\\src\\Caller.cpp", 5);
    EXPECT_EQ(log.messages("ERROR"),
              std::vector<std::string>{
                  "GetLastError()=805306367 :  Sorry, cannot find this error info. .\\src\\Caller.cpp:5"});
}

TEST(ErrorText, WritesNothingWhileErrorsAreOff)
{
    const support::LogCapture log(kLogTrace | kLogDebug);
    Platform::SetLastError(2);
    LogErrorText(".\\src\\Caller.cpp", 5);
    EXPECT_TRUE(log.lines().empty());
}

TEST(ErrorText, FailedCallsCodeOutlivesItsOwnLine)
{
    static std::string codes;
    codes.clear();
    frl_log_set_callback(
        [](void*, unsigned, const wchar_t* line, std::size_t length) {
            codes += WideToUtf8(std::wstring_view(line, length));
            Platform::SetLastError(99);
        },
        nullptr);
    frl_log_set_level(kLogError);
    Platform::SetLastError(5);
    LOG_FAILED_CALL(L"call error");
    frl_log_set_level(0);
    frl_log_set_stderr();
    EXPECT_NE(codes.find("GetLastError()=5 : "), std::string::npos) << codes;
    EXPECT_LT(codes.find("call error"), codes.find("GetLastError()"));
}

TEST(LastErrMsg, IsOneEmptyText)
{
    ASSERT_NE(LastErrMsg(), nullptr);
    EXPECT_EQ(LastErrMsg(), LastErrMsg());
    EXPECT_STREQ(LastErrMsg(), L"");
}

TEST(BoundaryToken, FortyCharactersOfTheAlphabetEachTimeOthers)
{
    std::set<std::string> tokens;
    for (int i = 0; i < 200; ++i)
    {
        const std::string token = BoundaryToken();
        EXPECT_EQ(token.size(), 40U);
        EXPECT_EQ(token.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"),
                  std::string::npos);
        tokens.insert(token);
    }
    EXPECT_EQ(tokens.size(), 200U);
}

TEST(BoundaryToken, LettersJComeTwiceAsOften)
{
    std::array<int, 256> counts = {};
    for (int i = 0; i < 20000; ++i)
    {
        for (const char character : BoundaryToken())
        {
            ++counts[static_cast<unsigned char>(character)];
        }
    }
    // 800,000 draws over 64 entries: 12,500 expected, 25,000 for the two.
    for (const char character : std::string("0123456789abcdefghiklmnopqrstuvwxyzABCDEFGHIKLMNOPQRSTUVWXYZ"))
    {
        EXPECT_NEAR(counts[static_cast<unsigned char>(character)], 12500, 1250) << character;
    }
    EXPECT_NEAR(counts['j'], 25000, 2000);
    EXPECT_NEAR(counts['J'], 25000, 2000);
}

TEST(PercentEncode, KeepsLettersAndDigitsOnly)
{
    EXPECT_EQ(PercentEncode(""), "");
    EXPECT_EQ(PercentEncode("azAZ09"), "azAZ09");
    EXPECT_EQ(PercentEncode(" -_.~*+&=%"), "%20%2D%5F%2E%7E%2A%2B%26%3D%25");
    EXPECT_EQ(PercentEncode("\xE4\xB8\xAD\x01\xFF"), "%E4%B8%AD%01%FF");
    EXPECT_EQ(PercentEncode(std::string_view("\0", 1)), "%00");
}

TEST(Conversions, Utf8AndWide)
{
    EXPECT_EQ(Utf8ToWide("\xE4\xB8\xAD"), L"\u4E2D");
    EXPECT_EQ(WideToUtf8(L"\u4E2D"), "\xE4\xB8\xAD");
    EXPECT_EQ(Utf8ToWide(""), L"");
}

TEST(CopyOut, CutsToTheCapacityAndTerminates)
{
    std::array<wchar_t, 6> out = {L'#', L'#', L'#', L'#', L'#', L'#'};
    CopyToWide("abcdef", out.data(), 5);
    EXPECT_STREQ(out.data(), L"abcd");
    EXPECT_EQ(out[5], L'#');

    CopyWide(L"uvwxyz", out.data(), 5);
    EXPECT_STREQ(out.data(), L"uvwx");
    EXPECT_EQ(out[5], L'#');
}

TEST(CopyOut, NeverCutsWithinACharacter)
{
    std::array<wchar_t, 4> out = {};
    CopyToWide("ab\xF0\x9F\x98\x80", out.data(), out.size());
    EXPECT_STREQ(out.data(), L"ab");
    CopyWide(L"ab\U0001F600", out.data(), out.size());
    EXPECT_STREQ(out.data(), L"ab");
}

TEST(CopyOut, WithoutBufferOrRoomNothingIsWritten)
{
    wchar_t guard = L'#';
    CopyToWide("abc", &guard, 0);
    CopyWide(L"abc", &guard, 0);
    EXPECT_EQ(guard, L'#');
    CopyToWide("abc", nullptr, 5);
    CopyWide(L"abc", nullptr, 5);

    char narrowGuard = '#';
    CopyToUtf8(L"abc", &narrowGuard, 0);
    EXPECT_EQ(narrowGuard, '#');
    CopyToUtf8(L"abc", nullptr, 5);
}
