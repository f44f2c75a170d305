#include "Checkup.h"
#include "HttpExchange.h"

#include <gtest/gtest.h>

namespace quorvex::console
{
namespace
{

std::string Fine()
{
    return "fine";
}

std::string Broken()
{
    throw Failure("cannot log in", {401, "UserLogin"});
}

TEST(Checkup, TriesEachStepWhileAllIsWell)
{
    ServiceCheck check("disk", "http://h");
    check.Try("first", Fine);
    check.Try("second", Fine);
    EXPECT_EQ(check.Failures(), 0u);
    EXPECT_EQ(check.Text(), "disk  http://h\n  ok       first               fine\n"
                            "  ok       second              fine\n");
    EXPECT_FALSE(FailureOf({check}).has_value());
}

TEST(Checkup, DoesNotTryWhatNeedsABrokenStep)
{
    ServiceCheck check("disk", "http://h");
    check.Try("login", Broken);
    check.Try("quota", Fine);
    check.TryAnyway("other", Fine);
    ASSERT_EQ(check.Results().size(), 3u);
    EXPECT_EQ(check.Results()[0].state, CheckState::Failed);
    EXPECT_EQ(check.Results()[1].state, CheckState::Skipped);
    EXPECT_EQ(check.Results()[1].detail, "needs login");
    EXPECT_EQ(check.Results()[2].state, CheckState::Ok);
}

TEST(Checkup, FailsByItsFirstBrokenStep)
{
    ServiceCheck well("disk", "http://h");
    well.Try("login", Fine);
    ServiceCheck ill("search", "http://h");
    ill.Try("login", Broken);
    ill.TryAnyway("count", Broken);
    const auto failure = FailureOf({well, ill});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->Code(), 401);
    EXPECT_EQ(failure->Operation(), "UserLogin");
    EXPECT_EQ(std::string(failure->what()).rfind("2 of 3 steps failed; the first is search, login: cannot log in", 0),
              0u)
        << failure->what();
}

TEST(Checkup, TellsMachinesOfEachStep)
{
    ServiceCheck check("disk", "http://h");
    check.Try("login", Broken);
    check.Skip("quota", "no reason");
    const Json::Value value = check.ToJson();
    EXPECT_EQ(value.getMemberNames(), (std::vector<std::string>{"server", "service", "steps"}));
    const std::vector<std::string> members{"code", "detail", "operation", "state", "step"};
    EXPECT_EQ(value["steps"][0].getMemberNames(), members);
    EXPECT_EQ(value["steps"][0]["state"].asString(), "failed");
    EXPECT_EQ(value["steps"][0]["code"].asInt(), 401);
    EXPECT_EQ(value["steps"][1].getMemberNames(), members);
    EXPECT_EQ(value["steps"][1]["state"].asString(), "skipped");
    EXPECT_TRUE(value["steps"][1]["code"].isNull());
}

TEST(SplitAddress, TakesAServersAddressApart)
{
    const auto address = SplitAddress("http://disk.example:8080/object");
    ASSERT_TRUE(address.has_value());
    EXPECT_EQ(address->host, L"disk.example");
    EXPECT_EQ(address->path, L"/object");
    EXPECT_EQ(address->port, 8080);
    EXPECT_FALSE(address->isSecure);
    EXPECT_EQ(SplitAddress("http://h")->port, 80);
    EXPECT_TRUE(SplitAddress("https://h/")->isSecure);
}

TEST(SplitAddress, KnowsWhatIsNone)
{
    for (const char* const text : {"", "disk.example", "ftp://h/", "http://", "http:///path"})
        EXPECT_FALSE(SplitAddress(text).has_value()) << text;
}

} // namespace
} // namespace quorvex::console
