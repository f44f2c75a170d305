#include "SearchFixture.h"

#include <limits>

namespace quorvex::services::test
{

namespace
{

using Ids = std::vector<std::string>;

class SearchPresenceTest : public SearchFixture
{
protected:
    static int StatusResult(SearchClient& client, const std::string& query)
    {
        return client.Get("status.php?" + query)["result"].asInt();
    }
};

} // namespace

TEST_F(SearchPresenceTest, AUserIsOnlineFromTheFirstReportToTheLast)
{
    SearchClient alice = LoggedInTo("alice");
    EXPECT_EQ(alice.Find("app=im"), Ids{});
    EXPECT_EQ(alice.Report("im", 2)["result"].asInt(), 200);
    EXPECT_EQ(alice.Find("app=im"), IdsOf({"alice"}));
    EXPECT_EQ(alice.Count("app=im"), 1);
    EXPECT_EQ(alice.Report("im", 3)["result"].asInt(), 200);
    EXPECT_EQ(alice.Count("app=im"), 1);

    EXPECT_EQ(alice.Report("im", 0)["result"].asInt(), 200);
    EXPECT_EQ(alice.Find("app=im"), Ids{});
    EXPECT_EQ(alice.Count("app=im"), 0);
    EXPECT_EQ(alice.Report("im", 0)["result"].asInt(), 200);
}

TEST_F(SearchPresenceTest, IsOfOneApplication)
{
    SearchClient alice = LoggedInTo("alice");
    SearchClient bob = LoggedInTo("bob");
    alice.Online("im");
    alice.Online("game");
    bob.Online("game");
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"alice"}));
    EXPECT_EQ(bob.Find("app=game"), IdsOf({"alice", "bob"}));
    EXPECT_EQ(bob.Find("app=IM"), Ids{});

    alice.Report("game", 0);
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"alice"}));
    EXPECT_EQ(bob.Find("app=game"), IdsOf({"bob"}));
}

TEST_F(SearchPresenceTest, ASilentUserCountsAsOffline)
{
    Restart([](Application::Options& options) { options.presenceLifetime = 60; });
    SearchClient alice = LoggedInTo("alice");
    SearchClient bob = LoggedInTo("bob");
    alice.Online();
    bob.Online();
    now_ += 30;
    bob.Online();
    now_ += 29;
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"alice", "bob"}));
    now_ += 1;
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"bob"}));
    EXPECT_EQ(bob.Count("app=im"), 1);
    now_ += 30;
    EXPECT_EQ(bob.Find("app=im"), Ids{});

    alice.Online();
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"alice"}));
}

TEST_F(SearchPresenceTest, SearchesAndUpdatesAreNoReports)
{
    SearchClient alice = LoggedInTo("alice");
    alice.Online();
    now_ += options_.presenceLifetime - 1;
    alice.Update("app=im&a=1");
    EXPECT_EQ(alice.Count("app=im"), 1);
    now_ += 1;
    EXPECT_EQ(alice.Count("app=im"), 0);
}

TEST_F(SearchPresenceTest, ALogoutEndsItEverywhere)
{
    SearchClient alice = LoggedInTo("alice");
    SearchClient bob = LoggedInTo("bob");
    alice.Online("im");
    alice.Online("game");
    bob.Online("im");
    alice.Logout();
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"bob"}));
    EXPECT_EQ(bob.Find("app=game"), Ids{});
}

TEST_F(SearchPresenceTest, OutlivesTheSessionAndARestart)
{
    SearchClient alice = LoggedInTo("alice");
    alice.Online();
    Admin("sessions/expire", R"({"account":"alice"})");
    Restart();
    SearchClient bob = LoggedInTo("bob");
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"alice"}));
}

TEST_F(SearchPresenceTest, TheAdminEndsIt)
{
    SearchClient alice = LoggedInTo("alice");
    SearchClient bob = LoggedInTo("bob");
    alice.Online("im");
    alice.Online("game");
    bob.Online("im");
    EXPECT_EQ(Admin("presence/expire", R"({"account":"alice"})").Json()["expired"].asInt(), 2);
    EXPECT_EQ(bob.Find("app=im"), IdsOf({"bob"}));
    EXPECT_EQ(Admin("presence/expire", "{}").Json()["expired"].asInt(), 1);
    EXPECT_EQ(bob.Find("app=im"), Ids{});
    EXPECT_EQ(Admin("presence/expire", R"({"account":"nobody"})").status, 404);

    Restart([](Application::Options& options) { options.hasAdmin = false; });
    EXPECT_EQ(Admin("presence/expire", "{}").status, 404);
}

TEST_F(SearchPresenceTest, EveryStatusButZeroIsOnline)
{
    SearchClient alice = LoggedInTo("alice");
    for (const int status : {1, 2, 99, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
    {
        EXPECT_EQ(alice.Report("im", status)["result"].asInt(), 200);
        EXPECT_EQ(alice.Count("app=im"), 1);
        EXPECT_EQ(alice.Report("im", 0)["result"].asInt(), 200);
    }
}

TEST_F(SearchPresenceTest, AStatusIsANumberOf32Bits)
{
    SearchClient alice = LoggedInTo("alice");
    for (const char* status : {"", "x", "1x", "1.5", "+1", "%201", "2147483648", "-2147483649", "99999999999999999999"})
    {
        EXPECT_EQ(StatusResult(alice, std::string("st=") + status + "&app=im"), 400) << status;
    }
    EXPECT_EQ(StatusResult(alice, "app=im"), 400);
    EXPECT_EQ(StatusResult(alice, "st=1"), 400);
    EXPECT_EQ(StatusResult(alice, "st=1&app="), 400);
    EXPECT_EQ(alice.Count("app=im"), 0);
}

TEST_F(SearchPresenceTest, AnApplicationIsTheSameInQueriesAndForms)
{
    SearchClient alice = LoggedInTo("alice");
    // As they stand in a form, and as an HTTP library may write them in a query.
    const std::vector<std::pair<std::string, std::string>> names = {{"im-2.0_b~", "im-2.0_b~"},
                                                                    {"c++", "c++"},
                                                                    {"my app", "my%20app"},
                                                                    {"a=b", "a=b"},
                                                                    {"100%", "100%"},
                                                                    {"%zz", "%zz"},
                                                                    {"\xE8\x81\x8A\xE5\xA4\xA9", "%E8%81%8A%E5%A4%A9"},
                                                                    {std::string(64, 'x'), std::string(64, 'x')}};
    for (const auto& [inForm, inQuery] : names)
    {
        EXPECT_EQ(StatusResult(alice, "st=1&app=" + inQuery), 200) << inForm;
        EXPECT_EQ(alice.Count("app=" + inForm), 1) << inForm;
        EXPECT_EQ(StatusResult(alice, "st=0&app=" + inQuery), 200) << inForm;
        EXPECT_EQ(alice.Count("app=" + inForm), 0) << inForm;
    }
    for (const std::string& name : {std::string("a&b"), std::string("a%26b"), std::string("a%00"), std::string("%0A"),
                                    std::string("%7F"), std::string(65, 'x')})
    {
        EXPECT_EQ(StatusResult(alice, "st=1&app=" + name), 400) << name;
    }
}

} // namespace quorvex::services::test
