#include <ferrolink/log.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <windows.h>

namespace
{

using frl_cxx_helper::internal::Log;

const unsigned kLevelAtStart = frl_log_get_level();

struct Line
{
    unsigned level;
    std::wstring text;
};

void Collect(void* context, unsigned level, const wchar_t* line, size_t length)
{
    static_cast<std::vector<Line>*>(context)->push_back({level, std::wstring(line, length)});
}

std::string Content(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Ferrolink : public testing::Test
{
protected:
    void SetUp() override
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        m_folder = std::filesystem::temp_directory_path() /
                   (std::string("ferrolink-") + test->name() + '-' + std::to_string(GetCurrentProcessId()));
        std::filesystem::create_directories(m_folder);
        frl_log_set_level(FRL_LOG_TRACE | FRL_LOG_DEBUG | FRL_LOG_ERROR);
        frl_log_set_callback(Collect, &m_lines);
    }

    void TearDown() override
    {
        frl_log_set_stderr();
        frl_log_set_level(0);
        std::filesystem::remove_all(m_folder);
    }

    /// The text of the only line that has arrived.
    std::wstring OnlyLine() const
    {
        EXPECT_EQ(m_lines.size(), 1u);
        return m_lines.empty() ? std::wstring() : m_lines.front().text;
    }

    std::filesystem::path m_folder;
    std::vector<Line> m_lines;
};

TEST_F(Ferrolink, NothingIsEnabledAtTheStart)
{
    EXPECT_EQ(kLevelAtStart, 0u);
}

TEST_F(Ferrolink, LevelIsTheSetThatWasGiven)
{
    for (const unsigned levels : {0u, 1u, 2u, 8u, 11u, 15u, UINT_MAX})
    {
        frl_log_set_level(levels);
        EXPECT_EQ(frl_log_get_level(), levels);
    }
}

TEST_F(Ferrolink, LineCarriesItsLevelAndArrivesOnceWhenItIsDestroyed)
{
    {
        Log log(FRL_LOG_DEBUG);
        log << L"[DEBUG] " << L"one" << " two\n";
        EXPECT_TRUE(m_lines.empty());
    }
    EXPECT_EQ(OnlyLine(), L"[DEBUG] one two\n");
    EXPECT_EQ(m_lines.front().level, unsigned{FRL_LOG_DEBUG});
}

TEST_F(Ferrolink, EveryKindOfPieceIsInserted)
{
    const auto* handle = reinterpret_cast<const void*>(static_cast<std::size_t>(0x1aF0));
    Log(FRL_LOG_ERROR) << L"w" << std::wstring(L"W") << "n" << std::string("N") << ':' << L';' << handle << '\n';
    EXPECT_EQ(OnlyLine(), L"wWnN:;0x1af0\n");
}

TEST_F(Ferrolink, IntegersOfEveryTypeAreDecimal)
{
    Log(FRL_LOG_ERROR) << static_cast<signed char>(-128) << ' ' << static_cast<unsigned char>(255) << ' '
                       << static_cast<short>(-32768) << ' ' << static_cast<unsigned short>(65535) << ' ' << INT_MIN
                       << ' ' << UINT_MAX << ' ' << LONG_MIN << ' ' << ULONG_MAX << ' ' << LLONG_MIN << ' '
                       << ULLONG_MAX << ' ' << 0 << ' ' << true;
    EXPECT_EQ(OnlyLine(), L"-128 255 -32768 65535 -2147483648 4294967295 -2147483648 4294967295 "
                          L"-9223372036854775808 18446744073709551615 0 1");
}

TEST_F(Ferrolink, NullTextsAndHandlesAreWrittenAsSuch)
{
    const wchar_t* wide = nullptr;
    const char* narrow = nullptr;
    const void* handle = nullptr;
    Log(FRL_LOG_ERROR) << wide << narrow << handle;
    EXPECT_EQ(OnlyLine(), L"(null)(null)0x0");
}

TEST_F(Ferrolink, NarrowTextIsUtf8)
{
    Log(FRL_LOG_ERROR) << "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
                       << std::string("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF") << std::string("a\0b", 3);
    EXPECT_EQ(OnlyLine(), std::wstring(L"\x7F\x80\x7FF\x800\xD7FF\xE000\xFFFF\xD800\xDC00\xDBFF\xDFFF"
                                       L"a\0b",
                                       14));
}

TEST_F(Ferrolink, BytesThatAreNoUtf8AreReplacedAndSwallowNothing)
{
    const std::pair<std::string, std::wstring> cases[] = {
        {"\x80", L"\xFFFD"},
        {"\xFF-", L"\xFFFD-"},
        {"\xC0\xAF", L"\xFFFD\xFFFD"},
        {"\xC3", L"\xFFFD"},
        {"\xC3x", L"\xFFFDx"},
        {"\xE0\x80\x80", L"\xFFFD\xFFFD\xFFFD"},
        {"\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD"},
        {"\xE2\x82", L"\xFFFD"},
        {"\xE2\x82\xE2\x82\xAC", L"\xFFFD\x20AC"},
        {"\xF0\x80\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"\xF5", L"\xFFFD"},
        {"\xF0\x9F\x98", L"\xFFFD"},
    };
    for (const auto& [bytes, text] : cases)
    {
        m_lines.clear();
        Log(FRL_LOG_ERROR) << bytes;
        EXPECT_EQ(OnlyLine(), text) << testing::PrintToString(bytes);
    }
    m_lines.clear();
    Log(FRL_LOG_ERROR) << '\xE9' << 'e';
    EXPECT_EQ(OnlyLine(), L"\xFFFD"
                          L"e");
}

TEST_F(Ferrolink, NumbersAndCharactersAreLeftOutOnceTheLevelIsDisabled)
{
    {
        Log log(FRL_LOG_TRACE);
        log << L"a=" << 1 << L',';
        frl_log_set_level(FRL_LOG_DEBUG | FRL_LOG_ERROR);
        log << L" b=" << 2 << 3ull << ',' << L',' << static_cast<const void*>(this) << " end" << std::string("!")
            << std::wstring(L"?");
        frl_log_set_level(FRL_LOG_TRACE);
        log << 4 << '\n';
    }
    EXPECT_EQ(OnlyLine(), L"a=1, b= end!?4\n");
}

TEST_F(Ferrolink, FileReceivesUtf8AndIsAppendedTo)
{
    const auto path = m_folder / L"log \x65E5\x672C.txt";
    std::ofstream(path, std::ios::binary) << "before\n";
    ASSERT_EQ(frl_log_set_file(path.c_str()), 0);
    Log(FRL_LOG_ERROR) << L"\x20AC \xD83D\xDE00" << '\n';
    Log(FRL_LOG_ERROR) << L"lone \xD800" << '\n';
    EXPECT_EQ(Content(path), "before\n\xE2\x82\xAC \xF0\x9F\x98\x80\nlone \xEF\xBF\xBD\n");
    EXPECT_TRUE(m_lines.empty());
}

TEST_F(Ferrolink, FileIsClosedWhenLinesGoElsewhere)
{
    const auto first = m_folder / "first.txt";
    const auto second = m_folder / "second.txt";
    const auto openAlone = [](const std::filesystem::path& path) {
        const HANDLE file =
            CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        return file != INVALID_HANDLE_VALUE && CloseHandle(file) != 0;
    };
    ASSERT_EQ(frl_log_set_file(first.c_str()), 0);
    EXPECT_FALSE(openAlone(first));
    ASSERT_EQ(frl_log_set_file(second.c_str()), 0);
    EXPECT_TRUE(openAlone(first));
    frl_log_set_callback(Collect, &m_lines);
    EXPECT_TRUE(openAlone(second));
}

TEST_F(Ferrolink, FileThatCannotBeOpenedLeavesEverythingAsItWas)
{
    EXPECT_EQ(frl_log_set_file((m_folder / "missing" / "log.txt").c_str()), int{ERROR_PATH_NOT_FOUND});
    EXPECT_NE(frl_log_set_file(m_folder.c_str()), 0);
    Log(FRL_LOG_ERROR) << L"still here";
    EXPECT_EQ(OnlyLine(), L"still here");
}

TEST_F(Ferrolink, StandardErrorReceivesUtf8)
{
    const auto path = m_folder / "stderr.txt";
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    const HANDLE before = GetStdHandle(STD_ERROR_HANDLE);
    SetStdHandle(STD_ERROR_HANDLE, file);
    frl_log_set_stderr();
    Log(FRL_LOG_ERROR) << L"\x20AC" << '\n';
    SetStdHandle(STD_ERROR_HANDLE, before);
    CloseHandle(file);
    EXPECT_EQ(Content(path), "\xE2\x82\xAC\n");
}

TEST_F(Ferrolink, NullCallbackAndNullLineWriteNothing)
{
    frl_log_write(FRL_LOG_ERROR, nullptr, 5);
    frl_log_set_callback(nullptr, nullptr);
    Log(FRL_LOG_ERROR) << L"dropped";
    EXPECT_TRUE(m_lines.empty());
}

TEST_F(Ferrolink, LineNeedsNoTerminator)
{
    const wchar_t text[] = {L'a', L'b', L'c'};
    frl_log_write(FRL_LOG_TRACE, text, 2);
    EXPECT_EQ(OnlyLine(), L"ab");
}

TEST_F(Ferrolink, CallbackThatLogsIsNotCalledAgainForItsOwnLine)
{
    int calls = 0;
    frl_log_set_callback(
        [](void* context, unsigned, const wchar_t*, size_t) {
            ++*static_cast<int*>(context);
            Log(FRL_LOG_ERROR) << L"from within";
        },
        &calls);
    Log(FRL_LOG_ERROR) << L"one";
    Log(FRL_LOG_ERROR) << L"two";
    EXPECT_EQ(calls, 2);
}

TEST_F(Ferrolink, CallbackMaySendLinesElsewhere)
{
    frl_log_set_callback(
        [](void* context, unsigned, const wchar_t*, size_t) { frl_log_set_callback(Collect, context); }, &m_lines);
    Log(FRL_LOG_ERROR) << L"one";
    Log(FRL_LOG_ERROR) << L"two";
    EXPECT_EQ(OnlyLine(), L"two");
}

TEST_F(Ferrolink, LastErrorStaysAsItWas)
{
    // The callback spoils it on purpose.
    frl_log_set_callback([](void*, unsigned, const wchar_t*, size_t) { SetLastError(ERROR_GEN_FAILURE); }, nullptr);
    SetLastError(12029);
    Log(FRL_LOG_ERROR) << L"text" << "\xFFtext" << std::wstring(5000, L'x') << 1 << ' ' << L' '
                       << static_cast<const void*>(this);
    EXPECT_EQ(GetLastError(), 12029u);

    frl_log_set_level(frl_log_get_level());
    EXPECT_NE(frl_log_set_file((m_folder / "missing" / "log.txt").c_str()), 0);
    EXPECT_EQ(GetLastError(), 12029u);
    EXPECT_EQ(frl_log_set_file((m_folder / "log.txt").c_str()), 0);
    Log(FRL_LOG_ERROR) << L"line\n";
    EXPECT_EQ(GetLastError(), 12029u);
    frl_log_set_stderr();
    frl_log_set_callback(nullptr, nullptr);
    EXPECT_EQ(GetLastError(), 12029u);
}

/// Every thread writes lines of its own letter; a line is whole when it has one letter, 300 times.
void WriteFromManyThreads(int threads, int linesOfEach)
{
    std::vector<std::thread> writers;
    writers.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i)
        writers.emplace_back([=] {
            const std::wstring text(300, static_cast<wchar_t>(L'a' + i));
            for (int line = 0; line < linesOfEach; ++line)
                Log(FRL_LOG_DEBUG) << text << L"\n";
        });
    for (auto& writer : writers)
        writer.join();
}

bool IsWhole(const std::string& line)
{
    return line.size() == 300 && std::all_of(line.begin(), line.end(), [&](char c) { return c == line.front(); });
}

TEST_F(Ferrolink, LinesOfManyThreadsAreNotTornInAFile)
{
    const auto path = m_folder / "threads.txt";
    ASSERT_EQ(frl_log_set_file(path.c_str()), 0);
    WriteFromManyThreads(8, 500);
    frl_log_set_stderr();

    std::ifstream file(path, std::ios::binary);
    int lines = 0;
    for (std::string line; std::getline(file, line); ++lines)
        ASSERT_TRUE(IsWhole(line)) << line;
    EXPECT_EQ(lines, 8 * 500);
}

TEST_F(Ferrolink, CallbackIsCalledByOneThreadAtATime)
{
    WriteFromManyThreads(8, 500);
    EXPECT_EQ(m_lines.size(), 8u * 500u);
}

TEST_F(Ferrolink, FormerCallbackIsNeverCalledAfterItsReplacement)
{
    struct Context
    {
        std::atomic<bool> retired{false};
        std::atomic<int> callsAfterwards{0};
    };
    const auto callback = [](void* context, unsigned, const wchar_t*, size_t) {
        auto& self = *static_cast<Context*>(context);
        if (self.retired)
            ++self.callsAfterwards;
    };

    std::atomic<bool> stop{false};
    std::thread writer([&] {
        while (!stop)
            Log(FRL_LOG_ERROR) << L"line\n";
    });
    std::vector<Context> contexts(200);
    for (auto& context : contexts)
    {
        frl_log_set_callback(callback, &context);
        frl_log_set_callback(nullptr, nullptr);
        context.retired = true;
    }
    stop = true;
    writer.join();
    for (const auto& context : contexts)
        EXPECT_EQ(context.callsAfterwards, 0);
}

} // namespace
