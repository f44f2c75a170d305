#include "support/DiskCalls.h"
#include "support/Together.h"

#include <map>
#include <mutex>
#include <vector>

namespace quorvex::services::test
{

namespace
{

class ConcurrencyTest : public ServiceFixture
{
protected:
    static constexpr int Clients = 8;
};

} // namespace

TEST_F(ConcurrencyTest, ClientsDoNotDisturbEachOther)
{
    std::vector<ServiceClient> clients;
    for (int i = 0; i < Clients; ++i)
    {
        clients.push_back(LoggedIn("user" + std::to_string(i)));
    }
    Together(Clients, [&](int i) {
        ServiceClient& client = clients[static_cast<std::size_t>(i)];
        for (unsigned round = 0; round < 10; ++round)
        {
            const std::string content = SampleBytes(30'000, static_cast<unsigned>(i) * 100 + round);
            const std::string key = client.UploadWhole("f", content).Text("fkey");
            EXPECT_TRUE(client.Download(key).body == content);
            if (round % 2 == 0)
            {
                EXPECT_EQ(client.PostJson("/object/file/del4ever", KeyBody(key)).status, 200);
            }
        }
        EXPECT_EQ(client.UsedSpace(), 5 * 30'000U);
    });
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), Clients * 5U);
}

TEST_F(ConcurrencyTest, EqualContentIsSharedAndGoesWithItsLastFile)
{
    std::vector<ServiceClient> clients;
    for (int i = 0; i < Clients; ++i)
    {
        clients.push_back(LoggedIn());
    }
    Together(Clients, [&](int i) {
        ServiceClient& client = clients[static_cast<std::size_t>(i)];
        for (int round = 0; round < 20; ++round)
        {
            const std::string key = client.UploadWhole("f", "the same everywhere").Text("fkey");
            EXPECT_EQ(client.Download(key).body, "the same everywhere");
            EXPECT_EQ(client.PostJson("/object/file/del4ever", KeyBody(key)).status, 200);
        }
    });
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 0U);
    EXPECT_EQ(clients[0].UsedSpace(), 0U);
}

TEST_F(ConcurrencyTest, BlocksOfOneFileArriveOverSeveralConnections)
{
    constexpr std::size_t blockSize = 40'000;
    const std::string content = SampleBytes(Clients * 4 * blockSize);
    const std::string key = LoggedIn().CreateLarge("big", content).Text("fkey");
    std::vector<ServiceClient> clients;
    for (int i = 0; i < Clients; ++i)
    {
        clients.push_back(LoggedIn());
    }
    Together(Clients, [&](int i) {
        const auto index = static_cast<std::size_t>(i);
        for (std::size_t block = index; block < Clients * 4; block += Clients)
        {
            const std::size_t position = block * blockSize;
            EXPECT_EQ(clients[index].UploadBlock(key, position, content.substr(position, blockSize)).status, 200);
        }
    });
    // All at once: one finishes, the others find it finished.
    Together(Clients, [&](int i) { EXPECT_EQ(clients[static_cast<std::size_t>(i)].FinishLarge(key).status, 200); });
    EXPECT_TRUE(clients[0].Download(key).body == content);
}

TEST_F(ConcurrencyTest, TheQuotaHoldsHoweverManyUploadAtOnce)
{
    Restart([](Application::Options& options) { options.netDiskLimits.quota = 300'000; });
    std::vector<ServiceClient> clients;
    for (int i = 0; i < Clients; ++i)
    {
        clients.push_back(LoggedIn());
    }
    std::mutex mutex;
    std::map<int, int> statuses;
    Together(Clients, [&](int i) {
        ServiceClient& client = clients[static_cast<std::size_t>(i)];
        const int status = client.UploadWhole("f", SampleBytes(100'000, static_cast<unsigned>(i))).status;
        const std::lock_guard lock(mutex);
        ++statuses[status];
    });
    EXPECT_EQ(statuses[200], 3);
    EXPECT_EQ(statuses[507], Clients - 3);
    EXPECT_EQ(clients[0].UsedSpace(), 300'000U);
}

TEST_F(ConcurrencyTest, ADownloadIsWholeOrRefusedWhenTheFileGoesForEver)
{
    const std::string content = SampleBytes(500'000);
    ServiceClient owner = LoggedIn();
    std::vector<ServiceClient> holders;
    for (int i = 0; i < Clients; ++i)
    {
        holders.push_back(LoggedIn("user" + std::to_string(i)));
    }
    for (int round = 0; round < 10; ++round)
    {
        const std::string folder = AddFolder(owner, "shared");
        const std::string key = PutFile(owner, "f", content, folder);
        const std::string code = Share(owner, {key}).Text("pcode");
        Together(Clients, [&](int i) {
            if (i == 0)
            {
                EXPECT_EQ(EraseFolder(owner, folder).status, 200);
                return;
            }
            const Reply reply = Fetch(holders[static_cast<std::size_t>(i)], code, key);
            EXPECT_TRUE(reply.status == 404 || (reply.status == 200 && reply.body == content)) << reply.status;
        });
    }
    EXPECT_EQ(owner.UsedSpace(), 0U);
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 0U);
}

TEST_F(ConcurrencyTest, OppositeMovesNeverCloseACircle)
{
    ServiceClient owner = LoggedIn();
    std::vector<ServiceClient> clients;
    std::vector<std::string> folders;
    for (int i = 0; i < Clients; ++i)
    {
        clients.push_back(LoggedIn());
        folders.push_back(AddFolder(owner, "f" + std::to_string(i)));
    }
    // Each folder into the next one: the last move that comes would close the circle.
    std::mutex mutex;
    std::map<int, int> statuses;
    Together(Clients, [&](int i) {
        const auto index = static_cast<std::size_t>(i);
        const int status = MoveFolder(clients[index], folders[index], folders[(index + 1) % Clients]).status;
        const std::lock_guard lock(mutex);
        ++statuses[status];
    });
    EXPECT_EQ(statuses[200], Clients - 1);
    EXPECT_EQ(statuses[409], 1);
    EXPECT_EQ(NamesIn(owner).size(), 1U);
}

TEST_F(ConcurrencyTest, AnItemIsRestoredOrErasedButOnce)
{
    ServiceClient owner = LoggedIn();
    std::vector<ServiceClient> clients;
    for (int i = 0; i < Clients; ++i)
    {
        clients.push_back(LoggedIn());
    }
    const std::string folder = AddFolder(owner, "a");
    PutFile(owner, "f", "content", folder);
    RecycleFolder(owner, folder);
    const std::string item = ItemNamed(owner, "a");
    std::mutex mutex;
    std::map<int, int> statuses;
    Together(Clients, [&](int i) {
        ServiceClient& client = clients[static_cast<std::size_t>(i)];
        const int status = (i % 2 == 0 ? Recover(client, item) : EraseItem(client, item)).status;
        const std::lock_guard lock(mutex);
        ++statuses[status];
    });
    EXPECT_EQ(statuses[200], 1);
    EXPECT_EQ(statuses[404], Clients - 1);
    EXPECT_TRUE(ListBin(owner).empty());
    EXPECT_EQ(owner.UsedSpace(), NamesIn(owner).size() * 7);
}

} // namespace quorvex::services::test
