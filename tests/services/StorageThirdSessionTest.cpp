#include "support/RawHttp.h"
#include "support/StorageCalls.h"
#include "support/ThirdCalls.h"

namespace quorvex::services::test
{

namespace
{

class StorageThirdSessionTest : public ServiceFixture
{
protected:
    ThirdClient With(const std::string& cookie) { return {application_->Port(), cookie}; }

    std::string CentreSession() { return LoggedIn().Login("alice", "secret").Text("uap_sid"); }
};

} // namespace

TEST_F(StorageThirdSessionTest, TakesTheCookieOfALogin)
{
    ServiceClient client(application_->Port());
    StorageLogin(client, "alice", "secret");
    EXPECT_EQ(CodeOf(With(client.Cookie()).PutPicture("p.jpg", "x")), 200);
    EXPECT_EQ(With(client.Cookie()).GetPicture("0", "p.jpg").body, "x");
    EXPECT_EQ(With("other=1; " + client.Cookie() + "; Path=/").GetPicture("0", "p.jpg").body, "x");

    client.Get("/storage/logout_rest.php");
    EXPECT_EQ(With(client.Cookie()).GetPicture("0", "p.jpg").status, 403);
}

TEST_F(StorageThirdSessionTest, TakesAUserCentreSessionAsACookie)
{
    const std::string session = CentreSession();
    const ThirdClient client = With("session=" + session);
    EXPECT_EQ(CodeOf(client.PutPicture("p.jpg", "x")), 200);
    const Reply picture = client.GetPicture("0", "p.jpg");
    EXPECT_EQ(picture.body, "x");
    EXPECT_EQ(picture.Header("Set-Cookie"), "");
    EXPECT_EQ(client.GetFile("1", client.PutFile("f", "content", 4)).body, "content");
    // It outlives the sessions of logins, and stands in for one that has ended.
    ServiceClient ended = LoggedIn();
    now_ += 1801;
    EXPECT_EQ(With(ended.Cookie() + "; session=" + session).GetPicture("0", "p.jpg").body, "x");
    EXPECT_EQ(With(ended.Cookie()).GetPicture("0", "p.jpg").status, 403);
    now_ += 24L * 60 * 60;
    EXPECT_EQ(client.GetPicture("0", "p.jpg").status, 403);
}

TEST_F(StorageThirdSessionTest, TheUserCentreSessionOpensNothingElse)
{
    const RawAnswer answer = Exchange(
        application_->Port(),
        "GET /storage/ods/files_rest.php HTTP/1.1\r\nHost: h\r\nCookie: session=" + CentreSession() + "\r\n\r\n");
    EXPECT_EQ(ResultOf(Reply{answer.status, {}, answer.body}), 403);
}

TEST_F(StorageThirdSessionTest, WithoutALiveSessionNothingIsDone)
{
    ServiceClient loggedIn = LoggedIn();
    const std::string session = CentreSession();
    const std::string key = PutInDepot(loggedIn, "d", "depot");
    const std::string token = loggedIn.Cookie().substr(loggedIn.Cookie().find('=') + 1);
    for (const std::string& cookie : {std::string(), std::string("session="), std::string("session=unknown"),
                                      "quorvex_session=" + session, "session=" + token, session, ";;=;" + session})
    {
        const ThirdClient client = With(cookie);
        for (const Reply& reply : {client.PutPicture("p.jpg", "x"), client.PutBlock(ThirdBlock{})})
        {
            EXPECT_EQ(reply.status, 200);
            EXPECT_EQ(CodeOf(reply), 403) << cookie;
            EXPECT_EQ(reply.Text("msg"), "the session has expired");
            EXPECT_EQ(reply.Text("fkey"), "");
            EXPECT_EQ(reply.Text("ticket"), "");
            EXPECT_TRUE(reply.Json()["fsize"].isInt());
        }
        EXPECT_EQ(client.GetPicture("0", "p.jpg").status, 403);
        EXPECT_EQ(client.GetFile("1", key).status, 403);
        EXPECT_EQ(client.GetFile("1", key, "bytes=0-1").status, 403);
    }
    EXPECT_EQ(UsedInDepot(loggedIn), 5U);
}

TEST_F(StorageThirdSessionTest, AnswersCloseTheConnectionThatClientsWouldKeep)
{
    EXPECT_EQ(With("").PutPicture("p.jpg", "x").Header("Connection"), "close");
    EXPECT_EQ(With("").GetPicture("0", "p.jpg").Header("Connection"), "close");
}

} // namespace quorvex::services::test
