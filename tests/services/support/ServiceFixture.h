#pragma once

#include "Application.h"
#include "support/TemporaryFolder.h"
#include "support/UploadForms.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <httplib.h>
#include <json/value.h>

namespace quorvex::services::test
{

struct Reply
{
    int status = 0;
    httplib::Headers headers;
    std::string body;

    Json::Value Json() const;
    std::string Text(const char* key) const { return Json()[key].asString(); }
    std::string Header(const std::string& name) const;
};

// One client of the services with the cookie that its login gave it.
class ServiceClient
{
public:
    explicit ServiceClient(int port);

    Reply Login(const std::string& account, const std::string& password);
    Reply PostJson(const std::string& path, const std::string& body, const char* contentType = JsonFormType);
    Reply PostForm(const std::string& form, const char* contentType);
    Reply Get(const std::string& path, const httplib::Headers& headers = {});

    Reply UploadWhole(const std::string& name, std::string_view content);
    Reply CreateLarge(const std::string& name, std::string_view content);
    Reply UploadBlock(const std::string& key, std::uint64_t position, std::string_view content);
    Reply FinishLarge(const std::string& key);
    Reply Download(const std::string& key, const std::string& range = {});
    std::uint64_t UsedSpace();

    const std::string& Cookie() const { return cookie_; }
    int Port() const { return port_; }

    // What the clients send their JSON as.
    static constexpr const char* JsonFormType = "application/x-www-form-urlencoded";

private:
    Reply Keep(const httplib::Result& result);
    httplib::Headers WithCookie(httplib::Headers headers) const;

    int port_;
    httplib::Client client_;
    std::string cookie_;
};

std::string KeyBody(const std::string& key);

// The services in this process, with the account alice and a clock that stands still until the test moves it.
class ServiceFixture : public ::testing::Test
{
protected:
    ServiceFixture();

    // Ends the services, changes what `change` wants and starts them again on the same state.
    void Restart(const std::function<void(Application::Options&)>& change = [](Application::Options&) {});

    ServiceClient LoggedIn(const std::string& account = "alice");
    Reply Admin(const std::string& path, const std::string& body);

    TemporaryFolder folder_;
    std::atomic<std::int64_t> now_{1'700'000'000};
    Application::Options options_;
    std::optional<Application> application_;
};

} // namespace quorvex::services::test
