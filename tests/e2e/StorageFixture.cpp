#include "StorageFixture.h"

#include "support/ServiceFixture.h"

namespace quorvex::e2e
{

std::string StorageFixture::StorageServer() const
{
    return "http://127.0.0.1:" + std::to_string(port) + "/storage";
}

std::vector<std::string> StorageFixture::Command(std::vector<std::string> arguments, const Account& account) const
{
    arguments.insert(arguments.begin(), group);
    arguments.insert(arguments.end(),
                     {"--server", StorageServer(), "--user", account.name, "--password", account.password, "--json"});
    return arguments;
}

Json::Value StorageFixture::Admin(const std::string& path, const Json::Value& body) const
{
    services::test::ServiceClient client(port);
    const services::test::Reply reply =
        client.PostJson("/admin/" + path, Json::writeString(Json::StreamWriterBuilder(), body), "application/json");
    EXPECT_EQ(reply.status, 200) << reply.body;
    return reply.Json();
}

void StorageFixture::EndSessions(const Account& account, const char* kind) const
{
    Json::Value body;
    body["account"] = account.name;
    body["kind"] = kind;
    EXPECT_GE(Admin("sessions/expire", body)["expired"].asInt(), 1);
}

std::string StorageFixture::UidOf(const Account& account) const
{
    Json::Value body;
    body["account"] = account.name;
    body["password"] = account.password;
    return std::to_string(Admin("users", body)["uap_uid"].asInt());
}

} // namespace quorvex::e2e
