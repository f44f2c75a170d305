#include "SearchFixture.h"

#include <cctype>

namespace quorvex::services::test
{

Json::Value SearchClient::Report(const std::string& app, int status)
{
    return Get("status.php?st=" + std::to_string(status) + "&app=" + app);
}

Json::Value SearchClient::Get(const std::string& pathAndQuery)
{
    return Expect(client_.Get("/search/" + pathAndQuery));
}

Json::Value SearchClient::Post(const std::string& path, const std::string& form)
{
    return Expect(client_.PostJson("/search/" + path, form));
}

std::vector<std::string> SearchClient::Find(const std::string& form)
{
    const Json::Value answer = Post("search.php", form);
    EXPECT_EQ(answer["result"].asInt(), 200) << form;
    std::vector<std::string> users;
    for (const Json::Value& user : answer["users"])
    {
        EXPECT_TRUE(user.isString());
        users.push_back(user.asString());
    }
    return users;
}

int SearchClient::Count(const std::string& form)
{
    const Json::Value answer = Post("count.php", form);
    EXPECT_EQ(answer["result"].asInt(), 200) << form;
    return answer["total"].asInt();
}

Json::Value SearchClient::Expect(const Reply& reply)
{
    EXPECT_EQ(reply.status, 200) << reply.body;
    Json::Value answer = reply.Json();
    EXPECT_TRUE(answer["result"].isInt()) << reply.body;
    EXPECT_TRUE(answer["errorinfo"].isString()) << reply.body;
    EXPECT_EQ(answer["errorinfo"].asString().empty(), answer["result"].asInt() == 200) << reply.body;
    return answer;
}

std::string Escape(std::string_view value)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char letter : value)
    {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte < 0x80 && std::isalnum(byte) != 0)
        {
            text += letter;
            continue;
        }
        text += '%';
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

std::string AllBytes()
{
    std::string bytes;
    for (int byte = 1; byte <= 255; ++byte)
    {
        bytes += static_cast<char>(static_cast<unsigned char>(byte));
    }
    return bytes;
}

std::string SearchFixture::CentreSession(const std::string& account)
{
    application_->GetAccounts().Ensure(account, "secret");
    return ServiceClient(application_->Port()).Login(account, "secret").Text("uap_sid");
}

SearchClient SearchFixture::LoggedInTo(const std::string& account)
{
    SearchClient client(application_->Port());
    EXPECT_EQ(client.Check(CentreSession(account))["result"].asInt(), 200);
    return client;
}

SearchClient SearchFixture::OnlineWith(const std::string& account, const std::string& fields)
{
    SearchClient client = LoggedInTo(account);
    client.Online();
    client.Update("app=im" + fields);
    return client;
}

std::string SearchFixture::IdOf(const std::string& account)
{
    return std::to_string(application_->GetAccounts().Ensure(account, "secret"));
}

std::vector<std::string> SearchFixture::IdsOf(const std::vector<std::string>& accounts)
{
    std::vector<std::string> ids;
    ids.reserve(accounts.size());
    for (const std::string& account : accounts)
    {
        ids.push_back(IdOf(account));
    }
    return ids;
}

} // namespace quorvex::services::test
