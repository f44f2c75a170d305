#include "support/RawHttp.h"
#include "support/ServiceFixture.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>
#include <zlib.h>

namespace quorvex::services::test
{

namespace
{

class HttpAnswersTest : public ServiceFixture
{
protected:
    RawAnswer GetCapacity(const std::string& headers)
    {
        return Exchange(application_->Port(),
                        "GET /object/capacity/info HTTP/1.1\r\nHost: h\r\n" + headers + "Connection: close\r\n\r\n");
    }
};

std::string Gunzip(const std::string& bytes)
{
    std::array<char, 4096> buffer;
    z_stream stream{};
    inflateInit2(&stream, 47);
    std::string input = bytes;
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
    stream.avail_out = static_cast<uInt>(buffer.size());
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    inflateEnd(&stream);
    return {buffer.data(), stream.total_out};
}

} // namespace

TEST_F(HttpAnswersTest, CompressedJsonCarriesNoLength)
{
    const std::string cookie = "Cookie: " + LoggedIn().Cookie() + "\r\n";
    const RawAnswer plain = GetCapacity(cookie);
    const RawAnswer compressed = GetCapacity(cookie + "Accept-Encoding: gzip, deflate\r\n");

    EXPECT_EQ(plain.Header("Content-Length"), std::to_string(plain.body.size()));
    EXPECT_EQ(plain.Header("Content-Encoding"), "");
    EXPECT_EQ(compressed.status, 200);
    EXPECT_EQ(compressed.Header("Content-Encoding"), "gzip");
    EXPECT_EQ(compressed.Header("Content-Length"), "");
    EXPECT_EQ(Gunzip(JoinChunks(compressed.body)), plain.body);
}

TEST_F(HttpAnswersTest, ErrorsAreCompressedTheSameWay)
{
    const RawAnswer answer = GetCapacity("Accept-Encoding: gzip, deflate\r\n");
    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.Header("Content-Length"), "");
    EXPECT_EQ(Gunzip(JoinChunks(answer.body)), R"({"msg":"the session has expired"})");
}

TEST_F(HttpAnswersTest, UnknownPathsAndMethodsGetAMessage)
{
    ServiceClient client(application_->Port());
    const Reply reply = client.Get("/object/nothing");
    EXPECT_EQ(reply.status, 404);
    EXPECT_EQ(reply.Text("msg"), "no such operation");
    EXPECT_EQ(client.Get("/object/file/upload").status, 404);
    EXPECT_EQ(client.Get("/capacity/info").status, 404);
    EXPECT_EQ(client.Get("/object/capacity/info/").status, 404);
}

TEST_F(HttpAnswersTest, TheQueryMayHoldQuestionMarksHoweverItArrives)
{
    const std::string cookie = LoggedIn().Cookie();
    const std::string request =
        "GET /object/capacity/info?a=?&b=?? HTTP/1.1\r\nHost: h\r\nCookie: " + cookie + "\r\n\r\n";
    for (const std::size_t cut : {0U, 27U, 28U, 30U, 40U})
    {
        const RawConnection connection(application_->Port());
        connection.Send(request.substr(0, cut));
        connection.Send(request.substr(cut));
        EXPECT_EQ(ParseAnswer(connection.ReceiveAll()).status, 200) << cut;
    }
}

TEST_F(HttpAnswersTest, GarbageDoesNoHarm)
{
    const std::string requests[] = {"\r\n\r\n",
                                    "GET\r\n\r\n",
                                    "GET / HTTP/1.1\r\nno colon\r\n\r\n",
                                    std::string(20'000, 'A'),
                                    "GET /" + std::string(10'000, 'a') + " HTTP/1.1\r\n\r\n",
                                    std::string("\x16\x03\x01\0\0", 5)};
    for (const std::string& request : requests)
    {
        const RawConnection connection(application_->Port());
        connection.Send(request);
    }
    EXPECT_EQ(GetCapacity("").status, 403);
}

TEST_F(HttpAnswersTest, APostWithoutABodyIsAnsweredAtOnce)
{
    const RawAnswer answer = Exchange(application_->Port(), "POST /object/passport/login HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(answer.status, 400);
}

TEST_F(HttpAnswersTest, AStopCutsConnectionsThatSayNothing)
{
    const RawConnection silent(application_->Port());
    const RawConnection halfway(application_->Port());
    halfway.Send("POST /object/passport/login HTTP/1.1\r\nHost: h\r\nContent-Length: 100\r\n\r\n{");
    application_->Stop();
    EXPECT_NO_THROW(halfway.ReceiveAll());
    EXPECT_EQ(silent.ReceiveAll(), "");
}

TEST_F(HttpAnswersTest, AFullDiskIsToldApartFromOtherFailures)
{
    HttpServer server({.isQuiet = true});
    server.Get("/full-file", [](auto&, auto&) { throw std::system_error(ENOSPC, std::generic_category()); });
    server.Get("/full-database", [](auto&, auto&) { throw SQLite::Exception("full", SQLITE_FULL); });
    server.Get("/broken-database", [](auto&, auto&) { throw SQLite::Exception("broken", SQLITE_CORRUPT); });
    server.Start();

    ServiceClient client(server.Port());
    for (const char* path : {"/full-file", "/full-database"})
    {
        const Reply reply = client.Get(path);
        EXPECT_EQ(reply.status, 507) << path;
        EXPECT_EQ(reply.Text("msg"), "the service's disk is full") << path;
    }
    const Reply reply = client.Get("/broken-database");
    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.Text("msg"), "internal error");
}

TEST_F(HttpAnswersTest, ATakenPortIsReported)
{
    HttpServer::Options options;
    options.port = application_->Port();
    HttpServer second(options);
    EXPECT_THROW(second.Start(), std::runtime_error);
}

} // namespace quorvex::services::test
