#include "AccountSession.h"
#include "CommandLine.h"
#include "Failure.h"
#include "SearchCommands.h"
#include "SearchForm.h"
#include "SearchPages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <numeric>

namespace quorvex::console
{
namespace
{

using Texts = std::vector<std::string>;

class SearchCommandLine : public testing::Test
{
protected:
    void SetUp() override { _wputenv(L"QUORVEX_SEARCH="); }
    void TearDown() override { SetUp(); }

    /// Reads "--session s search ARGUMENT...".
    std::optional<Invocation> Read(Texts arguments)
    {
        arguments.insert(arguments.begin(), {"--session", "s", "search"});
        return ParseCommandLine(std::move(arguments), m_answer);
    }

    Options Parsed(const Texts& arguments)
    {
        const auto invocation = Read(arguments);
        EXPECT_TRUE(invocation.has_value()) << m_answer.text;
        return invocation.value_or(Invocation()).options;
    }

    std::string Complaint(const Texts& arguments)
    {
        EXPECT_FALSE(Read(arguments).has_value());
        EXPECT_EQ(m_answer.exitStatus, 2);
        return m_answer.text;
    }

    Answer m_answer;
};

TEST_F(SearchCommandLine, KnowsEveryCommand)
{
    const std::vector<std::pair<Texts, Command>> commands{
        {{"login"}, &SearchLoginCommand},
        {{"status", "im", "1"}, &SearchStatusCommand},
        {{"update", "im", "a=1"}, &SearchUpdateCommand},
        {{"find", "im"}, &SearchFindCommand},
        {{"count", "im"}, &SearchCountCommand},
        {{"logout"}, &SearchLogoutCommand},
        {{"profile", "a=1"}, &SearchProfileCommand},
    };
    for (const auto& [words, command] : commands)
    {
        const auto invocation = Read(words);
        ASSERT_TRUE(invocation.has_value()) << m_answer.text;
        EXPECT_EQ(invocation->command, command) << words.front();
        EXPECT_FALSE(Read({words.front(), "--help"}).has_value());
        EXPECT_EQ(m_answer.exitStatus, 0);
        EXPECT_NE(m_answer.text.find("Examples:\n  quorvex search " + words.front()), std::string::npos);
    }
}

TEST_F(SearchCommandLine, TakesValuesAsTheyAre)
{
    const Texts fields{"age=20-30", "text=a,b = \"c\"", "none=", "x=[1,2]"};
    Texts arguments{"find", "count"};
    arguments.insert(arguments.end(), fields.begin(), fields.end());
    EXPECT_EQ(Parsed(arguments).app, "count");
    EXPECT_EQ(Parsed(arguments).fields, fields);
    EXPECT_EQ(Parsed({"find", "im", "--", "-a=1"}).fields, Texts{"-a=1"});
    EXPECT_TRUE(Parsed({"count", "im"}).fields.empty());
}

TEST_F(SearchCommandLine, TakesEveryNumberAsAStatus)
{
    EXPECT_EQ(Parsed({"status", "im", "0"}).status, 0);
    EXPECT_EQ(Parsed({"status", "im", "010"}).status, 10);
    EXPECT_EQ(Parsed({"status", "im", "2147483647"}).status, INT_MAX);
    EXPECT_EQ(Parsed({"status", "im", "-2147483648"}).status, INT_MIN);
    for (const char* const number : {"2147483648", "-2147483649", "away", "1.5", "0x10", ""})
        EXPECT_NE(Complaint({"status", "im", number}).find("a whole number of 32 bits"), std::string::npos) << number;
}

TEST_F(SearchCommandLine, RefusesWhatWouldChangeTheRequest)
{
    for (const char* const command : {"update", "find", "count"})
    {
        EXPECT_NE(Complaint({command, "i&m", "a=1"}).find("1 to 64 letters"), std::string::npos);
        EXPECT_NE(Complaint({command, "im", "a&b=1"}).find("no &"), std::string::npos);
        EXPECT_NE(Complaint({command, "im", "a=1", "b"}).find("NAME=VALUE"), std::string::npos);
        EXPECT_NE(Complaint({command}), "");
    }
    EXPECT_NE(Complaint({"status", "i/m", "1"}).find("1 to 64 letters"), std::string::npos);
    EXPECT_NE(Complaint({"update", "im"}), "");
    EXPECT_NE(Complaint({"status", "im"}), "");
}

TEST_F(SearchCommandLine, TakesAFormInThePlaceOfConditions)
{
    for (const char* const command : {"find", "count"})
    {
        EXPECT_EQ(Parsed({command, "--form", "app=im&a=1"}).form, "app=im&a=1");
        EXPECT_NE(Complaint({command, "im", "--form", "app=im"}).find("--form"), std::string::npos);
        EXPECT_NE(Complaint({command}).find("app or --form"), std::string::npos);
    }
    EXPECT_EQ(Parsed({"profile", "--form", "a=1"}).form, "a=1");
    EXPECT_NE(Complaint({"profile", "a=1", "--form", "a=1"}).find("--form"), std::string::npos);
    EXPECT_NE(Complaint({"profile"}).find("fields or --form"), std::string::npos);
}

TEST_F(SearchCommandLine, HasAServerOfItsOwn)
{
    EXPECT_EQ(Parsed({"find", "im"}).server, "http://127.0.0.1:8080/search");
    _wputenv(L"QUORVEX_SEARCH=http://env/x");
    EXPECT_EQ(Parsed({"find", "im"}).server, "http://env/x");
    EXPECT_EQ(Parsed({"find", "im", "--server", "http://given"}).server, "http://given");
}

TEST_F(SearchCommandLine, LogsInWithATicketToo)
{
    EXPECT_TRUE(ParseCommandLine({"search", "login", "--ticket", "a:b"}, m_answer).has_value()) << m_answer.text;
    EXPECT_FALSE(ParseCommandLine({"search", "login"}, m_answer).has_value());
    EXPECT_EQ(m_answer.exitStatus, 2);
    EXPECT_EQ(Parsed({"login", "--accounts", "http://disk/object"}).accounts, "http://disk/object");
}

TEST(SearchForm, SplitsAFieldAtItsFirstEqualsSign)
{
    EXPECT_EQ(NamesAndValues({"age=20-30", "formula=a=b", "none=", "city=\xE4\xB8\xAD\xE6\x96\x87"}),
              (Texts{"age", "20-30", "formula", "a=b", "none", "", "city", "\xE4\xB8\xAD\xE6\x96\x87"}));
    EXPECT_EQ(NamesAndValues({}), Texts());
}

TEST(SearchForm, TakesAnyTextAsAValue)
{
    for (const std::string field : {"a=", "a=&b=c%20+ \"x\"\n", "\xD0\xB3\xD0\xBE\xD0\xB4=1", "a b+c=1", "apps=1"})
        EXPECT_EQ(ComplaintAboutField(field), "") << field;
}

TEST(SearchForm, EncodesValuesAndLeavesNames)
{
    EXPECT_EQ(FormOf({"a b", "c d&e=f", "none", "", "city", "\xC3\xA9"}), "a b=c%20d%26e%3Df&none=&city=%C3%A9");
    EXPECT_EQ(FormOf({}), "");
}

TEST(SearchForm, RefusesNamesThatWouldChangeTheForm)
{
    for (const std::string field : {"", "a", "=", "=value"})
        EXPECT_EQ(ComplaintAboutField(field), "a value is given as NAME=VALUE") << field;
    for (const std::string field : {"a&b=1", "a%41=1", "a\nb=1", "a\x7F=1"})
        EXPECT_EQ(ComplaintAboutField(field), "the name of a value has no &, no % and no control characters") << field;
    EXPECT_EQ(ComplaintAboutField("app=im"), "app cannot be the name of a value");
    EXPECT_EQ(ComplaintAboutField("skip=1"), "skip cannot be the name of a value");
}

TEST(SearchForm, RefusesApplicationsThatWouldChangeTheRequest)
{
    for (const std::string& app : Texts{"im", "Chat_2.0-beta", std::string(64, 'a')})
        EXPECT_EQ(ComplaintAboutApp(app), "") << app;
    for (const std::string& app : Texts{"", "a b", "a&b", "a%41", "a=b", "\xC3\xA9", std::string(65, 'a')})
        EXPECT_NE(ComplaintAboutApp(app), "") << app;
}

TEST(SearchForm, HoldsNoMoreThanTheModuleSends)
{
    // "app=im&skip=2147483647" and "&a=" leave so many of 8191 bytes.
    constexpr std::size_t room = 8191 - 22 - 3;
    EXPECT_NO_THROW(CheckThatFormHolds("im", {}));
    EXPECT_NO_THROW(CheckThatFormHolds("im", {"a", std::string(room, 'x')}));
    EXPECT_THROW(CheckThatFormHolds("im", {"a", std::string(room + 1, 'x')}), Failure);
    EXPECT_THROW(CheckThatFormHolds("ime", {"a", std::string(room, 'x')}), Failure);
    EXPECT_THROW(CheckThatFormHolds("im", {"ab", std::string(room, 'x')}), Failure);
}

TEST(SearchForm, CountsThreeBytesForWhatIsEncoded)
{
    constexpr std::size_t signs = (8191 - 22 - 3) / 3;
    for (const char sign : {' ', '-', '.', '~', '\xE4', '\x01'})
    {
        EXPECT_NO_THROW(CheckThatFormHolds("im", {"a", std::string(signs, sign)})) << sign;
        EXPECT_THROW(CheckThatFormHolds("im", {"a", std::string(signs + 1, sign)}), Failure) << sign;
    }
}

/// A server of many users that gives some of them at a time.
class Pages
{
public:
    Pages(unsigned users, std::size_t pageSize) : m_users(users), m_pageSize(pageSize)
    {
        std::iota(m_users.begin(), m_users.end(), 1u);
    }

    std::vector<unsigned> operator()(int skip)
    {
        m_skips.push_back(skip);
        const auto begin = m_users.begin() + std::min<std::ptrdiff_t>(skip, std::ssize(m_users));
        const auto count = std::min(m_pageSize, static_cast<std::size_t>(m_users.end() - begin));
        return {begin, begin + static_cast<std::ptrdiff_t>(count)};
    }

    std::vector<unsigned> m_users;
    std::size_t m_pageSize;
    std::vector<int> m_skips;
};

TEST(SearchPages, AreReadUntilOneIsEmpty)
{
    Pages pages(250, 100);
    EXPECT_EQ(ReadAllPages(std::ref(pages)), pages.m_users);
    EXPECT_EQ(pages.m_skips, (std::vector<int>{0, 100, 200, 250}));

    Pages none(0, 100);
    EXPECT_TRUE(ReadAllPages(std::ref(none)).empty());
    EXPECT_EQ(none.m_skips, std::vector<int>{0});
}

TEST(SearchPages, KeepTheServersOrder)
{
    const std::vector<unsigned> order{9, 2, UINT_MAX, 0};
    EXPECT_EQ(ReadAllPages([&](int skip) { return skip == 0 ? order : std::vector<unsigned>(); }), order);
}

TEST(SearchPages, GiveAUserOnceWhoMovesFromPageToPage)
{
    const std::vector<std::vector<unsigned>> pages{{2, 3}, {3, 4}, {5}, {}};
    std::size_t next = 0;
    EXPECT_EQ(ReadAllPages([&](int) { return pages[next++]; }), (std::vector<unsigned>{2, 3, 4, 5}));
    EXPECT_EQ(next, pages.size());
}

TEST(SearchPages, EndAlsoWhenTheServerDoesNotSkip)
{
    int calls = 0;
    const auto same = [&](int) {
        ++calls;
        return std::vector<unsigned>{7, 8};
    };
    EXPECT_EQ(ReadAllPages(same), (std::vector<unsigned>{7, 8}));
    EXPECT_EQ(calls, 2);
}

TEST(SearchPages, LeaveFailuresToTheCaller)
{
    EXPECT_THROW(ReadAllPages([](int) -> std::vector<unsigned> { throw Failure("no"); }), Failure);
}

TEST(AccountSession, IsTheOneGivenWhenThereIsOne)
{
    Options options;
    options.session = "5f1c";
    options.server = "nowhere";
    const AccountSession session = OpenAccountSession(options);
    EXPECT_EQ(session.text, "5f1c");
    EXPECT_EQ(session.uid, std::nullopt);
}

TEST(AccountSession, ComesFromTheNetworkDiskBesideTheService)
{
    EXPECT_EQ(Beside("http://host:8080/search", kNetDisk), "http://host:8080/object");
    EXPECT_EQ(Beside("http://host:8080/a/b/", kNetDisk), "http://host:8080/object");
    EXPECT_EQ(Beside("http://host", kNetDisk), "http://host/object");
    EXPECT_EQ(Beside("https://[::1]:80/", kNetDisk), "https://[::1]:80/object");
}

TEST(AccountSession, NeedsAnAddressThatCanBeOne)
{
    Options options;
    options.user = "ann";
    options.password = "secret";
    options.server = "nowhere";
    EXPECT_THROW(OpenAccountSession(options), Failure);
    options.server = "http://127.0.0.1/search";
    options.accounts = "nowhere";
    EXPECT_THROW(OpenAccountSession(options), Failure);
}

} // namespace
} // namespace quorvex::console
