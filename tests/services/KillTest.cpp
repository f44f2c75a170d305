#include "support/Await.h"
#include "support/DiskCalls.h"
#include "support/RawHttp.h"
#include "support/ServiceProcess.h"

#include <atomic>
#include <csignal>
#include <map>
#include <mutex>
#include <thread>

#include <sys/wait.h>

namespace quorvex::services::test
{

namespace
{

// The bytes of all files in a folder, which is all that shows from outside how far an upload has come.
std::uintmax_t BytesIn(const std::filesystem::path& folder)
{
    std::uintmax_t total = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        std::error_code gone;
        const std::uintmax_t size = entry.file_size(gone);
        total += gone ? 0 : size;
    }
    return total;
}

class KillTest : public ::testing::Test
{
protected:
    ServiceProcess Start() { return ServiceProcess(data_, {"--user", "alice:secret"}); }

    static ServiceClient LoggedIn(const ServiceProcess& process)
    {
        ServiceClient client(process.Port());
        EXPECT_EQ(client.Login("alice", "secret").status, 200);
        return client;
    }

    // Sends a form's start and stops in the middle of its content.
    static void SendPart(const RawConnection& connection, const ServiceClient& client, const std::string& start,
                         std::size_t wholeSize)
    {
        connection.Send("POST /object/file/upload HTTP/1.1\r\nHost: h\r\nCookie: " + client.Cookie() +
                        "\r\nContent-Type:" + WholeFormType + "\r\nContent-Length: " + std::to_string(wholeSize) +
                        "\r\n\r\n" + start);
    }

    TemporaryFolder folder_;
    std::filesystem::path data_ = folder_.Path() / "data";
};

} // namespace

TEST_F(KillTest, DuringAnUploadLeavesNoFile)
{
    {
        ServiceProcess process = Start();
        const ServiceClient client = LoggedIn(process);
        const std::string form = WholeForm("f", SampleBytes(4'000'000));
        const RawConnection connection(process.Port());
        SendPart(connection, client, form.substr(0, 3'000'000), form.size());
        ASSERT_TRUE(Await([&] { return BytesIn(data_ / "tmp") > 2'000'000; }));
        process.End(SIGKILL);
    }
    EXPECT_GT(CountFiles(data_ / "tmp"), 0U);

    const ServiceProcess process = Start();
    EXPECT_EQ(LoggedIn(process).UsedSpace(), 0U);
    EXPECT_EQ(CountFiles(data_ / "tmp"), 0U);
    EXPECT_EQ(CountFiles(data_ / "blobs"), 0U);
}

TEST_F(KillTest, DuringABlockKeepsTheConfirmedOnes)
{
    const std::string content = SampleBytes(3'000'000);
    std::string key;
    {
        ServiceProcess process = Start();
        ServiceClient client = LoggedIn(process);
        key = client.CreateLarge("big", content).Text("fkey");
        EXPECT_EQ(client.UploadBlock(key, 0, content.substr(0, 1'000'000)).status, 200);
        const RawConnection connection(process.Port());
        const std::string form = BlockForm(key, 1'000'000, content.substr(1'000'000));
        SendPart(connection, client, form.substr(0, 1'500'000), form.size());
        ASSERT_TRUE(Await([&] { return BytesIn(data_ / "partial") > 2'000'000; }));
        process.End(SIGKILL);
    }

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    const Reply created = client.CreateLarge("big", content);
    EXPECT_EQ(created.Text("fkey"), key);
    EXPECT_EQ(created.Json()["fsize"].asInt(), 1'000'000);
    EXPECT_EQ(client.FinishLarge(key).Text("msg"), "bytes 1000000-2999999 are missing");
    EXPECT_EQ(client.UploadBlock(key, 1'000'000, content.substr(1'000'000)).status, 200);
    EXPECT_EQ(client.FinishLarge(key).status, 200);
    EXPECT_TRUE(client.Download(key).body == content);
}

TEST_F(KillTest, AmongManyUploadsKeepsAllThatWereAnswered)
{
    constexpr unsigned clients = 4;
    constexpr std::size_t size = 60'000;
    std::mutex mutex;
    std::map<std::string, unsigned> seeds;
    {
        ServiceProcess process = Start();
        std::vector<std::jthread> threads;
        for (unsigned i = 0; i < clients; ++i)
        {
            threads.emplace_back([&, i] {
                try
                {
                    ServiceClient client(process.Port());
                    client.Login("alice", "secret");
                    for (unsigned seed = i;; seed += clients)
                    {
                        const std::string key = client.UploadWhole("f", SampleBytes(size, seed)).Text("fkey");
                        const std::lock_guard lock(mutex);
                        seeds[key] = seed;
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
            return seeds.size() >= 20;
        }));
        process.End(SIGKILL);
    }

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    for (const auto& [key, seed] : seeds)
    {
        EXPECT_TRUE(client.Download(key).body == SampleBytes(size, seed)) << key;
    }
    // An upload may have been kept without its answer getting through, but then as a whole.
    const std::size_t files = CountFiles(data_ / "blobs");
    EXPECT_GE(files, seeds.size());
    EXPECT_LE(files, seeds.size() + clients);
    EXPECT_EQ(client.UsedSpace(), files * size);
}

TEST_F(KillTest, AmongChangesOfTheTreeLeavesItWhole)
{
    constexpr unsigned clients = 4;
    constexpr std::size_t size = 10'000;
    std::atomic<int> rounds{0};
    {
        ServiceProcess process = Start();
        std::vector<std::jthread> threads;
        for (unsigned i = 0; i < clients; ++i)
        {
            threads.emplace_back([&, i] {
                try
                {
                    ServiceClient client(process.Port());
                    client.Login("alice", "secret");
                    for (unsigned seed = i;; seed += clients)
                    {
                        const std::string outer = AddFolder(client, "outer");
                        const std::string inner = AddFolder(client, "inner", outer);
                        PutFile(client, "f", SampleBytes(size, seed), inner);
                        RecycleFolder(client, seed % 8 < clients ? inner : outer);
                        if (seed % 8 < clients)
                        {
                            EraseFolder(client, outer);
                        }
                        ++rounds;
                    }
                }
                catch (const std::exception&)
                {
                    // The process was killed.
                }
            });
        }
        EXPECT_TRUE(Await([&] { return rounds >= 20; }));
        process.End(SIGKILL);
    }

    const ServiceProcess process = Start();
    ServiceClient client = LoggedIn(process);
    EXPECT_EQ(client.UsedSpace(), CountFiles(data_ / "blobs") * size);
    for (const Json::Value& item : ListBin(client))
    {
        EXPECT_EQ(Recover(client, item["rs_id"].asString()).status, 200);
    }
    const Json::Value left = ListFolder(client).Json();
    for (const Json::Value& folder : left["folders"])
    {
        EXPECT_EQ(EraseFolder(client, folder["fo_id"].asString()).status, 200);
    }
    for (const Json::Value& file : left["files"])
    {
        EXPECT_EQ(EraseFile(client, file["fkey"].asString()).status, 200);
    }
    EXPECT_EQ(client.UsedSpace(), 0U);
    EXPECT_EQ(CountFiles(data_ / "blobs"), 0U);
}

TEST_F(KillTest, TermEndsTheProgramInOrder)
{
    ServiceProcess process = Start();
    EXPECT_EQ(process.ReadyLine(),
              "quorvex-services listening on http://127.0.0.1:" + std::to_string(process.Port()) + "/");
    const RawConnection silent(process.Port());
    const int status = process.End(SIGTERM);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(KillTest, InterruptEndsTheProgramInOrder)
{
    ServiceProcess process = Start();
    const int status = process.End(SIGINT);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

} // namespace quorvex::services::test
