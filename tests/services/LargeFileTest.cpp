#include "support/ServiceFixture.h"

#include <algorithm>
#include <random>

namespace quorvex::services::test
{

namespace
{

class LargeFileTest : public ServiceFixture
{
protected:
    static constexpr std::size_t BlockSize = 50'000;

    std::string content_ = SampleBytes(1'030'000);

    void SendBlocks(ServiceClient& client, const std::string& key, const std::vector<std::size_t>& positions)
    {
        for (const std::size_t position : positions)
        {
            const std::string block = content_.substr(position, BlockSize);
            const Reply reply = client.UploadBlock(key, position, block);
            ASSERT_EQ(reply.status, 200);
            EXPECT_EQ(reply.Text("fkey"), key);
            EXPECT_EQ(reply.Json()["fsize"].asUInt(), block.size());
        }
    }

    std::vector<std::size_t> AllPositions() const
    {
        std::vector<std::size_t> positions;
        for (std::size_t position = 0; position < content_.size(); position += BlockSize)
        {
            positions.push_back(position);
        }
        return positions;
    }
};

} // namespace

TEST_F(LargeFileTest, ArrivesInBlocks)
{
    ServiceClient client = LoggedIn();
    const Reply created = client.CreateLarge("big.bin", content_);
    EXPECT_EQ(created.status, 200);
    EXPECT_EQ(created.Json()["cflag"].asInt(), 0);
    EXPECT_EQ(created.Json()["fsize"].asInt(), 0);
    const std::string key = created.Text("fkey");
    SendBlocks(client, key, AllPositions());

    const Reply finished = client.FinishLarge(key);
    EXPECT_EQ(finished.status, 200);
    EXPECT_EQ(finished.Text("fkey"), key);
    EXPECT_EQ(finished.Json()["fsize"].asUInt(), content_.size());
    EXPECT_TRUE(client.Download(key).body == content_);
    EXPECT_EQ(client.Download(key).Header("Content-Disposition"),
              "attachment;filename=\"big.bin;md5=" + Md5Of(content_));
}

TEST_F(LargeFileTest, ArrivesInAnyOrderRepeatedAndOverlapping)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.CreateLarge("big.bin", content_).Text("fkey");
    std::vector<std::size_t> positions = AllPositions();
    const std::vector<std::size_t> overlapping{25'000, 975'000, 333'333};
    positions.insert(positions.end(), overlapping.begin(), overlapping.end());
    positions.insert(positions.end(), {0, 500'000});
    std::shuffle(positions.begin(), positions.end(), std::mt19937(3));
    SendBlocks(client, key, positions);

    EXPECT_EQ(client.FinishLarge(key).status, 200);
    EXPECT_TRUE(client.Download(key).body == content_);
}

TEST_F(LargeFileTest, IsNotFinishedWhileBytesAreMissing)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.CreateLarge("big.bin", content_).Text("fkey");
    EXPECT_EQ(client.FinishLarge(key).Text("msg"), "bytes 0-1029999 are missing");
    std::vector<std::size_t> positions = AllPositions();
    positions.erase(positions.begin() + 3);
    SendBlocks(client, key, positions);

    const Reply reply = client.FinishLarge(key);
    EXPECT_EQ(reply.status, 409);
    EXPECT_EQ(reply.Text("msg"), "bytes 150000-199999 are missing");
    SendBlocks(client, key, {150'000});
    EXPECT_EQ(client.FinishLarge(key).status, 200);
}

TEST_F(LargeFileTest, WithOtherBytesThanAnnouncedIsSentAgain)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.CreateLarge("f", "right").Text("fkey");
    client.UploadBlock(key, 0, "wrong");
    EXPECT_EQ(client.FinishLarge(key).status, 409);
    EXPECT_EQ(client.FinishLarge(key).Text("msg"), "bytes 0-4 are missing");
    client.UploadBlock(key, 0, "right");
    EXPECT_EQ(client.FinishLarge(key).status, 200);
    EXPECT_EQ(client.Download(key).body, "right");
}

TEST_F(LargeFileTest, GoesOnAfterAnInterruption)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.CreateLarge("big.bin", content_).Text("fkey");
    SendBlocks(client, key, {0, 50'000, 200'000});
    Restart();

    ServiceClient again = LoggedIn();
    const Reply created = again.CreateLarge("big.bin", content_);
    EXPECT_EQ(created.Text("fkey"), key);
    EXPECT_EQ(created.Json()["cflag"].asInt(), 0);
    EXPECT_EQ(created.Json()["fsize"].asInt(), 100'000);
    std::vector<std::size_t> positions = AllPositions();
    std::erase_if(positions, [](std::size_t position) { return position < 100'000 || position == 200'000; });
    SendBlocks(again, key, positions);
    EXPECT_EQ(again.FinishLarge(key).status, 200);
    EXPECT_TRUE(again.Download(key).body == content_);
}

TEST_F(LargeFileTest, WithAnotherNameOrOwnerIsAnotherFile)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    const std::string key = alice.CreateLarge("a", content_).Text("fkey");
    EXPECT_NE(alice.CreateLarge("b", content_).Text("fkey"), key);
    EXPECT_NE(bob.CreateLarge("a", content_).Text("fkey"), key);
    EXPECT_EQ(bob.UploadBlock(key, 0, "x").status, 404);
    EXPECT_EQ(bob.FinishLarge(key).status, 404);
}

TEST_F(LargeFileTest, ThatIsHeldAlreadyIsCompleteAtOnce)
{
    ServiceClient client = LoggedIn();
    client.UploadWhole("whole", content_);
    const Reply created = client.CreateLarge("big.bin", content_);
    EXPECT_EQ(created.Json()["cflag"].asInt(), 1);
    EXPECT_EQ(created.Json()["fsize"].asUInt(), content_.size());
    EXPECT_TRUE(client.Download(created.Text("fkey")).body == content_);
    EXPECT_EQ(client.FinishLarge(created.Text("fkey")).status, 200);
    EXPECT_EQ(client.UploadBlock(created.Text("fkey"), 0, "x").status, 409);
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 1U);
}

TEST_F(LargeFileTest, MayBeEmpty)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.CreateLarge("empty", "").Text("fkey");
    EXPECT_EQ(client.FinishLarge(key).status, 200);
    EXPECT_EQ(client.Download(key).body, "");
}

TEST_F(LargeFileTest, TakesAnUppercaseDigest)
{
    ServiceClient client = LoggedIn();
    std::string md5 = Md5Of("content");
    std::transform(md5.begin(), md5.end(), md5.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    const std::string key = client.PostForm(CreateForm("f", 7, md5), BlockFormType).Text("fkey");
    client.UploadBlock(key, 0, "content");
    EXPECT_EQ(client.FinishLarge(key).status, 200);
}

TEST_F(LargeFileTest, BlocksMustLieInsideAndHaveTheirSize)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.CreateLarge("f", "0123456789").Text("fkey");
    EXPECT_EQ(client.UploadBlock(key, 8, "xyz").status, 400);
    EXPECT_EQ(client.UploadBlock(key, 18446744073709551615U, "xyz").status, 400);
    std::string longer = BlockForm(key, 0, "abc");
    longer.insert(longer.find("abc"), "more");
    EXPECT_EQ(client.PostForm(longer, BlockFormType).status, 400);
    std::string shorter = BlockForm(key, 0, "abc");
    shorter.erase(shorter.find("abc"), 1);
    EXPECT_EQ(client.PostForm(shorter, BlockFormType).status, 400);
    EXPECT_EQ(client.FinishLarge(key).Text("msg"), "bytes 0-9 are missing");
}

TEST_F(LargeFileTest, RepliesKeepWithinThirtyTwoSignedBits)
{
    Restart([](Application::Options& options) { options.netDiskLimits.quota = 1ULL << 40U; });
    ServiceClient client = LoggedIn();
    const Reply created = client.PostForm(CreateForm("f", 0xFFFFFFFF, Md5Of("x")), BlockFormType);
    EXPECT_EQ(created.status, 200);
    EXPECT_TRUE(created.Json()["fsize"].isInt());
    const std::string key = created.Text("fkey");
    EXPECT_EQ(client.UploadBlock(key, 0xFFFFFFFE, "x").status, 200);
    EXPECT_EQ(client.FinishLarge(key).Text("msg"), "bytes 0-4294967293 are missing");
    const Json::Value capacity = client.Get("/object/capacity/info").Json();
    EXPECT_TRUE(capacity["max_file_size"].isUInt());
    EXPECT_EQ(capacity["used_space"].asUInt64(), 0xFFFFFFFFU);
    EXPECT_EQ(capacity["total_space"].asUInt64(), 1ULL << 40U);
}

} // namespace quorvex::services::test
