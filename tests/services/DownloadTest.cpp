#include "support/RawHttp.h"
#include "support/ServiceFixture.h"

namespace quorvex::services::test
{

namespace
{

class DownloadTest : public ServiceFixture
{
};

} // namespace

TEST_F(DownloadTest, NamesTheFileAndItsDigest)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("a;b \xE4\xB8\xAD.txt", "content").Text("fkey");
    const Reply reply = client.Download(key);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "content");
    EXPECT_EQ(reply.Header("Content-Length"), "7");
    EXPECT_EQ(reply.Header("Content-Disposition"),
              "attachment;filename=\"a_b \xE4\xB8\xAD.txt;md5=" + Md5Of("content"));
}

TEST_F(DownloadTest, IsNotCompressed)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("a.txt", std::string(100'000, 'a')).Text("fkey");
    const Reply reply = client.Get("/object/file/down?fkey=" + key, {{"Accept-Encoding", "gzip, deflate"}});
    EXPECT_EQ(reply.Header("Content-Encoding"), "");
    EXPECT_EQ(reply.Header("Content-Length"), "100000");
}

TEST_F(DownloadTest, OfARange)
{
    ServiceClient client = LoggedIn();
    const std::string content = SampleBytes(700'000);
    const std::string key = client.UploadWhole("f", content).Text("fkey");
    struct Case
    {
        std::string range;
        std::string contentRange;
        std::size_t first;
        std::size_t size;
    };
    const Case cases[] = {{"bytes=0-0", "bytes 0-0/700000", 0, 1},
                          {"bytes=1-300000", "bytes 1-300000/700000", 1, 300'000},
                          {"bytes=262144-", "bytes 262144-699999/700000", 262'144, 437'856},
                          {"bytes=699999-4294967295", "bytes 699999-699999/700000", 699'999, 1},
                          {"bytes=-5", "bytes 699995-699999/700000", 699'995, 5}};
    for (const Case& item : cases)
    {
        const Reply reply = client.Download(key, item.range);
        EXPECT_EQ(reply.status, 206) << item.range;
        EXPECT_EQ(reply.Header("Content-Range"), item.contentRange);
        EXPECT_EQ(reply.Header("Content-Length"), std::to_string(item.size));
        EXPECT_TRUE(reply.body == content.substr(item.first, item.size)) << item.range;
    }
}

TEST_F(DownloadTest, OutsideTheFileIsRefused)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("f", "content").Text("fkey");
    const Reply reply = client.Download(key, "bytes=7-8");
    EXPECT_EQ(reply.status, 416);
    EXPECT_EQ(reply.Header("Content-Range"), "bytes */7");
    EXPECT_FALSE(reply.Text("msg").empty());
    EXPECT_EQ(client.Download(key, "bytes=99999999999999999999999999-").status, 416);
}

TEST_F(DownloadTest, OfAnEmptyFile)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("empty", "").Text("fkey");
    const Reply whole = client.Download(key);
    EXPECT_EQ(whole.status, 200);
    EXPECT_EQ(whole.Header("Content-Length"), "0");
    const Reply probe = client.Download(key, "bytes=0-0");
    EXPECT_EQ(probe.status, 206);
    EXPECT_EQ(probe.Header("Content-Range"), "bytes 0-0/0");
    EXPECT_EQ(probe.Header("Content-Disposition"), "attachment;filename=\"empty;md5=" + Md5Of(""));
    EXPECT_EQ(probe.body, "");
}

TEST_F(DownloadTest, OfWhatIsNotThereIsRefusedWithItsWholeMessage)
{
    ServiceClient client = LoggedIn();
    // A range must not cut a piece out of the error's text.
    const Reply reply = client.Download("0123456789abcdef0123456789abcdef", "bytes=0-0");
    EXPECT_EQ(reply.status, 404);
    EXPECT_EQ(reply.Text("msg"), "no such file");
    EXPECT_EQ(client.Get("/object/file/down").status, 404);
}

TEST_F(DownloadTest, OfAnUnfinishedFileIsRefused)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.CreateLarge("f", "content").Text("fkey");
    EXPECT_EQ(client.Download(key).status, 409);
}

TEST_F(DownloadTest, ThatTheClientBreaksOffHarmsNothing)
{
    ServiceClient client = LoggedIn();
    const std::string content = SampleBytes(20'000'000);
    const std::string key = client.UploadWhole("f", content).Text("fkey");
    {
        const RawConnection connection(application_->Port());
        connection.Send("GET /object/file/down?fkey=" + key + " HTTP/1.1\r\nHost: h\r\nCookie: " + client.Cookie() +
                        "\r\n\r\n");
    }
    EXPECT_TRUE(client.Download(key).body == content);
}

} // namespace quorvex::services::test
