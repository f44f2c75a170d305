#include "SearchFixture.h"
#include "support/Await.h"
#include "support/ServiceProcess.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <thread>

namespace quorvex::services::test
{

namespace
{

class SearchStateTest : public SearchFixture
{
};

std::string Pair(int value)
{
    return "app=im&a=" + std::to_string(value) + "&b=" + std::to_string(value);
}

} // namespace

TEST_F(SearchStateTest, ClientsAtOnceFindEachOther)
{
    constexpr int count = 8;
    std::vector<SearchClient> clients;
    clients.reserve(count);
    for (int i = 0; i < count; ++i)
    {
        clients.push_back(LoggedInTo("user" + std::to_string(i)));
    }
    {
        std::vector<std::jthread> threads;
        threads.reserve(count);
        for (int i = 0; i < count; ++i)
        {
            threads.emplace_back([i, &client = clients[static_cast<std::size_t>(i)]] {
                for (int round = 0; round < 10; ++round)
                {
                    const std::string mine = "app=im&n=" + std::to_string(i * 100 + round);
                    client.Online();
                    client.Update(mine);
                    EXPECT_EQ(client.Count(mine), 1);
                    EXPECT_EQ(client.Report("im", 0)["result"].asInt(), 200);
                    EXPECT_EQ(client.Count(mine), 0);
                }
                client.Online();
            });
        }
    }
    EXPECT_EQ(clients[0].Count("app=im&n=0-799"), count);
    EXPECT_EQ(clients[0].Find("app=im").size(), static_cast<std::size_t>(count));
}

TEST_F(SearchStateTest, AnUpdateIsSeenAsAWhole)
{
    SearchClient writer = OnlineWith("alice", "&a=0&b=0");
    SearchClient reader = LoggedInTo("bob");
    std::atomic<bool> isDone{false};
    std::jthread thread([&] {
        for (int value = 1; value <= 50; ++value)
        {
            writer.Update(Pair(value % 2));
        }
        isDone = true;
    });
    while (!isDone)
    {
        EXPECT_EQ(reader.Count("app=im&a=0&b=1"), 0);
        EXPECT_EQ(reader.Count("app=im&a=1&b=0"), 0);
    }
}

TEST(SearchKillTest, KeepsWhatWasAnsweredAndNoHalfUpdate)
{
    constexpr std::size_t count = 4;
    constexpr int enough = 5;
    constexpr int valuesPerUser = 1'000'000;
    const TemporaryFolder folder;
    const std::vector<std::string> arguments = {"--user", "user0:secret", "--user", "user1:secret",
                                                "--user", "user2:secret", "--user", "user3:secret"};
    std::array<std::atomic<int>, count> answered{};
    {
        ServiceProcess process(folder.Path() / "data", arguments);
        std::vector<std::jthread> threads;
        threads.reserve(count);
        for (std::size_t i = 0; i < count; ++i)
        {
            threads.emplace_back([&, i] {
                try
                {
                    SearchClient client(process.Port());
                    client.Http().Login("user" + std::to_string(i), "secret");
                    client.Online();
                    for (int value = 1;; ++value)
                    {
                        client.Update(Pair(static_cast<int>(i) * valuesPerUser + value));
                        answered[i] = value;
                    }
                }
                catch (const std::exception&)
                {
                    // The process was killed; what was answered until then is noted.
                }
            });
        }
        EXPECT_TRUE(Await([&] {
            return std::all_of(answered.begin(), answered.end(), [](const auto& value) { return value >= enough; });
        }));
        process.End(SIGKILL);
    }

    const ServiceProcess process(folder.Path() / "data", arguments);
    SearchClient client(process.Port());
    client.Http().Login("user0", "secret");
    EXPECT_EQ(client.Count("app=im"), static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i)
    {
        const int last = static_cast<int>(i) * valuesPerUser + answered[i];
        // One more may have been kept without its answer getting through.
        EXPECT_EQ(client.Count(Pair(last)) + client.Count(Pair(last + 1)), 1) << i;
    }
}

TEST(SearchKillTest, ThePresencesLifetimeIsAnOption)
{
    const TemporaryFolder folder;
    const std::filesystem::path data = folder.Path() / "data";
    const auto countOnline = [&data](const std::vector<std::string>& arguments, bool isReporting) {
        const ServiceProcess process(data, arguments);
        SearchClient client(process.Port());
        client.Http().Login("alice", "secret");
        if (isReporting)
        {
            client.Online();
        }
        return client.Count("app=im");
    };
    EXPECT_EQ(countOnline({"--user", "alice:secret"}, true), 1);
    Database(data / "services.db").Migrate("earlier", {"UPDATE search_presence SET seen_at = seen_at - 1000"});
    EXPECT_EQ(countOnline({}, false), 0);
    EXPECT_EQ(countOnline({"--presence-lifetime", "3600"}, false), 1);
}

} // namespace quorvex::services::test
