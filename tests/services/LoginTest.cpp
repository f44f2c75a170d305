#include "common/LoginThrottle.h"
#include "support/RawHttp.h"
#include "support/ServiceFixture.h"

namespace quorvex::services::test
{

namespace
{

class LoginTest : public ServiceFixture
{
protected:
    ServiceClient Anonymous() { return ServiceClient(application_->Port()); }

    Reply CheckSession(ServiceClient& client, const std::string& session)
    {
        return client.PostJson("/object/passport/check", R"({"uap_sid":")" + session + R"("})");
    }

    Reply LoginTicket(ServiceClient& client, const Json::Value& ticket)
    {
        return client.PostJson("/object/passport/loginticket", R"({"blowfish":")" + ticket["blowfish"].asString() +
                                                                   R"(","ticket":")" + ticket["ticket"].asString() +
                                                                   R"("})");
    }

    static int CapacityStatus(ServiceClient& client) { return client.Get("/object/capacity/info").status; }
};

} // namespace

TEST_F(LoginTest, WithPasswordOpensASession)
{
    ServiceClient client = Anonymous();
    EXPECT_EQ(CapacityStatus(client), 403);

    const Reply reply = client.Login("alice", "secret");
    EXPECT_EQ(reply.status, 200);
    EXPECT_TRUE(reply.Json()["uap_uid"].isInt());
    EXPECT_FALSE(reply.Text("uap_sid").empty());
    EXPECT_TRUE(reply.Json()["QVUserCenterLogin"].isString());
    EXPECT_NE(reply.Header("Set-Cookie").find("; Path=/; HttpOnly; Max-Age=1800"), std::string::npos);
    EXPECT_EQ(CapacityStatus(client), 200);
}

TEST_F(LoginTest, WithAWrongPasswordOrAccountIsRefused)
{
    ServiceClient client = Anonymous();
    EXPECT_EQ(client.Login("alice", "wrong").status, 401);
    const Reply reply = client.Login("nobody", "secret");
    EXPECT_EQ(reply.status, 401);
    EXPECT_EQ(reply.Text("msg"), "account or password is not correct");
    EXPECT_EQ(CapacityStatus(client), 403);
}

TEST_F(LoginTest, WithTheUserCentreSessionOfAnEarlierLogin)
{
    ServiceClient first = Anonymous();
    const Reply login = first.Login("alice", "secret");

    ServiceClient second = Anonymous();
    const Reply reply = CheckSession(second, login.Text("uap_sid"));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.Json()["uap_uid"], login.Json()["uap_uid"]);
    EXPECT_EQ(CapacityStatus(second), 200);

    ServiceClient third = Anonymous();
    EXPECT_EQ(CheckSession(third, "0123456789abcdef0123456789abcdef").status, 401);
    EXPECT_EQ(CheckSession(third, "").status, 401);
}

TEST_F(LoginTest, ACookieIsNoUserCentreSession)
{
    ServiceClient client = LoggedIn();
    const std::string cookie = client.Cookie().substr(client.Cookie().find('=') + 1);
    EXPECT_EQ(CheckSession(client, cookie).status, 401);
}

TEST_F(LoginTest, WithATicketUntilItsLifetimeEnds)
{
    const Json::Value ticket = Admin("tickets", R"({"account":"alice","lifetime":100})").Json();
    ServiceClient client = Anonymous();
    EXPECT_EQ(LoginTicket(client, ticket).status, 200);
    EXPECT_EQ(CapacityStatus(client), 200);
    EXPECT_EQ(LoginTicket(client, ticket).status, 200);

    now_ += 100;
    EXPECT_EQ(LoginTicket(client, ticket).status, 401);
}

TEST_F(LoginTest, WithATicketForOneUse)
{
    const Json::Value ticket = Admin("tickets", R"({"account":"alice","single_use":true})").Json();
    ServiceClient client = Anonymous();
    EXPECT_EQ(LoginTicket(client, ticket).status, 200);
    EXPECT_EQ(LoginTicket(client, ticket).status, 401);
}

TEST_F(LoginTest, ATicketNeedsBothItsTexts)
{
    Json::Value ticket = Admin("tickets", R"({"account":"alice"})").Json();
    ticket["blowfish"] = "0123456789abcdef0123456789abcdef";
    ServiceClient client = Anonymous();
    EXPECT_EQ(LoginTicket(client, ticket).status, 401);
}

TEST_F(LoginTest, EndsWithTheSessionsLifetime)
{
    ServiceClient client = LoggedIn();
    now_ += options_.lifetimes.service - 1;
    EXPECT_EQ(CapacityStatus(client), 200);
    now_ += 1;
    EXPECT_EQ(CapacityStatus(client), 403);
    EXPECT_EQ(client.UploadWhole("a", "content").status, 403);
    EXPECT_EQ(client.Login("alice", "secret").status, 200);
    EXPECT_EQ(CapacityStatus(client), 200);
}

TEST_F(LoginTest, EndsWhenTheAdminExpiresIt)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    EXPECT_EQ(Admin("sessions/expire", R"({"account":"alice"})").Json()["expired"].asInt(), 1);
    EXPECT_EQ(CapacityStatus(alice), 403);
    EXPECT_EQ(CapacityStatus(bob), 200);
    Admin("sessions/expire", "{}");
    EXPECT_EQ(CapacityStatus(bob), 403);
}

TEST_F(LoginTest, TheUserCentreSessionOutlivesExpiredServiceSessions)
{
    ServiceClient client = Anonymous();
    const std::string session = client.Login("alice", "secret").Text("uap_sid");
    Admin("sessions/expire", "{}");
    EXPECT_EQ(CheckSession(client, session).status, 200);
    Admin("sessions/expire", R"({"kind":"centre"})");
    EXPECT_EQ(CheckSession(client, session).status, 401);
}

TEST_F(LoginTest, EndsWithTheLogout)
{
    ServiceClient client = LoggedIn();
    const std::string cookie = client.Cookie();
    EXPECT_EQ(client.Get("/object/passport/logout").status, 200);
    const RawAnswer answer = Exchange(
        application_->Port(), "GET /object/capacity/info HTTP/1.1\r\nHost: h\r\nCookie: " + cookie + "\r\n\r\n");
    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(client.Get("/object/passport/logout").status, 200);
}

TEST_F(LoginTest, SurvivesARestartOfTheServices)
{
    ServiceClient client = LoggedIn();
    const std::string cookie = client.Cookie();
    Restart();
    const RawAnswer answer =
        Exchange(application_->Port(),
                 "GET /object/capacity/info HTTP/1.1\r\nHost: h\r\nCookie: theme=dark; " + cookie + "\r\n\r\n");
    EXPECT_EQ(answer.status, 200);
}

TEST_F(LoginTest, BodiesThatAreNoObjectAreRefused)
{
    ServiceClient client = Anonymous();
    const std::string bodies[] = {"",
                                  "{",
                                  "[]",
                                  "null",
                                  R"({"account":"a"b","password":"c"})",
                                  R"({"account":"alice","password":"a password that was cut at the en)",
                                  R"({"account":"a\b\q","password":"c"})",
                                  R"({"account":1,"password":"c"})",
                                  R"({"account":"alice"})",
                                  R"({"account":"x","account":"alice","password":"secret"})",
                                  "{\"account\":\"\xE4\xB8\",\"password\":\"c\"}",
                                  std::string(5000, '[')};
    for (const std::string& body : bodies)
    {
        const Reply reply = client.PostJson("/object/passport/login", body);
        EXPECT_EQ(reply.status, 400) << body.substr(0, 100);
        EXPECT_FALSE(reply.Text("msg").empty());
    }
    EXPECT_EQ(client.PostJson("/object/passport/login", std::string(200000, ' ')).status, 413);
}

TEST_F(LoginTest, TooManyWrongPasswordsMakeTheAccountWait)
{
    ServiceClient client = Anonymous();
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_EQ(client.Login("alice", "guess").status, 401);
    }
    EXPECT_EQ(client.Login("alice", "secret").status, 429);
    EXPECT_EQ(client.Login("bob", "guess").status, 401);
    now_ += 60;
    EXPECT_EQ(client.Login("alice", "secret").status, 200);
}

TEST_F(LoginTest, AccountsAreKeptAndTakeANewPassword)
{
    const Reply first = Admin("users", R"({"account":"carol","password":"one"})");
    const Reply second = Admin("users", R"({"account":"carol","password":"two"})");
    EXPECT_EQ(first.Json()["uap_uid"], second.Json()["uap_uid"]);
    ServiceClient client = Anonymous();
    EXPECT_EQ(client.Login("carol", "one").status, 401);
    EXPECT_EQ(client.Login("carol", "two").status, 200);
}

TEST_F(LoginTest, TheAdminSurfaceTakesOnlyJsonAndCanBeLeftOut)
{
    ServiceClient client = Anonymous();
    EXPECT_EQ(client.PostJson("/admin/tickets", R"({"account":"alice"})").status, 415);
    EXPECT_EQ(Admin("tickets", R"({"account":"nobody"})").status, 404);
    EXPECT_EQ(Admin("tickets", R"({"account":"alice","lifetime":"long"})").status, 400);
    EXPECT_EQ(Admin("sessions/expire", R"({"kind":"all"})").status, 400);

    Restart([](Application::Options& options) { options.hasAdmin = false; });
    EXPECT_EQ(Admin("tickets", R"({"account":"alice"})").status, 404);
}

} // namespace quorvex::services::test
