#include "DiskFixture.h"

#include "Application.h"
#include "support/ServiceFixture.h"

#include <atomic>

namespace quorvex::e2e
{

namespace
{

constexpr Account kCem{"cem", "buried"};

using Ids = std::vector<unsigned>;

/// The services in this process, with a clock that stands still until the test moves it, and three users of the search.
class Search : public DiskFixture
{
protected:
    void SetUp() override
    {
        options.dataFolder = folder.Path() / "data";
        options.http.isQuiet = true;
        options.hashIterations = 1;
        options.clock = [this] { return now.fetch_add(secondsPerLook); };
        StartApplication();
        for (const Account& account : {kAnn, kBob, kCem})
        {
            ids.push_back(Ensure(account.name, account.password));
        }
    }

    void StartApplication()
    {
        application.reset();
        application.emplace(options);
        application->Start();
        port = application->Port();
    }

    unsigned Ensure(const std::string& name, const std::string& password)
    {
        return static_cast<unsigned>(application->GetAccounts().Ensure(name, password));
    }

    std::string SearchServer() const { return "http://127.0.0.1:" + std::to_string(port) + "/search"; }

    std::vector<std::string> Command(std::vector<std::string> arguments, const Account& account) const override
    {
        arguments.insert(arguments.begin(), "search");
        arguments.insert(arguments.end(), {"--server", SearchServer(), "--user", account.name, "--password",
                                           account.password, "--json"});
        return arguments;
    }

    /// A command of whoever has the session.
    ConsoleRun RunInSession(std::vector<std::string> arguments, const std::string& session) const
    {
        arguments.insert(arguments.begin(), "search");
        arguments.insert(arguments.end(), {"--server", SearchServer(), "--session", session, "--json"});
        return RunConsole(arguments);
    }

    void Report(const Account& account, int status, const std::string& app = "im") const
    {
        EXPECT_EQ(Done({"status", app, std::to_string(status)}, account)["status"].asInt(), status);
    }

    void Update(const Account& account, std::vector<std::string> values) const
    {
        values.insert(values.begin(), {"update", "im"});
        EXPECT_EQ(Done(values, account)["values"].size(), values.size() - 2);
    }

    /// Who meets the conditions in an application; what the console counts has to be the same.
    Ids Find(const std::vector<std::string>& conditions = {}, const std::string& app = "im",
             const Account& account = kAnn) const
    {
        std::vector<std::string> arguments = {"find", app};
        arguments.insert(arguments.end(), conditions.begin(), conditions.end());
        const Json::Value found = Done(arguments, account);
        arguments.front() = "count";
        const Json::Value counted = Done(arguments, account);
        EXPECT_EQ(counted["count"].asUInt(), found["users"].size());
        EXPECT_EQ(counted["conditions"], found["conditions"]);
        Ids users;
        for (const Json::Value& user : found["users"])
        {
            users.push_back(user.asUInt());
        }
        return users;
    }

    /// Brings many more users online, in another way than the console, which takes a moment for each.
    Ids Crowd(int size)
    {
        Ids crowd;
        for (int i = 0; i < size; ++i)
        {
            const std::string name = "crowd" + std::to_string(i);
            crowd.push_back(Ensure(name, "secret"));
            services::test::ServiceClient client(port);
            client.Login(name, "secret");
            EXPECT_EQ(client.Get("/search/status.php?st=1&app=im").Json()["result"].asInt(), 200);
        }
        return crowd;
    }

    std::atomic<std::int64_t> now{1'795'210'281};
    std::atomic<std::int64_t> secondsPerLook{0};
    services::Application::Options options;
    std::optional<services::Application> application;
    Ids ids;
};

} // namespace

TEST_F(Search, UsersAreThereFromTheirFirstReportToTheirLast)
{
    EXPECT_EQ(Find(), Ids());
    Report(kAnn, 1);
    Report(kBob, 2);
    Report(kCem, -3);
    EXPECT_EQ(Find(), ids);
    EXPECT_EQ(Find({}, "im", kCem), ids);
    EXPECT_EQ(Find({}, "other"), Ids());
    Report(kBob, 1, "other");
    Report(kBob, 0);
    EXPECT_EQ(Find(), (Ids{ids[0], ids[2]}));
    EXPECT_EQ(Find({}, "other"), Ids{ids[1]});
}

TEST_F(Search, SilentUsersAreGoneAfterAWhile)
{
    Report(kAnn, 1);
    Report(kBob, 1);
    now += 299;
    Report(kBob, 1);
    EXPECT_EQ(Find(), (Ids{ids[0], ids[1]}));
    now += 1;
    EXPECT_EQ(Find(), Ids{ids[1]});
    now += 299;
    EXPECT_EQ(Find(), Ids());
}

TEST_F(Search, ConditionsAreValuesAndRanges)
{
    for (const Account& account : {kAnn, kBob, kCem})
    {
        Report(account, 1);
    }
    Update(kAnn, {"age=27", "city=Paris"});
    Update(kBob, {"age=30", "city=Oslo"});
    Update(kCem, {"age=31", "city=Paris", "height=-5"});
    EXPECT_EQ(Find({"city=Paris"}), (Ids{ids[0], ids[2]}));
    EXPECT_EQ(Find({"age=20-30"}), (Ids{ids[0], ids[1]}));
    EXPECT_EQ(Find({"age=20-30", "city=Paris"}), Ids{ids[0]});
    EXPECT_EQ(Find({"age=20-30", "age=28-99"}), Ids{ids[1]});
    EXPECT_EQ(Find({"height=-10--5"}), Ids{ids[2]});
    EXPECT_EQ(Find({"age=32-99"}), Ids());
    EXPECT_EQ(Find({"height="}), Ids());
    Update(kBob, {"city=Paris"});
    EXPECT_EQ(Find({"city=Paris"}), ids);
    Report(kCem, 0);
    EXPECT_EQ(Find({"city=Paris"}), (Ids{ids[0], ids[1]}));
}

TEST_F(Search, ValuesMayBeAnyText)
{
    Report(kAnn, 1);
    Report(kBob, 1);
    for (const std::string value : {"\xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80", "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB",
                                    "a&b=c%20d+e", "say \"hi\"", "[a,b]", "two\nlines", "C:\\", "-", "~._-", ""})
    {
        Update(kAnn, {"text=" + value});
        EXPECT_EQ(Find({"text=" + value}), Ids{ids[0]}) << value;
        EXPECT_EQ(Find({"text=" + value + "!"}), Ids()) << value;
    }
    Update(kBob, {"\xE5\xB9\xB4\xE9\xBD\xA2=27", "a b+c=1"});
    EXPECT_EQ(Find({"\xE5\xB9\xB4\xE9\xBD\xA2=20-30", "a b+c=1"}), Ids{ids[1]});
}

TEST_F(Search, FindReadsEveryPage)
{
    const Ids crowd = Crowd(250);
    const std::filesystem::path log = folder.Path() / "module.log";
    EXPECT_EQ(Find(), crowd);
    Done({"find", "im", "--log", "trace", "--log-file", log.string()});
    const std::string text = ReadFile(log);
    for (const char* const skip : {"0", "100", "200", "250"})
    {
        EXPECT_NE(text.find(std::string("\"app=im&skip=") + skip + '"'), std::string::npos) << skip;
    }
}

TEST_F(Search, SessionThatExpiresOnTheWayIsRenewed)
{
    const Ids crowd = Crowd(250);
    // Each look at the clock takes a second, so that no session lasts for four pages.
    options.lifetimes.service = 6;
    StartApplication();
    secondsPerLook = 1;
    const std::filesystem::path log = folder.Path() / "module.log";
    const Json::Value found = Done({"find", "im", "--log", "info", "--log-file", log.string()});
    EXPECT_EQ(found["users"].size(), crowd.size());
    EXPECT_NE(ReadFile(log).find("session expired when do QueryByCondition, try relogin to server"), std::string::npos);
}

TEST_F(Search, SessionThatCannotBeUsedAtAllIsAPlainFailure)
{
    options.lifetimes.service = 0;
    StartApplication();
    EXPECT_EQ(Refused({"status", "im", "1"}), 403);
    EXPECT_EQ(Refused({"update", "im", "a=1"}), 403);
    EXPECT_EQ(Refused({"find", "im"}), 403);
    EXPECT_EQ(Refused({"count", "im"}), 403);
}

TEST_F(Search, EachLoginIsTriedForReal)
{
    const Json::Value login = Done({"login"}, kBob);
    EXPECT_EQ(login["login"].asString(), "password");
    EXPECT_EQ(login["uid"].asUInt(), ids[1]);
    const std::string session = login["session"].asString();
    const ConsoleRun again = RunInSession({"login"}, session);
    EXPECT_EQ(again.exitStatus, 0) << again.output;
    EXPECT_EQ(again.Json()["login"].asString(), "session");
    EXPECT_EQ(again.Json()["session"].asString(), session);
    EXPECT_TRUE(again.Json()["uid"].isNull());
    EXPECT_EQ(RunInSession({"status", "im", "1"}, session).exitStatus, 0);
    EXPECT_EQ(Find(), Ids{ids[1]});

    services::test::ServiceClient admin(port);
    const Json::Value ticket = admin.PostJson("/admin/tickets", R"({"account":"cem"})", "application/json").Json();
    const ConsoleRun byTicket =
        RunConsole({"search", "login", "--server", SearchServer(), "--ticket",
                    ticket["blowfish"].asString() + ':' + ticket["ticket"].asString(), "--json"});
    EXPECT_EQ(byTicket.exitStatus, 0) << byTicket.output;
    EXPECT_EQ(byTicket.Json()["uid"].asUInt(), ids[2]);
}

TEST_F(Search, WrongLoginsArePlainFailures)
{
    EXPECT_EQ(Refused({"login"}, {"ann", "wrong"}), 401);
    const std::string session = Done({"login"})["session"].asString();
    now += options.lifetimes.centre;
    for (const std::string& each : {session, std::string("nosuchsession")})
    {
        const ConsoleRun run = RunInSession({"find", "im"}, each);
        EXPECT_EQ(run.exitStatus, 1) << run.output;
        EXPECT_EQ(run.Json()["code"].asInt(), 401);
    }
    const ConsoleRun tooLong = RunInSession({"find", "im"}, std::string(756, 's'));
    EXPECT_EQ(tooLong.exitStatus, 1);
    EXPECT_NE(tooLong.Json()["message"].asString().find("holds at most 755"), std::string::npos) << tooLong.output;
}

TEST_F(Search, SessionComesFromTheAccountSystemThatIsGiven)
{
    Report(kAnn, 1);
    EXPECT_EQ(Done({"find", "im", "--accounts", Server() + "/"})["users"].size(), 1U);
    EXPECT_EQ(Refused({"find", "im", "--accounts", SearchServer()}), 404);
}

TEST_F(Search, ServerOutOfReachIsAPlainFailure)
{
    const std::string session = Done({"login"})["session"].asString();
    application.reset();
    const ConsoleRun search = RunInSession({"find", "im"}, session);
    EXPECT_EQ(search.exitStatus, 1);
    EXPECT_LT(search.Json()["code"].asInt(), 0) << search.output;
    const ConsoleRun accounts = Run({"find", "im"});
    EXPECT_EQ(accounts.exitStatus, 1);
    EXPECT_TRUE(accounts.Json()["code"].isNull()) << accounts.output;
    EXPECT_NE(accounts.Json()["message"].asString().find("cannot reach"), std::string::npos) << accounts.output;
}

TEST_F(Search, WhatDoesNotFitIsNotSent)
{
    Report(kAnn, 1);
    const std::string longest(2700, '-');
    Update(kAnn, {"text=" + longest});
    EXPECT_EQ(Find({"text=" + longest}), Ids{ids[0]});
    for (const char* const command : {"update", "find", "count"})
    {
        const ConsoleRun run = Run({command, "im", "text=" + longest, "more=" + longest});
        EXPECT_EQ(run.exitStatus, 1);
        EXPECT_NE(run.Json()["message"].asString().find("a request holds at most"), std::string::npos) << run.output;
    }
    EXPECT_EQ(Find({"text=" + longest}), Ids{ids[0]});
}

TEST_F(Search, ProfileCountsInEveryApplication)
{
    Report(kAnn, 1, "im");
    Report(kBob, 1, "chess");
    EXPECT_EQ(Done({"profile", "motto=to be & not", "age=27"}, kAnn)["values"].size(), 2U);
    EXPECT_EQ(Done({"profile", "--form", "age=30"}, kBob)["form"].asString(), "age=30");
    EXPECT_EQ(Find({"motto=to be & not"}), Ids{ids[0]});
    EXPECT_EQ(Find({"age=20-40"}, "chess"), Ids{ids[1]});
}

TEST_F(Search, FormOfOnesOwnIsSentAsItIs)
{
    Report(kAnn, 1);
    Report(kBob, 1);
    EXPECT_EQ(Done({"find", "--form", "app=im&skip=1"})["users"][0].asUInt(), ids[1]);
    EXPECT_EQ(Done({"count", "--form", "app=im"})["count"].asInt(), 2);
    EXPECT_EQ(Refused({"find", "--form", "skip=1"}), 400);
}

TEST_F(Search, LogoutEndsAllPresence)
{
    Report(kAnn, 1, "im");
    Report(kAnn, 1, "chess");
    EXPECT_EQ(Done({"logout"})["login"].asString(), "password");
    EXPECT_EQ(Find({}, "im", kBob), Ids());
    EXPECT_EQ(Find({}, "chess", kBob), Ids());
}

TEST_F(Search, PeopleReadOneUserALine)
{
    EXPECT_EQ(Shown({"find", "im"}), "there are none\n");
    EXPECT_EQ(Shown({"status", "im", "1"}), "app     im\nstatus  1\n");
    Report(kCem, 1);
    EXPECT_EQ(Shown({"find", "im"}), std::to_string(ids[0]) + '\n' + std::to_string(ids[2]) + '\n');
    EXPECT_EQ(Shown({"count", "im"}), "count  2\n");
    EXPECT_EQ(Shown({"update", "im", "age=27", "city=Paris"}), "set  age=27\nset  city=Paris\n");
}

} // namespace quorvex::e2e
