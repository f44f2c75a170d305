#include "StorageFixture.h"

#include <map>

namespace quorvex::e2e
{

namespace
{

class Doctor : public StorageFixture
{
protected:
    Doctor() : StorageFixture("depot") {}

    ConsoleRun Visit(const std::string& server, const std::vector<std::string>& options) const
    {
        std::vector<std::string> arguments = {"doctor", "--server", server, "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunConsole(arguments);
    }

    const std::vector<std::string> login = {"--user", kAnn.name, "--password", kAnn.password};
};

/// The state of each step, as "netdisk login".
std::map<std::string, std::string> States(const Json::Value& found)
{
    std::map<std::string, std::string> states;
    for (const Json::Value& service : found["services"])
    {
        for (const Json::Value& step : service["steps"])
        {
            states[service["service"].asString() + ' ' + step["step"].asString()] = step["state"].asString();
        }
    }
    return states;
}

/// The first step that has failed, with what is wrong there.
Json::Value FirstFailed(const Json::Value& found)
{
    for (const Json::Value& service : found["services"])
    {
        for (const Json::Value& step : service["steps"])
        {
            if (step["state"].asString() == "failed")
            {
                return step;
            }
        }
    }
    return {};
}

} // namespace

TEST_F(Doctor, FindsEverythingWell)
{
    const ConsoleRun run = Visit(Server(), login);
    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    const auto states = States(run.Json());
    for (const char* const step :
         {"netdisk address", "netdisk resolve", "netdisk connect", "netdisk answer", "netdisk login", "netdisk quota",
          "netdisk listing", "netdisk upload", "netdisk download", "netdisk remove", "storage login", "storage space",
          "storage upload", "storage download", "storage remove", "storage second generation",
          "storage third generation", "search login", "search count"})
    {
        ASSERT_TRUE(states.contains(step)) << step << run.output;
        EXPECT_EQ(states.at(step), "ok") << step << run.output;
    }
}

TEST_F(Doctor, LeavesNothingBehind)
{
    ASSERT_EQ(Visit(Server(), login).exitStatus, 0);
    const ConsoleRun quota = RunConsole(
        {"netdisk", "quota", "--server", Server(), "--user", kAnn.name, "--password", kAnn.password, "--json"});
    EXPECT_EQ(quota.Json()["used"].asUInt64(), 0U);
    EXPECT_TRUE(Done({"ls"})["files"].empty());
}

TEST_F(Doctor, LooksAtWhatNeedsNoLoginWithoutOne)
{
    const ConsoleRun run = Visit(Server(), {});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(States(run.Json()).at("search answer"), "ok");
    EXPECT_EQ(States(run.Json()).at("search login"), "skipped");
}

TEST_F(Doctor, TellsOfAWrongPassword)
{
    const ConsoleRun run = Visit(Server(), {"--user", kAnn.name, "--password", "wrong"});
    EXPECT_EQ(run.exitStatus, 1);
    const Json::Value found = run.Json();
    EXPECT_EQ(found["code"].asInt(), 401);
    EXPECT_EQ(found["operation"].asString(), "UserLogin");
    EXPECT_EQ(States(found).at("netdisk answer"), "ok");
    EXPECT_EQ(States(found).at("netdisk login"), "failed");
    EXPECT_EQ(States(found).at("netdisk upload"), "skipped");
}

TEST_F(Doctor, TellsOfAWrongPath)
{
    const ConsoleRun run = Visit(Server() + "x", login);
    EXPECT_EQ(run.exitStatus, 1);
    const Json::Value step = FirstFailed(run.Json());
    EXPECT_EQ(step["step"].asString(), "login");
    EXPECT_NE(step["detail"].asString().find("is the path right"), std::string::npos) << step;
}

TEST_F(Doctor, TellsOfEachServiceByItsOwnAddress)
{
    const ConsoleRun run = Visit(Server(), {"--storage", StorageServer(), "--search", "search.example"});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(States(run.Json()).at("storage answer"), "ok");
    EXPECT_EQ(States(run.Json()).at("search address"), "failed");
    EXPECT_EQ(States(run.Json()).at("search connect"), "skipped");
}

TEST_F(Doctor, TellsOfAServiceThatDoesNotRun)
{
    services.reset();
    const ConsoleRun run = Visit(Server(), login);
    EXPECT_EQ(run.exitStatus, 1);
    const Json::Value step = FirstFailed(run.Json());
    EXPECT_EQ(step["step"].asString(), "connect");
    EXPECT_NE(step["detail"].asString().find("is the service running"), std::string::npos) << step;
}

TEST_F(Doctor, SpeaksPlainly)
{
    const ConsoleRun run = RunConsole({"doctor", "--server", "nonsense"});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.output.find("failed   address             the address nonsense is not of the form"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.errors.find("steps failed; the first is netdisk, address"), std::string::npos) << run.errors;
}

} // namespace quorvex::e2e
