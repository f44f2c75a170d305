#include "StorageFixture.h"

#include <algorithm>

namespace quorvex::e2e
{

namespace
{

class SeveralOnTheDisk : public DiskFixture
{
};

class SeveralInTheStorage : public StorageFixture
{
protected:
    SeveralInTheStorage() : StorageFixture("storage") {}
};

class SeveralInTheDepot : public StorageFixture
{
protected:
    SeveralInTheDepot() : StorageFixture("depot") {}
};

} // namespace

TEST_F(SeveralOnTheDisk, GoAndComeTogether)
{
    const std::filesystem::path other = MakeFolder("other");
    const Json::Value put =
        Done({"put", Write("a.txt", "alpha"), Write("b.txt", "beta"), Write("other/a.txt", "another")});
    ASSERT_EQ(put["files"].size(), 3U);
    std::vector<std::string> get = {"get"};
    for (const Json::Value& file : put["files"])
    {
        get.push_back(file["key"].asString());
    }
    const std::filesystem::path out = MakeFolder("out");
    get.insert(get.end(), {"--out", out.string()});
    Done(get);
    EXPECT_EQ(ReadFile(out / "a.txt"), "alpha");
    EXPECT_EQ(ReadFile(out / "b.txt"), "beta");
    EXPECT_EQ(ReadFile(out / "a (2).txt"), "another");
}

TEST_F(SeveralOnTheDisk, DoNotSufferFromOneThatFails)
{
    const ConsoleRun run =
        Run({"put", Write("a.txt", "alpha"), (folder.Path() / "none").string(), Write("b.txt", "beta")});
    EXPECT_EQ(run.exitStatus, 1);
    const Json::Value files = run.Json()["files"];
    ASSERT_EQ(files.size(), 3U);
    EXPECT_TRUE(files[0]["ok"].asBool());
    EXPECT_FALSE(files[1]["ok"].asBool());
    EXPECT_TRUE(files[2]["ok"].asBool());
    EXPECT_EQ(Get(files[2]["key"].asString()), "beta");
}

TEST_F(SeveralOnTheDisk, AreRemovedAndRestoredTogether)
{
    const std::string first = PutContent("a.txt", "alpha");
    const std::string second = PutContent("b.txt", "beta");
    EXPECT_EQ(Done({"info", first, second})["files"].size(), 2U);
    Done({"rm", first, second});
    const Json::Value items = Done({"trash"})["items"];
    ASSERT_EQ(items.size(), 2U);
    Done({"restore", items[0]["id"].asString(), items[1]["id"].asString()});
    EXPECT_EQ(Done({"ls"})["files"].size(), 2U);
    EXPECT_EQ(Refused({"rm", first, "nosuchkey", second, "--forever"}), 404);
    EXPECT_TRUE(Done({"ls"})["files"].empty());
}

TEST_F(SeveralOnTheDisk, AreListedAlikeInBothEncodings)
{
    PutContent("caf\xC3\xA9.txt", "alpha");
    Done({"mkdir", "\xE4\xB8\xAD\xE6\x96\x87"});
    Done({"rm", PutContent("gone.txt", "gone")});
    EXPECT_EQ(Done({"ls", "--utf8"}), Done({"ls"}));
    EXPECT_EQ(Done({"trash", "--utf8"}), Done({"trash"}));
}

TEST_F(SeveralOnTheDisk, AreDigestedTogether)
{
    const std::string a = Write("a.txt", "abc");
    const std::string empty = Write("empty", "");
    const char* const md5OfAbc = "900150983cd24fb0d6963f7d28e17f72";
    const char* const sha1OfAbc = "a9993e364706816aba3e25717850c26c9cd0d89d";

    const Json::Value md5 = RunConsole({"md5", a, empty, "--json"}).Json()["files"];
    EXPECT_EQ(md5[0]["md5"].asString(), md5OfAbc);
    EXPECT_EQ(md5[1]["md5"].asString(), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(RunConsole({"md5", a}).output, std::string(md5OfAbc) + "  " + a + '\n');

    const Json::Value sums = RunConsole({"storage", "checksum", a, empty, "--json"}).Json()["files"];
    EXPECT_EQ(sums[0]["md5"].asString(), md5OfAbc);
    EXPECT_EQ(sums[0]["sha1"].asString(), sha1OfAbc);
    EXPECT_EQ(sums[1]["sha1"].asString(), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST_F(SeveralInTheStorage, GoAndComeTogether)
{
    const std::string red = Write("red.png", "red");
    const std::string blue = Write("blue.png", "blue");
    EXPECT_EQ(Done({"put-picture", red, blue})["files"].size(), 2U);
    EXPECT_EQ(Done({"emoticons", "put", red, blue})["files"].size(), 2U);
    const std::filesystem::path out = MakeFolder("out");
    Done({"get-picture", "red.png", "blue.png", "--out", out.string()});
    EXPECT_EQ(ReadFile(out / "blue.png"), "blue");
    Done({"emoticons", "rm", "red.png", "blue.png"});
    EXPECT_EQ(Run({"emoticons", "get", "red.png", "blue.png", "--out", out.string()}).exitStatus, 1);
}

TEST_F(SeveralInTheStorage, LogOutInEachGeneration)
{
    for (const char* const generation : {"1", "2", "3"})
    {
        EXPECT_EQ(Done({"logout", "--generation", generation})["login"].asString(), "password");
    }
    EXPECT_EQ(RunConsole({"netdisk", "logout", "--server", Server(), "--user", kAnn.name, "--password", kAnn.password})
                  .exitStatus,
              0);
}

TEST_F(SeveralInTheDepot, GoComeAndAreRemovedTogether)
{
    const Json::Value put = Done({"put", Write("a.bin", "alpha"), Write("b.bin", "beta")});
    const std::string first = put["files"][0]["key"].asString();
    const std::string second = put["files"][1]["key"].asString();
    const std::filesystem::path out = MakeFolder("out");
    Done({"get", first, second, "--out", out.string()});
    EXPECT_EQ(ReadFile(out / "a.bin"), "alpha");
    EXPECT_EQ(ReadFile(out / "b.bin"), "beta");
    Done({"renew", first, second});
    Done({"rm", first, second});
    EXPECT_TRUE(Done({"ls"})["files"].empty());
}

} // namespace quorvex::e2e
