#include "support/RawHttp.h"
#include "support/StorageCalls.h"

namespace quorvex::services::test
{

namespace
{

class StorageLoginTest : public ServiceFixture
{
protected:
    ServiceClient Anonymous() { return ServiceClient(application_->Port()); }

    static Reply Check(ServiceClient& client, const std::string& session)
    {
        return client.Get("/storage/check.php?s=" + session);
    }

    static Reply Logout(ServiceClient& client) { return client.Get("/storage/logout_rest.php"); }

    // The query's bytes as they are, which a client's library would escape.
    Json::Value LoginWith(const std::string& query)
    {
        const RawAnswer answer =
            Exchange(application_->Port(),
                     "GET /storage/login_rest.php?" + query + " HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n");
        EXPECT_EQ(answer.status, 200);
        return Reply{answer.status, {}, answer.body}.Json();
    }
};

// What the parsers of all answers to a login or logout want.
void ExpectLoginKeys(const Reply& reply)
{
    EXPECT_EQ(reply.status, 200);
    const Json::Value json = reply.Json();
    EXPECT_TRUE(json["result"].isInt()) << reply.body;
    EXPECT_TRUE(json["uid"].isString()) << reply.body;
    EXPECT_TRUE(json["sid"].isString()) << reply.body;
    EXPECT_TRUE(json["errorinfo"].isString()) << reply.body;
}

} // namespace

TEST_F(StorageLoginTest, WithNameAndPasswordOpensASession)
{
    ServiceClient client = Anonymous();
    EXPECT_EQ(ResultOf(ListEmoticons(client)), 403);
    const Reply reply = StorageLogin(client, "alice", "secret");
    ExpectLoginKeys(reply);
    EXPECT_EQ(ResultOf(reply), 200);
    EXPECT_EQ(reply.Text("uid"), "1");
    EXPECT_FALSE(reply.Text("sid").empty());
    EXPECT_EQ(reply.Text("errorinfo"), "");
    EXPECT_EQ(ResultOf(ListEmoticons(client)), 200);
}

TEST_F(StorageLoginTest, TheSessionsIdDoesNotOpenIt)
{
    ServiceClient client = Anonymous();
    const std::string sid = StorageLogin(client, "alice", "secret").Text("sid");
    EXPECT_EQ(client.Cookie().find(sid), std::string::npos);
    ServiceClient other = Anonymous();
    EXPECT_EQ(ResultOf(Check(other, sid)), 401);
    EXPECT_EQ(ResultOf(ListEmoticons(other)), 403);
}

TEST_F(StorageLoginTest, WithAWrongPasswordIsRefusedWithAllKeys)
{
    ServiceClient client = Anonymous();
    for (const char* password : {"wrong", ""})
    {
        const Reply reply = StorageLogin(client, "alice", password);
        ExpectLoginKeys(reply);
        EXPECT_EQ(ResultOf(reply), 401);
        EXPECT_EQ(reply.Text("uid"), "");
        EXPECT_EQ(reply.Text("errorinfo"), "account or password is not correct");
    }
    EXPECT_EQ(ResultOf(StorageLogin(client, "nobody", "secret")), 401);
    EXPECT_EQ(ResultOf(client.Get("/storage/login_rest.php")), 401);
    EXPECT_EQ(ResultOf(ListEmoticons(client)), 403);
}

TEST_F(StorageLoginTest, GuessesCountWhereverTheyAreMade)
{
    ServiceClient client = Anonymous();
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(ResultOf(StorageLogin(client, "alice", "wrong")), 401);
        EXPECT_EQ(client.Login("alice", "wrong").status, 401);
    }
    ExpectLoginKeys(StorageLogin(client, "alice", "secret"));
    EXPECT_EQ(ResultOf(StorageLogin(client, "alice", "secret")), 429);
    now_ += 61;
    EXPECT_EQ(ResultOf(StorageLogin(client, "alice", "secret")), 200);
}

TEST_F(StorageLoginTest, TakesThePasswordEscapedOrNot)
{
    application_->GetAccounts().Ensure("bob", "a+b&c=d%zz?");
    application_->GetAccounts().Ensure("\xD0\x98\xD0\xB2\xD0\xB0\xD0\xBD", "100%");
    EXPECT_EQ(LoginWith("u=bob&p=a+b&c=d%zz?")["result"].asInt(), 200);
    EXPECT_EQ(LoginWith("u=b%6Fb&p=a%2Bb%26c%3Dd%25zz%3f")["result"].asInt(), 200);
    EXPECT_EQ(LoginWith("u=bob&p=a%20b&c=d%zz?")["result"].asInt(), 401);
    EXPECT_EQ(LoginWith("u=%D0%98%D0%B2%D0%B0%D0%BD&p=100%")["result"].asInt(), 200);
}

TEST_F(StorageLoginTest, WithTheUserCentreSession)
{
    const std::string session = LoggedIn().Login("alice", "secret").Text("uap_sid");
    ServiceClient client = Anonymous();
    const Reply reply = Check(client, session);
    ExpectLoginKeys(reply);
    EXPECT_EQ(ResultOf(reply), 200);
    EXPECT_EQ(reply.Text("uid"), "1");
    EXPECT_EQ(ResultOf(ListEmoticons(client)), 200);

    ServiceClient other = Anonymous();
    for (const char* unknown : {"0123456789abcdef0123456789abcdef", ""})
    {
        const Reply refused = Check(other, unknown);
        ExpectLoginKeys(refused);
        EXPECT_EQ(ResultOf(refused), 401);
    }
    EXPECT_EQ(Admin("sessions/expire", R"({"kind":"centre"})").status, 200);
    EXPECT_EQ(ResultOf(Check(other, session)), 401);
}

TEST_F(StorageLoginTest, ALogoutTellsWhatTheLoginTold)
{
    ServiceClient client = Anonymous();
    const Reply login = StorageLogin(client, "alice", "secret");
    const Reply logout = Logout(client);
    ExpectLoginKeys(logout);
    EXPECT_EQ(ResultOf(logout), 200);
    EXPECT_EQ(logout.Text("uid"), login.Text("uid"));
    EXPECT_EQ(logout.Text("sid"), login.Text("sid"));
    EXPECT_EQ(ResultOf(ListEmoticons(client)), 403);

    const Reply again = Logout(client);
    ExpectLoginKeys(again);
    EXPECT_EQ(ResultOf(again), 200);
    EXPECT_EQ(again.Text("uid"), "");
}

TEST_F(StorageLoginTest, AnEndedSessionShowsWithAllKeysThatClientsWant)
{
    ServiceClient client = Anonymous();
    StorageLogin(client, "alice", "secret");
    now_ += 1801;
    const auto expectResult = [](const Reply& reply, int status, const std::vector<std::string>& keys) {
        EXPECT_EQ(reply.status, status) << reply.body;
        EXPECT_EQ(ResultOf(reply), 403) << reply.body;
        EXPECT_EQ(reply.Text("errorinfo"), "the session has expired");
        for (const std::string& key : keys)
        {
            EXPECT_TRUE(reply.Json().isMember(key)) << reply.body;
        }
    };
    expectResult(PutPicture(client, "a.png", "a"), 200, {"fkey", "fsize"});
    expectResult(PutEmoticon(client, "a.gif", "a"), 200, {"fkey", "fsize"});
    expectResult(RemoveEmoticon(client, "a.gif"), 200, {});
    expectResult(ListEmoticons(client), 200, {"files"});
    EXPECT_TRUE(ListEmoticons(client).Json()["files"].isArray());
    expectResult(CreateInDepot(client, "a", "a"), 403, {"fkey", "fsize"});
    expectResult(PutChunk(client, "key", 0, "a"), 200, {});
    expectResult(FinishInDepot(client, "key"), 200, {});
    expectResult(RenewInDepot(client, "key"), 200, {});
    expectResult(RemoveFromDepot(client, "key"), 200, {});
    expectResult(ListDepot(client), 200, {"files"});
    expectResult(DepotSpace(client), 200, {"uid", "totalspace", "totalsize", "freespace"});
    EXPECT_EQ(GetPicture(client, "a.png").status, 403);
    EXPECT_EQ(GetEmoticon(client, "1", "a.gif").status, 403);
    EXPECT_EQ(GetFromDepot(client, "1", "key", "bytes=0-0").status, 403);
}

TEST_F(StorageLoginTest, AnswersHaveTheirLengthAndCloseTheConnection)
{
    const RawAnswer answer = Exchange(
        application_->Port(), "GET /storage/ods/files_rest.php HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.Header("Content-Length"), std::to_string(answer.body.size()));
    EXPECT_EQ(answer.Header("Connection"), "close");
}

} // namespace quorvex::services::test
