#include "DiskFixture.h"

#include "Application.h"

#include <atomic>
#include <iterator>
#include <set>

namespace quorvex::e2e
{

namespace
{

class Sharing : public DiskFixture
{
protected:
    std::string Share(const std::vector<std::string>& keys, const std::string& span = "1h") const
    {
        std::vector<std::string> arguments = {"share"};
        arguments.insert(arguments.end(), keys.begin(), keys.end());
        arguments.insert(arguments.end(), {"--for", span});
        const Json::Value shared = Done(arguments);
        EXPECT_EQ(shared["files"].asUInt64(), keys.size());
        EXPECT_NE(shared["pcode"].asString(), "");
        return shared["pcode"].asString();
    }

    Json::Value SharesOf(const Account& account, const std::string& type = "all") const
    {
        return Done({"shares", "--type", type}, account)["pcodes"];
    }

    Json::Value FilesOf(const std::string& pcode) const { return Done({"fetch", pcode, "--list"}, kBob)["files"]; }

    /// Lets the second account fetch a code's files into a folder.
    Json::Value Fetch(const std::string& pcode, const std::filesystem::path& out,
                      const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> arguments = {"fetch", pcode, "--out", out.string()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Json::Value files = Done(arguments, kBob)["files"];
        for (const Json::Value& file : files)
        {
            EXPECT_TRUE(file["verified"].asBool()) << file;
        }
        return files;
    }
};

std::string Repeated(const std::string& character, std::size_t count)
{
    std::string text;
    while (count-- > 0)
    {
        text += character;
    }
    return text;
}

std::ptrdiff_t FilesIn(const std::filesystem::path& folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

/// The services in this process, with a clock that stands still until the test moves it.
class SharingInTime : public Sharing
{
protected:
    void SetUp() override
    {
        services::Application::Options options;
        options.dataFolder = folder.Path() / "data";
        options.http.isQuiet = true;
        options.clock = [this] { return now.load(); };
        application.emplace(options);
        for (const Account& account : {kAnn, kBob})
        {
            application->GetAccounts().Ensure(account.name, account.password);
        }
        application->Start();
        port = application->Port();
    }

    std::atomic<std::int64_t> now{1'795'210'281};
    std::optional<services::Application> application;
};

} // namespace

TEST_F(Sharing, SecondAccountsBytesEqualTheFirstOnes)
{
    const std::string small = Pattern(12345, 1);
    const std::string large = Pattern(9 * kMebibyte + 321, 2);
    const std::string name = "\xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80.bin";
    const std::string pcode = Share({PutContent(name, small), PutContent("large.bin", large), PutContent("empty", "")});

    // Whole, and range by range.
    for (const std::string from : {"1GiB", "1MiB"})
    {
        const std::filesystem::path out = MakeFolder("from " + from);
        EXPECT_EQ(Fetch(pcode, out, {"--large-from", from, "--block-size", "1MiB"}).size(), 3U);
        EXPECT_EQ(ReadFile(out / name), small);
        EXPECT_EQ(ReadFile(out / "large.bin"), large);
        EXPECT_TRUE(std::filesystem::exists(out / "empty"));
        EXPECT_EQ(ReadFile(out / "empty"), "");
    }
    EXPECT_GE(SharesOf(kAnn)[0]["downloads"].asUInt64(), 1U);
}

TEST_F(Sharing, OneFileOfACodeComesAlone)
{
    const std::string pcode = Share({PutContent("one.txt", "one"), PutContent("two.txt", "two")});
    const Json::Value files = FilesOf(pcode);
    ASSERT_EQ(files.size(), 2U);
    const Json::Value& second = files[0]["name"].asString() == "two.txt" ? files[0] : files[1];
    EXPECT_EQ(second["size"].asUInt(), 3U);
    const std::filesystem::path out = folder.Path() / "here.txt";
    EXPECT_EQ(Fetch(pcode, out, {"--fid", second["fid"].asString()})[0]["fid"], second["fid"]);
    EXPECT_EQ(ReadFile(out), "two");
    EXPECT_EQ(Run({"fetch", pcode, "--fid", "nosuch", "--out", out.string()}, kBob).exitStatus, 1);
}

TEST_F(Sharing, LongNamesComeWhole)
{
    struct Case
    {
        std::string name;
        std::string listed;
    };
    const std::string beginning(40, 'a');
    for (const Case& item : {Case{std::string(76, 'b') + ".pdf", std::string(64, 'b')},
                             Case{beginning + Repeated("\xD0\x96", 36) + ".pdf", beginning + Repeated("\xD0\x96", 24)},
                             Case{beginning + beginning.substr(20) + Repeated("\xE6\x97\xA5", 16) + ".pdf",
                                  beginning + beginning.substr(20) + Repeated("\xE6\x97\xA5", 4)}})
    {
        const std::string content = Pattern(12345);
        const std::string pcode = Share({PutContent(item.name, content)});
        EXPECT_EQ(FilesOf(pcode)[0]["name"].asString(), item.listed);

        const std::filesystem::path out = MakeFolder("out " + pcode);
        EXPECT_EQ(Fetch(pcode, out)[0]["name"].asString(), item.name);
        EXPECT_EQ(ReadFile(out / item.name), content);
        EXPECT_EQ(FilesIn(out), 1);
        const std::filesystem::path named = out / "named.pdf";
        EXPECT_EQ(Fetch(pcode, named)[0]["name"].asString(), item.name);
        EXPECT_EQ(ReadFile(named), content);

        // Blocks bring no name along.
        EXPECT_EQ(Fetch(pcode, out, {"--large-from", "1KiB"})[0]["name"].asString(), item.listed);
        EXPECT_EQ(ReadFile(out / item.listed), content);
        EXPECT_EQ(FilesIn(out), 3);
    }
}

TEST_F(Sharing, NamesThatTheModuleCannotWriteStayCut)
{
    // A name as the module writes it has one character for each byte.
    const std::string pcode = Share({PutContent(Repeated("\xE6\x97\xA5", 80) + ".pdf", "text")});
    const std::filesystem::path out = MakeFolder("out");
    const ConsoleRun run = Run({"fetch", pcode, "--out", out.string()}, kBob);
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_NE(run.errors.find("note: of the name "), std::string::npos) << run.errors;
    EXPECT_EQ(ReadFile(out / Repeated("\xE6\x97\xA5", 64)), "text");
    EXPECT_EQ(FilesIn(out), 1);
}

TEST_F(Sharing, LongNamesAreTheirOwnAlsoWhenTheyBeginAlike)
{
    const std::string one = std::string(70, 'a') + " one.txt";
    const std::string two = std::string(70, 'a') + " two.txt";
    const std::string pcode = Share({PutContent(one, "one"), PutContent(two, "two"), PutContent(one, "three")});
    const std::filesystem::path out = MakeFolder("out");
    EXPECT_EQ(Fetch(pcode, out).size(), 3U);
    EXPECT_EQ(ReadFile(out / two), "two");
    EXPECT_EQ((std::set<std::string>{ReadFile(out / one), ReadFile(out / (std::string(70, 'a') + " one (2).txt"))}),
              (std::set<std::string>{"one", "three"}));
}

TEST_F(Sharing, FilesOfOneNameDoNotReplaceEachOther)
{
    const std::string one = PutContent("same.txt", "one");
    const std::string pcode = Share({one, PutContent("same.txt", "two")});
    const std::filesystem::path out = MakeFolder("out");
    EXPECT_EQ(Fetch(pcode, out).size(), 2U);
    EXPECT_EQ((std::set<std::string>{ReadFile(out / "same.txt"), ReadFile(out / "same (2).txt")}),
              (std::set<std::string>{"one", "two"}));
}

TEST_F(Sharing, FilesDoNotSufferFromOneThatFails)
{
    const std::string pcode = Share({PutContent("a.txt", "alpha"), PutContent("b.txt", "beta")});
    const std::filesystem::path out = MakeFolder("out");
    std::filesystem::create_directories(out / "a.txt");
    const ConsoleRun run = Run({"fetch", pcode, "--out", out.string()}, kBob);
    EXPECT_EQ(run.exitStatus, 1);
    const Json::Value files = run.Json()["files"];
    ASSERT_EQ(files.size(), 2U) << run.output;
    EXPECT_FALSE(files[0]["ok"].asBool());
    EXPECT_TRUE(files[1]["ok"].asBool());
    EXPECT_EQ(ReadFile(out / "b.txt"), "beta");
}

TEST_F(Sharing, SeveralFilesNeedAFolder)
{
    const std::string pcode = Share({PutContent("one.txt", "one"), PutContent("two.txt", "two")});
    const std::string out = Write("file", "kept");
    EXPECT_EQ(Run({"fetch", pcode, "--out", out}, kBob).exitStatus, 1);
    EXPECT_EQ(ReadFile(out), "kept");
}

TEST_F(Sharing, SavedFilesAreTheSecondAccountsOwn)
{
    const std::string content = Pattern(40000);
    const std::string key = PutContent("shared.bin", content);
    const std::string pcode = Share({key});
    const std::string target = Done({"mkdir", "saved"}, kBob)["id"].asString();
    const std::uint64_t before = Used(kBob);

    EXPECT_EQ(Done({"save", pcode, "--folder", target}, kBob)["files"].asUInt(), 1U);
    Done({"rm", key, "--forever"});
    const Json::Value files = Done({"ls", target}, kBob)["files"];
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0]["name"].asString(), "shared.bin");
    EXPECT_EQ(Used(kBob), before + content.size());
    EXPECT_EQ(Get(files[0]["key"].asString(), {}, kBob), content);
}

TEST_F(Sharing, ExtendedCodeLivesLonger)
{
    const std::string pcode = Share({PutContent("file.txt", "text")});
    const Json::Value before = SharesOf(kAnn)[0];
    EXPECT_EQ(before["pcode"].asString(), pcode);
    EXPECT_EQ(before["deadline"].asInt64() - before["created"].asInt64(), 3600);
    Done({"extend", pcode, "--by", "1d"});
    EXPECT_EQ(SharesOf(kAnn)[0]["deadline"].asInt64(), before["deadline"].asInt64() + 86400);
}

TEST_F(Sharing, EndedCodesAreNoMore)
{
    const std::string key = PutContent("file.txt", "text");
    const std::vector<std::string> pcodes = {Share({key}), Share({key}), Share({key})};
    EXPECT_EQ(SharesOf(kAnn).size(), 3U);
    Done({"unshare", pcodes[0], pcodes[2]});
    ASSERT_EQ(SharesOf(kAnn).size(), 1U);
    EXPECT_EQ(SharesOf(kAnn)[0]["pcode"].asString(), pcodes[1]);
    EXPECT_EQ(Refused({"fetch", pcodes[0]}, kBob), 404);
    EXPECT_EQ(FilesOf(pcodes[1]).size(), 1U);
}

TEST_F(Sharing, RemovedFilesAreNotReachedUntilTheyAreRestored)
{
    const std::string key = PutContent("file.txt", "text");
    const std::string pcode = Share({key});
    const std::filesystem::path out = folder.Path() / "out.txt";
    Done({"rm", key});
    EXPECT_TRUE(FilesOf(pcode).isArray());
    EXPECT_TRUE(FilesOf(pcode).empty());
    const ConsoleRun fetch = Run({"fetch", pcode, "--out", out.string()}, kBob);
    EXPECT_EQ(fetch.exitStatus, 1);
    EXPECT_NE(fetch.Json()["message"].asString().find("has no files"), std::string::npos) << fetch.output;
    const ConsoleRun save = Run({"save", pcode}, kBob);
    EXPECT_EQ(save.exitStatus, 1);
    EXPECT_NE(save.Json()["message"].asString().find("has no files"), std::string::npos) << save.output;
    Done({"restore", Done({"trash"})["items"][0]["id"].asString()});
    Fetch(pcode, out);
    EXPECT_EQ(ReadFile(out), "text");
}

TEST_F(Sharing, OnlyItsOwnerChangesACode)
{
    const std::string pcode = Share({PutContent("file.txt", "text")});
    EXPECT_EQ(Refused({"extend", pcode, "--by", "1d"}, kBob), 404);
    Run({"unshare", pcode}, kBob);
    EXPECT_TRUE(SharesOf(kBob).empty());
    EXPECT_EQ(SharesOf(kAnn).size(), 1U);
    EXPECT_EQ(FilesOf(pcode).size(), 1U);
}

TEST_F(Sharing, UnknownCodesAndKeysArePlainFailures)
{
    EXPECT_EQ(Refused({"fetch", "nosuch"}, kBob), 404);
    EXPECT_EQ(Refused({"save", "nosuch"}, kBob), 404);
    EXPECT_EQ(Refused({"extend", "nosuch", "--by", "1d"}), 404);
    EXPECT_EQ(Refused({"share", "nosuch"}), 404);
    const std::string key = PutContent("file.txt", "text");
    EXPECT_EQ(Refused({"share", key}, kBob), 404);
}

TEST_F(Sharing, CodeHasTwoHundredFilesAtMost)
{
    std::vector<std::string> arguments(202, "k");
    arguments.front() = "share";
    EXPECT_EQ(Refused(arguments), -138);
    arguments.front() = "unshare";
    EXPECT_EQ(Refused(arguments), -139);
}

TEST_F(Sharing, KilledFetchGoesOnWhereItWas)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string pcode = Share({PutContent("large.bin", content)});
    const std::filesystem::path out = folder.Path() / "fetched.bin";
    const std::vector<std::string> options = {"fetch", pcode, "--out", out.string(), "--block-size", "256KiB"};
    {
        ConsoleProcess download(Command(options, kBob));
        // A tenth has come when the first line of progress does.
        ASSERT_TRUE(download.WaitForError("\n")) << download.Errors();
        download.Kill();
    }
    EXPECT_FALSE(std::filesystem::exists(out));
    const Json::Value rest = Done(options, kBob)["files"][0];
    EXPECT_GE(rest["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_TRUE(rest["verified"].asBool());
    EXPECT_EQ(ReadFile(out), content);
}

TEST_F(Sharing, PeopleReadColumns)
{
    EXPECT_EQ(Shown({"shares"}), "there are none\n");
    const std::string pcode = Share({PutContent("file.txt", "text")});
    const std::string shown = Shown({"shares"});
    EXPECT_EQ(shown.rfind("PCODE ", 0), 0U) << shown;
    EXPECT_NE(shown.find('\n' + pcode + "  20"), std::string::npos) << shown;
    const std::string files = Shown({"fetch", pcode, "--list"});
    EXPECT_EQ(files.rfind("FID ", 0), 0U) << files;
    EXPECT_NE(files.find("  4 bytes  file.txt\n"), std::string::npos) << files;
}

TEST_F(SharingInTime, ExpiredCodeIsOver)
{
    const std::string key = PutContent("file.txt", "text");
    const std::string brief = Share({key}, "90s");
    const std::string lasting = Share({key}, "2d");
    const std::filesystem::path out = MakeFolder("out");
    now += 89;
    EXPECT_EQ(Fetch(brief, out).size(), 1U);
    now += 1;
    EXPECT_EQ(Refused({"fetch", brief, "--out", out.string()}, kBob), 404);
    EXPECT_EQ(Refused({"save", brief}, kBob), 404);
    EXPECT_EQ(Refused({"extend", brief, "--by", "1d"}), 404);
    EXPECT_EQ(Fetch(lasting, out).size(), 1U);

    EXPECT_EQ(SharesOf(kAnn).size(), 2U);
    ASSERT_EQ(SharesOf(kAnn, "alive").size(), 1U);
    EXPECT_EQ(SharesOf(kAnn, "alive")[0]["pcode"].asString(), lasting);
    ASSERT_EQ(SharesOf(kAnn, "expired").size(), 1U);
    EXPECT_EQ(SharesOf(kAnn, "expired")[0]["pcode"].asString(), brief);
}

TEST_F(SharingInTime, ExtendedCodeOutlivesItsFirstDeadline)
{
    const std::string pcode = Share({PutContent("file.txt", "text")}, "15m");
    Done({"extend", pcode, "--by", "1h"});
    now += 900;
    EXPECT_EQ(Fetch(pcode, MakeFolder("out")).size(), 1U);
    now += 3600;
    EXPECT_EQ(Refused({"fetch", pcode}, kBob), 404);
}

} // namespace quorvex::e2e
