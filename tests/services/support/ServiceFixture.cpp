#include "support/ServiceFixture.h"

#include <stdexcept>

#include <json/reader.h>

namespace quorvex::services::test
{

namespace
{

// Each guess costs an attacker less than in earnest, and each test less time.
constexpr int FewIterations = 1000;

} // namespace

Json::Value Reply::Json() const
{
    Json::Value value;
    Json::Reader reader;
    if (!reader.parse(body, value))
    {
        throw std::runtime_error("not JSON: " + body);
    }
    return value;
}

std::string Reply::Header(const std::string& name) const
{
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

ServiceClient::ServiceClient(int port) : port_(port), client_("127.0.0.1", port)
{
    client_.set_read_timeout(60);
}

Reply ServiceClient::Login(const std::string& account, const std::string& password)
{
    return PostJson("/object/passport/login", R"({"account":")" + account + R"(","password":")" + password + R"("})");
}

Reply ServiceClient::PostJson(const std::string& path, const std::string& body, const char* contentType)
{
    return Keep(client_.Post(path, WithCookie({}), body, contentType));
}

Reply ServiceClient::PostForm(const std::string& form, const char* contentType)
{
    return Keep(client_.Post("/object/file/upload", WithCookie({}), form, contentType));
}

Reply ServiceClient::Get(const std::string& path, const httplib::Headers& headers)
{
    return Keep(client_.Get(path, WithCookie(headers)));
}

Reply ServiceClient::UploadWhole(const std::string& name, std::string_view content)
{
    return PostForm(WholeForm(name, content), WholeFormType);
}

Reply ServiceClient::CreateLarge(const std::string& name, std::string_view content)
{
    return PostForm(CreateForm(name, content.size(), Md5Of(content)), BlockFormType);
}

Reply ServiceClient::UploadBlock(const std::string& key, std::uint64_t position, std::string_view content)
{
    return PostForm(BlockForm(key, position, content), BlockFormType);
}

Reply ServiceClient::FinishLarge(const std::string& key)
{
    return PostJson("/object/file/uploade", KeyBody(key));
}

Reply ServiceClient::Download(const std::string& key, const std::string& range)
{
    return Get("/object/file/down?fkey=" + key,
               range.empty() ? httplib::Headers{} : httplib::Headers{{"Range", range}});
}

std::uint64_t ServiceClient::UsedSpace()
{
    return Get("/object/capacity/info").Json()["used_space"].asUInt64();
}

Reply ServiceClient::Keep(const httplib::Result& result)
{
    if (!result)
    {
        throw std::runtime_error("no answer: " + httplib::to_string(result.error()));
    }
    const std::string cookie = result->get_header_value("Set-Cookie");
    if (!cookie.empty())
    {
        cookie_ = cookie.substr(0, cookie.find(';'));
    }
    return {result->status, result->headers, result->body};
}

httplib::Headers ServiceClient::WithCookie(httplib::Headers headers) const
{
    if (!cookie_.empty())
    {
        headers.emplace("Cookie", cookie_);
    }
    return headers;
}

std::string KeyBody(const std::string& key)
{
    return R"({"fkey":")" + key + R"("})";
}

ServiceFixture::ServiceFixture()
{
    options_.dataFolder = folder_.Path() / "data";
    options_.http.isQuiet = true;
    options_.hashIterations = FewIterations;
    options_.clock = [this] { return now_.load(); };
    Restart();
    application_->GetAccounts().Ensure("alice", "secret");
}

void ServiceFixture::Restart(const std::function<void(Application::Options&)>& change)
{
    application_.reset();
    change(options_);
    application_.emplace(options_);
    application_->Start();
}

ServiceClient ServiceFixture::LoggedIn(const std::string& account)
{
    application_->GetAccounts().Ensure(account, "secret");
    ServiceClient client(application_->Port());
    EXPECT_EQ(client.Login(account, "secret").status, 200);
    return client;
}

Reply ServiceFixture::Admin(const std::string& path, const std::string& body)
{
    return ServiceClient(application_->Port()).PostJson("/admin/" + path, body, "application/json");
}

} // namespace quorvex::services::test
