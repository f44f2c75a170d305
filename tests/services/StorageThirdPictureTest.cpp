#include "support/StorageCalls.h"
#include "support/ThirdCalls.h"
#include "support/Together.h"

namespace quorvex::services::test
{

namespace
{

class StorageThirdPictureTest : public ServiceFixture
{
protected:
    ThirdClient Third(const ServiceClient& client) { return {application_->Port(), client.Cookie()}; }

    std::size_t BlobFiles() const { return CountFiles(options_.dataFolder / "blobs"); }
    std::size_t TemporaryFiles() const { return CountFiles(options_.dataFolder / "tmp"); }
};

void ExpectPicture(const Reply& reply, int code, const std::string& key, std::size_t size)
{
    EXPECT_EQ(reply.status, 200);
    const Json::Value json = reply.Json();
    EXPECT_EQ(json["code"].asInt(), code) << reply.body;
    EXPECT_EQ(json["fkey"].asString(), key);
    EXPECT_TRUE(json["ticket"].isString());
    EXPECT_EQ(json["ticket"].asString(), "");
    ASSERT_TRUE(json["fsize"].isUInt());
    EXPECT_EQ(json["fsize"].asUInt(), size);
    ASSERT_TRUE(json["msg"].isString());
    EXPECT_EQ(json["msg"].asString().empty(), code == 200);
    EXPECT_EQ(json.size(), 5U);
}

} // namespace

TEST_F(StorageThirdPictureTest, APictureIsFetchedAsItWasSent)
{
    const ThirdClient client = Third(LoggedIn());
    for (const std::size_t size : {0U, 1U, 262'144U, 1'000'003U})
    {
        const std::string name = "p" + std::to_string(size) + ".jpg";
        const std::string content = SampleBytes(size, 5);
        ExpectPicture(client.PutPicture(name, content), 200, name, size);
        const Reply reply = client.GetPicture("0", name);
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.Header("Content-Length"), std::to_string(size));
        EXPECT_TRUE(reply.body == content) << size;
    }
    EXPECT_EQ(client.GetPicture("0", "nothing.jpg").status, 404);
}

TEST_F(StorageThirdPictureTest, AllGenerationsFetchTheSameBytes)
{
    ServiceClient first = LoggedIn();
    const ThirdClient third = Third(first);
    const std::string old = SampleBytes(70'000, 6);
    const std::string recent = SampleBytes(80'000, 7);
    EXPECT_EQ(ResultOf(PutPicture(first, "old.jpg", old)), 200);
    EXPECT_TRUE(third.GetPicture("0", "old.jpg").body == old);
    ExpectPicture(third.PutPicture("recent.jpg", recent), 200, "recent.jpg", recent.size());
    EXPECT_TRUE(GetPicture(first, "recent.jpg").body == recent);

    // What one holds, the others are told or take for done, each as its clients read success.
    EXPECT_EQ(ResultOf(PutPicture(first, "recent.jpg", recent)), 409);
    ExpectPicture(third.PutPicture("old.jpg", old), 200, "old.jpg", old.size());
    EXPECT_EQ(BlobFiles(), 2U);
    EXPECT_EQ(UsedInDepot(first), old.size() + recent.size());
}

TEST_F(StorageThirdPictureTest, FolderZeroIsAllPicturesAndANumberThoseOfOneAccount)
{
    const ThirdClient alice = Third(LoggedIn());
    const ThirdClient bob = Third(LoggedIn("bob"));
    alice.PutPicture("a.jpg", "alice's");
    EXPECT_EQ(bob.GetPicture("0", "a.jpg").body, "alice's");
    EXPECT_EQ(bob.GetPicture("1", "a.jpg").body, "alice's");
    for (const char* folder : {"2", "3", "", "00x", "-1", "..", "99999999999999999999", "%30/1"})
    {
        EXPECT_EQ(bob.GetPicture(folder, "a.jpg").status, 404) << folder;
    }
    EXPECT_EQ(bob.GetPicture("0", "").status, 404);
    EXPECT_EQ(bob.GetPicture("0", "x/a.jpg").status, 404);
}

TEST_F(StorageThirdPictureTest, OnlyItsOwnerReplacesAPicture)
{
    const ThirdClient alice = Third(LoggedIn());
    const ThirdClient bob = Third(LoggedIn("bob"));
    alice.PutPicture("p.jpg", "old");
    ExpectPicture(alice.PutPicture("p.jpg", "newer"), 200, "p.jpg", 5);
    ExpectPicture(bob.PutPicture("p.jpg", "newer"), 200, "p.jpg", 5);
    ExpectPicture(bob.PutPicture("p.jpg", "other"), 423, "", 0);
    EXPECT_EQ(bob.GetPicture("0", "p.jpg").body, "newer");
    EXPECT_EQ(BlobFiles(), 1U);
}

TEST_F(StorageThirdPictureTest, TheMd5HasToBeRight)
{
    const ThirdClient client = Third(LoggedIn());
    const auto put = [&](const std::string& md5) { return client.PutPicture(ThirdPictureForm("p.jpg", "x", md5)); };
    const Reply wrong = put(Md5Of("y"));
    ExpectPicture(wrong, 409, "", 0);
    EXPECT_EQ(wrong.Text("msg"), "the MD5 does not match");
    for (const std::string& md5 : {std::string(), std::string("0"), std::string(32, 'g'), std::string(33, '0')})
    {
        ExpectPicture(put(md5), 400, "", 0);
    }
    EXPECT_EQ(client.GetPicture("0", "p.jpg").status, 404);
    EXPECT_EQ(BlobFiles(), 0U);
    EXPECT_EQ(TemporaryFiles(), 0U);
    std::string upperCase = Md5Of("x");
    for (char& letter : upperCase)
    {
        letter = letter >= 'a' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    ExpectPicture(put(upperCase), 200, "p.jpg", 1);
}

TEST_F(StorageThirdPictureTest, TheMd5MayStandInAnOrdinaryPartToo)
{
    const ThirdClient client = Third(LoggedIn());
    const std::string lone = "Content_disposition: form-data: name=\"md5\"\r\n";
    std::string form = ThirdPictureForm("p.jpg", "content", Md5Of("content"));
    form.replace(form.find(lone), lone.size(), "Content-Disposition: form-data; name=\"md5\"\r\n\r\n");
    ExpectPicture(client.PutPicture(form), 200, "p.jpg", 7);
}

TEST_F(StorageThirdPictureTest, NamesMayHoldWhatPathsUseOtherwise)
{
    ServiceClient first = LoggedIn();
    const ThirdClient client = Third(first);
    for (const std::string name : {"a?b.jpg", "a#b.jpg", "a?#?.jpg", "100%.jpg", "a+b&c=d.jpg", "q\"q.jpg", "a;b.jpg",
                                   "\xD1\x84.jpg", "\xF0\x9F\x98\x80.jpg"})
    {
        ExpectPicture(client.PutPicture(name, name), 200, name, name.size());
        EXPECT_EQ(client.GetPicture("0", name).body, name);
    }
    ExpectPicture(client.PutPicture("a b.jpg", "blank"), 200, "a b.jpg", 5);
    EXPECT_EQ(client.GetPicture("0", "a%20b.jpg").body, "blank");
    EXPECT_EQ(client.GetPicture("%30", "%61%20b.jpg").body, "blank");
    // In the OEM code page, as forms carry it, and in UTF-8, as the path does.
    ExpectPicture(client.PutPicture("caf\x82.jpg", "accent"), 200, "caf\xC3\xA9.jpg", 6);
    EXPECT_EQ(client.GetPicture("0", "caf%C3%A9.jpg").body, "accent");
    EXPECT_EQ(client.GetPicture("0", "caf\x82.jpg").body, "accent");
}

TEST_F(StorageThirdPictureTest, HostileFormsAreRefused)
{
    const ThirdClient client = Third(LoggedIn());
    const std::string md5 = Md5Of("x");
    const std::string whole = ThirdPictureForm("p.jpg", "x", md5);
    const std::string delimiter = "--" + std::string(Boundary);
    const std::size_t file = whole.find(delimiter, 1);
    const std::string end = delimiter + "--\r\n";
    const std::string lone = "Content_disposition: form-data: ";
    for (const std::string& form :
         {std::string(), end, whole.substr(0, whole.size() - 6), whole.substr(file), whole.substr(0, file) + end,
          // The file before its MD5, a head that never ends, and fields without a name or too long.
          whole.substr(file, whole.size() - file - end.size()) + whole.substr(0, file) + end,
          delimiter + "\r\n" + lone + std::string(20'000, 'n'), delimiter + "\r\n" + lone + "\r\n" + md5 + whole,
          ThirdPictureForm("p.jpg", "x", std::string(300, '0')), ThirdPictureForm("../p.jpg", "x", md5),
          ThirdPictureForm("a\\b.jpg", "x", md5), ThirdPictureForm("", "x", md5),
          ThirdPictureForm(std::string(65, 'k'), "x", md5)})
    {
        ExpectPicture(client.PutPicture(form), 400, "", 0);
    }
    EXPECT_EQ(BlobFiles(), 0U);
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(StorageThirdPictureTest, MoreThanThereIsRoomForIsRefused)
{
    Restart([](Application::Options& options) {
        options.storageLimits.quota = 1'000'000;
        options.storageLimits.maxFileSize = 600'000;
    });
    const ThirdClient client = Third(LoggedIn());
    ExpectPicture(client.PutPicture("large", std::string(600'001, 'x')), 413, "", 0);
    ExpectPicture(client.PutPicture("p", std::string(600'000, 'x')), 200, "p", 600'000);
    ExpectPicture(client.PutPicture("q", std::string(400'001, 'y')), 507, "", 0);
    EXPECT_EQ(TemporaryFiles(), 0U);
}

TEST_F(StorageThirdPictureTest, ManyAtOnceEachKeepTheirs)
{
    const ThirdClient client = Third(LoggedIn());
    Together(8, [&](int i) {
        for (int round = 0; round < 5; ++round)
        {
            const std::string name = "p" + std::to_string(i) + "-" + std::to_string(round);
            const std::string content = SampleBytes(30'000, static_cast<unsigned>(i * 5 + round));
            ExpectPicture(client.PutPicture(name, content), 200, name, content.size());
            EXPECT_TRUE(client.GetPicture("1", name).body == content) << name;
        }
    });
    EXPECT_EQ(BlobFiles(), 40U);
}

} // namespace quorvex::services::test
