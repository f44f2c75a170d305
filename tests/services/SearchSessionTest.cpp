#include "SearchFixture.h"
#include "support/RawHttp.h"

namespace quorvex::services::test
{

namespace
{

class SearchSessionTest : public SearchFixture
{
protected:
    SearchClient Anonymous() { return SearchClient(application_->Port()); }

    // Every operation that needs a session answers that there is none, with its own key.
    static void ExpectNoSession(SearchClient& client)
    {
        EXPECT_EQ(client.Report("im", 1)["result"].asInt(), 403);
        EXPECT_EQ(client.Post("update.php", "app=im&a=1")["result"].asInt(), 403);
        const Json::Value found = client.Post("search.php", "app=im&skip=0");
        EXPECT_EQ(found["result"].asInt(), 403);
        EXPECT_TRUE(found["users"].isArray());
        EXPECT_TRUE(found["users"].empty());
        const Json::Value counted = client.Post("count.php", "app=im");
        EXPECT_EQ(counted["result"].asInt(), 403);
        EXPECT_EQ(counted["total"], Json::Value(0));
    }
};

} // namespace

TEST_F(SearchSessionTest, ACheckedUserCentreSessionOpensOne)
{
    SearchClient client = Anonymous();
    ExpectNoSession(client);

    const Json::Value answer = client.Check(CentreSession("alice"));
    EXPECT_EQ(answer["result"].asInt(), 200);
    EXPECT_EQ(answer["uid"].asString(), IdOf("alice"));
    EXPECT_EQ(answer["sid"].asString().size(), 32U);
    EXPECT_EQ(client.Report("im", 1)["result"].asInt(), 200);
}

TEST_F(SearchSessionTest, AnUnknownSessionIsRefusedWithAllKeys)
{
    SearchClient client = Anonymous();
    for (const char* query : {"check.php?s=0123456789abcdef0123456789abcdef", "check.php?s=", "check.php",
                              "check.php?s=%", "check.php?t=1"})
    {
        const Json::Value answer = client.Get(query);
        EXPECT_EQ(answer["result"].asInt(), 401) << query;
        EXPECT_EQ(answer["uid"], Json::Value("")) << query;
        EXPECT_EQ(answer["sid"], Json::Value("")) << query;
    }
    ExpectNoSession(client);
}

TEST_F(SearchSessionTest, TheNetworkDiskAndTheSearchShareTheirSessions)
{
    SearchClient client = Anonymous();
    EXPECT_EQ(client.Http().Login("alice", "secret").status, 200);
    EXPECT_EQ(client.Report("im", 1)["result"].asInt(), 200);

    SearchClient other = LoggedInTo("bob");
    EXPECT_EQ(other.Http().Get("/object/capacity/info").status, 200);
}

TEST_F(SearchSessionTest, ALogoutNamesTheSessionThatItEnds)
{
    SearchClient client = Anonymous();
    const Json::Value login = client.Check(CentreSession("alice"));
    const Json::Value logout = client.Logout();
    EXPECT_EQ(logout["result"].asInt(), 200);
    EXPECT_EQ(logout["uid"], login["uid"]);
    EXPECT_EQ(logout["sid"], login["sid"]);
    ExpectNoSession(client);

    const Json::Value again = client.Logout();
    EXPECT_EQ(again["result"].asInt(), 200);
    EXPECT_EQ(again["uid"], Json::Value(""));
    EXPECT_EQ(again["sid"], Json::Value(""));
}

TEST_F(SearchSessionTest, EndsWithItsLifetimeAndIsOpenedAgain)
{
    const std::string session = CentreSession("alice");
    SearchClient client = Anonymous();
    client.Check(session);
    now_ += options_.lifetimes.service - 1;
    EXPECT_EQ(client.Report("im", 1)["result"].asInt(), 200);
    now_ += 1;
    ExpectNoSession(client);

    EXPECT_EQ(client.Check(session)["result"].asInt(), 200);
    EXPECT_EQ(client.Report("im", 1)["result"].asInt(), 200);
}

TEST_F(SearchSessionTest, EndsWhenTheAdminExpiresIt)
{
    SearchClient client = LoggedInTo("alice");
    Admin("sessions/expire", R"({"account":"alice"})");
    ExpectNoSession(client);
}

TEST_F(SearchSessionTest, AnswersAreCompressedInChunksOnRequest)
{
    SearchClient client = LoggedInTo("alice");
    client.Online();
    const RawAnswer answer = Exchange(
        application_->Port(), "POST /search/search.php HTTP/1.1\r\nHost: h\r\nAccept-Encoding: gzip\r\nCookie: " +
                                  client.Http().Cookie() + "\r\nContent-Length: 6\r\n\r\napp=im");
    EXPECT_EQ(answer.Header("Transfer-Encoding"), "chunked");
    EXPECT_EQ(answer.Header("Content-Encoding"), "gzip");
    EXPECT_EQ(answer.Header("Content-Length"), "");
}

TEST_F(SearchSessionTest, OtherPathsAndMethodsAreNotFound)
{
    SearchClient client = LoggedInTo("alice");
    EXPECT_EQ(client.Http().Get("/search/update.php").status, 404);
    EXPECT_EQ(client.Http().Get("/search/login_rest.php?u=alice&p=secret").status, 404);
    EXPECT_EQ(client.Http().PostJson("/search/status.php", "st=1&app=im").status, 404);
    EXPECT_EQ(client.Http().Get("/search/statusXphp?st=1&app=im").status, 404);
}

} // namespace quorvex::services::test
