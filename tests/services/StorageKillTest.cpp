#include "support/Await.h"
#include "support/ServiceProcess.h"
#include "support/StorageCalls.h"
#include "support/ThirdCalls.h"

#include <csignal>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace quorvex::services::test
{

namespace
{

class StorageKillTest : public ::testing::Test
{
protected:
    static constexpr unsigned Clients = 4;
    static constexpr std::size_t Size = 60'000;

    ServiceProcess Start() { return ServiceProcess(data_, {"--user", "alice:secret"}); }

    static ServiceClient LoggedIn(const ServiceProcess& process)
    {
        ServiceClient client(process.Port());
        EXPECT_EQ(ResultOf(StorageLogin(client, "alice", "secret")), 200);
        return client;
    }

    // Does the work over and over on several connections and kills the process in the midst of it. The work returns
    // the key under which its content was confirmed.
    template <class Work>
    std::map<std::string, unsigned> KillAmong(Work work)
    {
        std::mutex mutex;
        std::map<std::string, unsigned> seeds;
        std::set<unsigned> clients;
        ServiceProcess process = Start();
        std::vector<std::jthread> threads;
        for (unsigned i = 0; i < Clients; ++i)
        {
            threads.emplace_back([&, i] {
                try
                {
                    ServiceClient client = LoggedIn(process);
                    for (unsigned seed = i;; seed += Clients)
                    {
                        const std::string key = work(client, seed);
                        const std::lock_guard lock(mutex);
                        seeds[key] = seed;
                        clients.insert(i);
                    }
                }
                catch (const std::exception&)
                {
                    // The process was killed; what was answered until then is noted.
                }
            });
        }
        EXPECT_TRUE(Await([&] {
            const std::lock_guard lock(mutex);
            return seeds.size() >= 20 && clients.size() == Clients;
        }));
        process.End(SIGKILL);
        threads.clear();
        return seeds;
    }

    TemporaryFolder folder_;
    std::filesystem::path data_ = folder_.Path() / "data";
};

} // namespace

TEST_F(StorageKillTest, AmongPicturesKeepsAllThatWereAnswered)
{
    const auto seeds = KillAmong([](ServiceClient& client, unsigned seed) {
        return PutPicture(client, "p" + std::to_string(seed), SampleBytes(Size, seed)).Text("fkey");
    });

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    for (const auto& [key, seed] : seeds)
    {
        EXPECT_TRUE(GetPicture(client, key).body == SampleBytes(Size, seed)) << key;
    }
    // An upload may have been kept without its answer getting through, but then as a whole.
    const std::size_t files = CountFiles(data_ / "blobs");
    EXPECT_GE(files, seeds.size());
    EXPECT_LE(files, seeds.size() + Clients);
    EXPECT_EQ(UsedInDepot(client), files * Size);
}

TEST_F(StorageKillTest, AmongReplacementsLeavesOneOfThem)
{
    KillAmong([](ServiceClient& client, unsigned seed) {
        EXPECT_EQ(ResultOf(PutPicture(client, "p" + std::to_string(seed % Clients), SampleBytes(Size, seed))), 200);
        return std::to_string(seed);
    });

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    EXPECT_EQ(CountFiles(data_ / "blobs"), Clients);
    EXPECT_EQ(UsedInDepot(client), Clients * Size);
    for (unsigned i = 0; i < Clients; ++i)
    {
        const Reply reply = GetPicture(client, "p" + std::to_string(i));
        EXPECT_EQ(reply.Header("Content-Disposition"),
                  "attachment;filename=\"p" + std::to_string(i) + ";md5=" + Md5Of(reply.body));
    }
}

TEST_F(StorageKillTest, AmongDepotFilesKeepsAllThatWereFinished)
{
    const auto seeds = KillAmong([](ServiceClient& client, unsigned seed) {
        return PutInDepot(client, "d" + std::to_string(seed), SampleBytes(Size, seed));
    });

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    for (const auto& [key, seed] : seeds)
    {
        EXPECT_TRUE(GetFromDepot(client, "", key).body == SampleBytes(Size, seed)) << key;
    }
    // What was not finished goes on from the same key.
    const Json::Value listing = ListDepot(client).Json();
    for (const Json::Value& file : listing["files"])
    {
        const std::string name = file["fname"].asString();
        const std::string content = SampleBytes(Size, static_cast<unsigned>(std::stoul(name.substr(1))));
        if (file["finish"].asInt() == 0)
        {
            EXPECT_EQ(CreateInDepot(client, name, content).Text("fkey"), file["fkey"].asString());
            EXPECT_EQ(PutInDepot(client, name, content), file["fkey"].asString());
        }
        EXPECT_EQ(ResultOf(RemoveFromDepot(client, file["fkey"].asString())), 200);
    }
    EXPECT_EQ(UsedInDepot(client), 0U);
    EXPECT_EQ(CountFiles(data_ / "blobs"), 0U);
    EXPECT_EQ(CountFiles(data_ / "partial"), 0U);
}

TEST_F(StorageKillTest, AmongTicketsKeepsAllThatWereAnswered)
{
    constexpr std::size_t blockSize = 25'000;
    const auto seeds = KillAmong([](ServiceClient& client, unsigned seed) {
        const ThirdClient third(client.Port(), client.Cookie());
        return third.PutFile("d" + std::to_string(seed), SampleBytes(Size, seed), blockSize);
    });

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    const ThirdClient third(process.Port(), client.Cookie());
    for (const auto& [key, seed] : seeds)
    {
        EXPECT_TRUE(third.GetFile("0", key).body == SampleBytes(Size, seed)) << key;
    }
    const Json::Value listing = ListDepot(client).Json();
    EXPECT_GE(listing["files"].size(), seeds.size());
    for (const Json::Value& file : listing["files"])
    {
        EXPECT_EQ(ResultOf(RemoveFromDepot(client, file["fkey"].asString())), 200);
    }
    EXPECT_EQ(UsedInDepot(client), 0U);
    EXPECT_EQ(CountFiles(data_ / "blobs"), 0U);
    EXPECT_EQ(CountFiles(data_ / "partial"), 0U);
    EXPECT_EQ(CountFiles(data_ / "tmp"), 0U);
}

TEST_F(StorageKillTest, AmongRewrittenBlocksLeavesNoneMixed)
{
    // All write their own bytes to one place, over and over; what counts afterwards is one of them as a whole.
    constexpr std::size_t size = 400'000;
    std::string ticket;
    std::once_flag begun;
    KillAmong([&](ServiceClient& client, unsigned seed) {
        const ThirdClient third(client.Port(), client.Cookie());
        const std::string content(size, static_cast<char>('a' + seed % Clients));
        std::call_once(begun, [&] { ticket = third.PutBlock({"", 0, content}).Text("ticket"); });
        EXPECT_EQ(CodeOf(third.PutBlock({ticket, 0, content})), 200);
        return std::to_string(seed);
    });

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    const ThirdClient third(process.Port(), client.Cookie());
    const Reply finished = third.PutBlock({ticket, size, "", true});
    if (CodeOf(finished) == 200)
    {
        const std::string held = third.GetFile("1", finished.Text("fkey")).body;
        ASSERT_EQ(held.size(), size);
        EXPECT_TRUE(held == std::string(size, held[0]));
    }
    else
    {
        EXPECT_EQ(finished.Text("msg"), "bytes 0-399999 are missing");
    }
}

} // namespace quorvex::services::test
