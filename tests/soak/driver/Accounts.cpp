#include "Accounts.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include <httplib.h>
#include <json/reader.h>
#include <json/value.h>

namespace quorvex::soak
{

namespace
{

constexpr const char* kPassword = "secret";

Json::Value Post(httplib::Client& client, const std::string& path, const std::string& body)
{
    const httplib::Result result = client.Post(path, body, "application/json");
    if (!result || result->status != 200)
    {
        throw std::runtime_error("the services refuse " + path);
    }
    Json::Value value;
    std::istringstream(result->body) >> value;
    return value;
}

} // namespace

std::vector<std::string> AccountNames(int threads)
{
    std::vector<std::string> names;
    for (int i = 0; i < threads; ++i)
    {
        names.push_back("owner" + std::to_string(i));
        names.push_back("guest" + std::to_string(i));
    }
    return names;
}

std::vector<std::string> AccountOptions(int threads)
{
    std::vector<std::string> options;
    for (const std::string& name : AccountNames(threads))
    {
        options.insert(options.end(), {"--user", name + ':' + kPassword});
    }
    return options;
}

void WriteAccounts(int port, int threads, const std::filesystem::path& file)
{
    std::ofstream lines(file);
    for (const std::string& name : AccountNames(threads))
    {
        httplib::Client client("127.0.0.1", port);
        const Json::Value login = Post(client, "/object/passport/login",
                                       R"({"account":")" + name + R"(","password":")" + kPassword + R"("})");
        const Json::Value ticket = Post(client, "/admin/tickets", R"({"account":")" + name + R"(","lifetime":86400})");
        lines << name << ' ' << kPassword << ' ' << login["uap_uid"].asInt64() << ' ' << login["uap_sid"].asString()
              << ' ' << ticket["blowfish"].asString() << ' ' << ticket["ticket"].asString() << '\n';
    }
    if (!lines.flush())
    {
        throw std::runtime_error("cannot write " + file.string());
    }
}

} // namespace quorvex::soak
