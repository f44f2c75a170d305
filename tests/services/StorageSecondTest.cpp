#include "support/RawHttp.h"
#include "support/StorageCalls.h"

namespace quorvex::services::test
{

namespace
{

// The first generation's requests as the second one's HTTP library writes them: header lines as the client gave them,
// the cookie kept by the library, and connections that it would go on using.
class StorageSecondTest : public ServiceFixture
{
protected:
    static constexpr const char* FormHeader = "Content-Type: application/x-www-form-urlencoded\r\n";

    RawAnswer Send(const std::string& requestLine, const std::string& headers = {}, const std::string& body = {})
    {
        RawAnswer answer =
            Exchange(application_->Port(),
                     requestLine + " HTTP/1.1\r\n" + headers + (cookie_.empty() ? "" : "Cookie: " + cookie_ + "\r\n") +
                         (body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n") +
                         "Host: h\r\nConnection: Keep-Alive\r\nCache-Control: no-cache\r\n\r\n" + body);
        const std::string cookie = answer.Header("Set-Cookie");
        cookie_ = cookie.empty() ? cookie_ : cookie.substr(0, cookie.find(';'));
        EXPECT_EQ(answer.Header("Connection"), "close");
        return answer;
    }

    RawAnswer Get(const std::string& path, const std::string& headers = {})
    {
        return Send("GET /storage/" + path, headers);
    }

    RawAnswer PostMultipart(const std::string& path, const std::string& form)
    {
        const std::string header = "Content-Type:multipart/form-data; boundary=" + std::string(Boundary) + "\r\n";
        return Send("POST /storage/" + path, header, form);
    }

    static Json::Value JsonOf(const RawAnswer& answer) { return Reply{answer.status, {}, answer.body}.Json(); }
    static int ResultIn(const RawAnswer& answer) { return JsonOf(answer)["result"].asInt(); }

    void Login()
    {
        const std::string session = LoggedIn().Login("alice", "secret").Text("uap_sid");
        EXPECT_EQ(ResultIn(Get("check.php?s=" + session)), 200);
    }

    std::string cookie_;
};

} // namespace

TEST_F(StorageSecondTest, LoginTransferAndLogout)
{
    Login();
    const std::string picture = SampleBytes(100'000, 11);
    EXPECT_EQ(ResultIn(PostMultipart("ops/upload_rest.php", WholeForm("p.png", picture))), 200);
    EXPECT_EQ(ResultIn(PostMultipart("ops/upload_rest.php", WholeForm("p.png", picture))), 409);
    const RawAnswer fetched = Get("ops/down.php?k=p.png");
    EXPECT_EQ(fetched.status, 200);
    EXPECT_TRUE(fetched.body == picture);
    EXPECT_EQ(Get("ops/down.php?k=nothing").status, 404);
    const Json::Value logout = JsonOf(Get("logout_rest.php"));
    EXPECT_EQ(logout["result"].asInt(), 200);
    EXPECT_EQ(logout["uid"].asString(), "1");
    EXPECT_EQ(Get("ops/down.php?k=p.png").status, 403);
}

TEST_F(StorageSecondTest, ADepotFileInBlocks)
{
    Login();
    const std::string content = SampleBytes(150'000, 12);
    const std::string form = DepotForm("d.bin", Md5Of(content), static_cast<std::int64_t>(content.size()));
    const Json::Value created = JsonOf(Send("POST /storage/ofs/upload_c_rest.php", FormHeader, form));
    EXPECT_EQ(created["result"].asInt(), 200);
    const std::string key = created["fkey"].asString();
    for (std::size_t first = 0; first < content.size(); first += 100'000)
    {
        const std::string block = content.substr(first, 100'000);
        EXPECT_EQ(
            ResultIn(PostMultipart("ofs/upload_u_rest.php", ChunkForm(key, first, first + block.size() - 1, block))),
            200);
    }
    EXPECT_EQ(ResultIn(Send("POST /storage/ofs/upload_e_rest.php", FormHeader, "k=" + key)), 200);
    const RawAnswer part = Get("ofs/down.php?uid=1&k=" + key, "Range: bytes=99000-101999\r\n");
    EXPECT_EQ(part.status, 206);
    EXPECT_TRUE(part.body == content.substr(99'000, 3000));
    const RawAnswer end = Get("ofs/down.php?uid=1&k=" + key, "Range: bytes=149000-249999\r\n");
    EXPECT_EQ(end.status, 206);
    EXPECT_TRUE(end.body == content.substr(149'000));
    EXPECT_EQ(ResultIn(Get("ofs/remove_rest.php?k=" + key)), 200);
    EXPECT_EQ(Get("ofs/down.php?uid=1&k=" + key).status, 404);
}

TEST_F(StorageSecondTest, AnEndedSessionShowsWhereEachOperationLooks)
{
    const RawAnswer upload = PostMultipart("ops/upload_rest.php", WholeForm("p.png", "x"));
    EXPECT_EQ(upload.status, 200);
    EXPECT_EQ(ResultIn(upload), 403);
    const RawAnswer create = Send("POST /storage/ofs/upload_c_rest.php", FormHeader, DepotForm("d", Md5Of("x"), 1));
    EXPECT_EQ(create.status, 403);
    EXPECT_EQ(ResultIn(create), 403);
    EXPECT_EQ(Get("ops/down.php?k=p.png").status, 403);
}

} // namespace quorvex::services::test
