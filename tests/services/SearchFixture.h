#pragma once

#include "support/ServiceFixture.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvex::services::test
{

// One client of the online-user search. Whatever it asks, it expects an answer with HTTP status 200, a "result" and a
// text "errorinfo", and gives back the object.
class SearchClient
{
public:
    explicit SearchClient(int port) : client_(port) {}

    Json::Value Check(const std::string& session) { return Get("check.php?s=" + session); }
    Json::Value Logout() { return Get("logout_rest.php"); }
    Json::Value Report(const std::string& app, int status);
    Json::Value Get(const std::string& pathAndQuery);
    Json::Value Post(const std::string& path, const std::string& form);

    // These expect success.
    void Online(const std::string& app = "im") { EXPECT_EQ(Report(app, 1)["result"].asInt(), 200); }
    void Update(const std::string& form) { EXPECT_EQ(Post("update.php", form)["result"].asInt(), 200) << form; }
    std::vector<std::string> Find(const std::string& form);
    int Count(const std::string& form);

    ServiceClient& Http() { return client_; }

private:
    static Json::Value Expect(const Reply& reply);

    ServiceClient client_;
};

// The way in which clients encode values.
std::string Escape(std::string_view value);

// A text with every byte that a client can send in a value.
std::string AllBytes();

class SearchFixture : public ServiceFixture
{
protected:
    // A user-centre session of the account, which comes into being if need be.
    std::string CentreSession(const std::string& account);
    SearchClient LoggedInTo(const std::string& account);

    // The same, and online in "im" with these values there.
    SearchClient OnlineWith(const std::string& account, const std::string& fields);

    std::string IdOf(const std::string& account);
    std::vector<std::string> IdsOf(const std::vector<std::string>& accounts);
};

} // namespace quorvex::services::test
