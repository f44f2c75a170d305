#include "support/ServiceFixture.h"

namespace quorvex::services::test
{

namespace
{

class FileChangesTest : public ServiceFixture
{
protected:
    static std::string ModifyBody(const std::string& key, const std::string& folder, const std::string& name)
    {
        return R"({"fkey":")" + key + R"(","fo_id":")" + folder + R"(","name":")" + name + R"("})";
    }

    static std::string NameOf(ServiceClient& client, const std::string& key)
    {
        const std::string value = client.Download(key).Header("Content-Disposition");
        return value.substr(21, value.find(';', 22) - 21);
    }
};

} // namespace

TEST_F(FileChangesTest, ANewNameIsTaken)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("old", "content").Text("fkey");
    EXPECT_EQ(client.PostJson("/object/file/modi", ModifyBody(key, "", "new")).status, 200);
    EXPECT_EQ(NameOf(client, key), "new");
    EXPECT_EQ(client.PostJson("/object/file/modi", ModifyBody(key, "0", "")).status, 200);
    EXPECT_EQ(NameOf(client, key), "new");
    EXPECT_EQ(client.PostJson("/object/file/modi", KeyBody(key)).status, 200);
}

TEST_F(FileChangesTest, AnUnusableChangeIsRefusedAsAWhole)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("old", "content").Text("fkey");
    EXPECT_EQ(client.PostJson("/object/file/modi", ModifyBody(key, "", "a/b")).status, 400);
    EXPECT_EQ(client.PostJson("/object/file/modi", ModifyBody(key, "nowhere", "new")).status, 404);
    EXPECT_EQ(client.PostJson("/object/file/modi", ModifyBody("nothing", "", "new")).status, 404);
    EXPECT_EQ(client.PostJson("/object/file/modi", R"({"name":"new"})").status, 400);
    EXPECT_EQ(NameOf(client, key), "old");
}

TEST_F(FileChangesTest, ADeletedFileIsGoneButKeepsItsSpace)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("f", "content").Text("fkey");
    EXPECT_EQ(client.PostJson("/object/file/del", KeyBody(key)).status, 200);
    EXPECT_EQ(client.Download(key).status, 404);
    EXPECT_EQ(client.PostJson("/object/file/modi", ModifyBody(key, "", "new")).status, 404);
    EXPECT_EQ(client.UsedSpace(), 7U);

    EXPECT_EQ(client.PostJson("/object/file/del4ever", KeyBody(key)).status, 200);
    EXPECT_EQ(client.UsedSpace(), 0U);
    EXPECT_EQ(client.PostJson("/object/file/del4ever", KeyBody(key)).status, 404);
}

TEST_F(FileChangesTest, AFileErasedForEverGivesItsSpaceBack)
{
    ServiceClient client = LoggedIn();
    const std::string key = client.UploadWhole("f", std::string(100'000, 'x')).Text("fkey");
    EXPECT_EQ(client.UsedSpace(), 100'000U);
    EXPECT_EQ(client.PostJson("/object/file/del4ever", KeyBody(key)).status, 200);
    EXPECT_EQ(client.UsedSpace(), 0U);
    EXPECT_EQ(CountFiles(options_.dataFolder / "blobs"), 0U);
}

} // namespace quorvex::services::test
