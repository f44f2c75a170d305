#include "support/RawHttp.h"
#include "support/ServiceFixture.h"

namespace quorvex::services::test
{

namespace
{

class UploadTest : public ServiceFixture
{
protected:
    std::size_t BlobFiles() const { return CountFiles(options_.dataFolder / "blobs"); }
    std::size_t TemporaryFiles() const { return CountFiles(options_.dataFolder / "tmp"); }

    std::string Head(const std::string& contentType, std::size_t length, const std::string& cookie) const
    {
        return "POST /object/file/upload HTTP/1.1\r\nHost: h\r\nCookie: " + cookie + "\r\nContent-Type:" + contentType +
               "\r\nContent-Length: " + std::to_string(length) + "\r\nConnection: close\r\n\r\n";
    }
};

} // namespace

TEST_F(UploadTest, KeepsTheFileByteForByte)
{
    ServiceClient client = LoggedIn();
    // Around the sizes of the buffers on the way.
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 262143U, 262144U, 262145U, 1000003U})
    {
        const std::string content = SampleBytes(size, static_cast<unsigned>(size + 1));
        const Reply reply = client.UploadWhole("file", content);
        ASSERT_EQ(reply.status, 200) << size;
        EXPECT_EQ(reply.Json()["fsize"].asUInt(), size);
        EXPECT_EQ(reply.Json()["cflag"].asInt(), 1);
        EXPECT_EQ(reply.Text("fkey").size(), 32U);
        const Reply download = client.Download(reply.Text("fkey"));
        EXPECT_EQ(download.status, 200);
        ASSERT_TRUE(download.body == content) << size;
    }
}

TEST_F(UploadTest, TakesTheClientsExactBytes)
{
    const ServiceClient client = LoggedIn();
    const std::string form = WholeForm("\xE4\xB8\xAD\xE6\x96\x87.txt", "content");
    const RawAnswer answer = Exchange(application_->Port(), Head(WholeFormType, form.size(), client.Cookie()) + form);
    EXPECT_EQ(answer.status, 200);
    EXPECT_NE(answer.body.find("\"fsize\":7"), std::string::npos);
}

TEST_F(UploadTest, WithoutASessionIsRefusedEvenWhileTheClientStillSends)
{
    const std::string form = WholeForm("file", std::string(8'000'000, 'x'));
    const RawAnswer answer = Exchange(application_->Port(), Head(WholeFormType, form.size(), "none=1") + form);
    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, R"({"msg":"the session has expired"})");
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(UploadTest, ThatBreaksOffLeavesNothing)
{
    ServiceClient client = LoggedIn();
    const std::string form = WholeForm("file", std::string(1'000'000, 'x'));
    {
        const RawConnection connection(application_->Port());
        connection.Send(Head(WholeFormType, form.size(), client.Cookie()) + form.substr(0, 900'000));
    }
    // The services' end waits for requests under way.
    Restart();
    EXPECT_EQ(BlobFiles(), 0U);
    EXPECT_EQ(TemporaryFiles(), 0U);
    EXPECT_EQ(LoggedIn().UsedSpace(), 0U);
}

TEST_F(UploadTest, OfABrokenFormIsRefused)
{
    ServiceClient client = LoggedIn();
    const std::string whole = WholeForm("file", "content");
    const std::string withoutEnd = whole.substr(0, whole.size() - 10);
    EXPECT_EQ(client.PostForm(withoutEnd, WholeFormType).status, 400);
    EXPECT_EQ(client.PostForm("", WholeFormType).status, 400);
    EXPECT_EQ(client.PostForm(whole, "multipart/form-data").status, 400);
    EXPECT_EQ(client.PostForm(whole, "multipart/form-data; boundary=another").status, 400);
    EXPECT_EQ(client.PostForm(whole, "text/plain").status, 400);
    EXPECT_EQ(client.PostForm(WholeForm("", "content"), WholeFormType).status, 400);
    EXPECT_EQ(client.PostForm(WholeForm("../up", "content"), WholeFormType).status, 400);
    EXPECT_EQ(client.PostForm(WholeForm("a", "x") + WholeForm("b", "y"), WholeFormType).status, 200);
    EXPECT_EQ(BlobFiles(), 1U);
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(UploadTest, MoreThanTheDiskHoldsIsRefused)
{
    Restart([](Application::Options& options) { options.netDiskLimits = {1'000'000, 600'000}; });
    ServiceClient client = LoggedIn();
    EXPECT_EQ(client.UploadWhole("large", std::string(600'001, 'x')).status, 413);
    EXPECT_EQ(client.UploadWhole("fits", std::string(600'000, 'x')).status, 200);
    const Reply full = client.UploadWhole("no room", std::string(400'001, 'y'));
    EXPECT_EQ(full.status, 507);
    EXPECT_EQ(full.Text("msg"), "the disk has no room for the file");
    EXPECT_EQ(client.CreateLarge("no room", std::string(400'001, 'y')).status, 507);
    EXPECT_EQ(client.UsedSpace(), 600'000U);
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(UploadTest, EqualContentIsHeldOnce)
{
    ServiceClient alice = LoggedIn();
    ServiceClient bob = LoggedIn("bob");
    const std::string first = alice.UploadWhole("a", "same").Text("fkey");
    const std::string second = bob.UploadWhole("b", "same").Text("fkey");
    EXPECT_NE(first, second);
    EXPECT_EQ(BlobFiles(), 1U);
    alice.PostJson("/object/file/del4ever", KeyBody(first));
    EXPECT_EQ(bob.Download(second).body, "same");
}

TEST_F(UploadTest, FieldsMustBeUsable)
{
    ServiceClient client = LoggedIn();
    const std::string md5 = Md5Of("x");
    EXPECT_EQ(client.PostForm(CreateForm("f", 1, "not an md5"), BlockFormType).status, 400);
    EXPECT_EQ(client.PostForm(CreateForm("", 1, md5), BlockFormType).status, 400);
    EXPECT_EQ(client.PostForm(CreateForm("f", 0x100000000, md5), BlockFormType).status, 413);
    EXPECT_EQ(client.PostForm(BlockForm("unknown", 0, "x"), BlockFormType).status, 404);
    EXPECT_EQ(client.PostForm(BlockForm(std::string(300, 'k'), 0, "x"), BlockFormType).status, 400);
    std::string withoutMd5 = CreateForm("f", 1, md5);
    withoutMd5.replace(withoutMd5.find("\"md5\""), 5, "\"abc\"");
    EXPECT_EQ(client.PostForm(withoutMd5, BlockFormType).status, 400);
    std::string withContent = CreateForm("f", 1, md5);
    withContent.insert(withContent.rfind("\r\n--"), "content");
    EXPECT_EQ(client.PostForm(withContent, BlockFormType).status, 400);
}

} // namespace quorvex::services::test
