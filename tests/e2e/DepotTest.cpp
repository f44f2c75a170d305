#include "StorageFixture.h"

#include "Application.h"

#include <atomic>
#include <csignal>

namespace quorvex::e2e
{

namespace
{

class Depot : public StorageFixture
{
protected:
    Depot() : StorageFixture("depot") {}

    Json::Value Files(const Account& account = kAnn) const { return Done({"ls"}, account)["files"]; }

    std::uint64_t UsedSpace() const { return Done({"info"})["used"].asUInt64(); }

    /// Starts a transfer that takes a while, and has it stand still when a tenth has been confirmed.
    void PauseEarly(ConsoleProcess& transfer) const
    {
        ASSERT_TRUE(transfer.WaitForError("\n")) << transfer.Errors();
        transfer.Pause();
    }

    /// Runs a transfer whose login ends on the way, and returns how often it has logged in.
    int LoginsOf(std::vector<std::string> command) const
    {
        const std::filesystem::path log = folder.Path() / "module.log";
        command.insert(command.end(), {"--block-size", "64KiB", "--log", "trace", "--log-file", log.string()});
        ConsoleProcess transfer(Command(command));
        PauseEarly(transfer);
        EndSessions(kAnn);
        transfer.Resume();
        EXPECT_EQ(transfer.Finish(), 0) << transfer.Output() << transfer.Errors();
        const std::string text = ReadFile(log);
        int logins = 0;
        for (std::size_t at = 0; (at = text.find("CFileStorage::UserLogin(", at)) != std::string::npos; ++at)
        {
            ++logins;
        }
        return logins;
    }
};

/// The services in this process, with a clock that stands still until the test moves it.
class DepotInTime : public Depot
{
protected:
    void SetUp() override
    {
        services::Application::Options options;
        options.dataFolder = folder.Path() / "data";
        options.http.isQuiet = true;
        options.clock = [this] { return now.load(); };
        application.emplace(options);
        application->GetAccounts().Ensure(kAnn.name, kAnn.password);
        application->Start();
        port = application->Port();
    }

    std::atomic<std::int64_t> now{1'795'210'281};
    std::optional<services::Application> application;
};

constexpr int kWeekInMinutes = 7 * 24 * 60;

} // namespace

TEST_F(Depot, FileComesBackUnchanged)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, 9 * kMebibyte + 321})
    {
        const std::string content = Pattern(size, size + 1);
        const Json::Value put = Put(Write("large.bin", content), {"--block-size", "1MiB"});
        EXPECT_EQ(put["name"].asString(), "large.bin");
        EXPECT_EQ(put["size"].asUInt64(), size);
        EXPECT_EQ(put["resumed_from"].asUInt64(), 0U);
        EXPECT_TRUE(put["verified"].asBool());
        EXPECT_EQ(Get(put["key"].asString(), {"--block-size", "2MiB"}), content);
        const Json::Value info = Done({"info", put["key"].asString()});
        EXPECT_EQ(info["name"].asString(), "large.bin");
        EXPECT_EQ(info["size"].asUInt64(), size);
        EXPECT_EQ(info["md5"], put["md5"]);
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "large.bin.quorvex-resume"));
}

TEST_F(Depot, ListingTellsEveryFile)
{
    EXPECT_EQ(Shown({"ls"}), "the depot is empty\n");
    const Json::Value put = Put(Write("one.bin", Pattern(5000)));
    const Json::Value files = Files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0]["key"], put["key"]);
    EXPECT_EQ(files[0]["name"].asString(), "one.bin");
    EXPECT_EQ(files[0]["size"].asUInt(), 5000U);
    EXPECT_EQ(files[0]["md5"], put["md5"]);
    EXPECT_TRUE(files[0]["finished"].asBool());
    EXPECT_EQ(files[0]["created"].asString().size(), 19U);
    EXPECT_TRUE(Files(kBob).empty());
    const std::string shown = Shown({"ls"});
    EXPECT_EQ(shown.rfind("KEY ", 0), 0U) << shown;
    EXPECT_NE(shown.find("complete  one.bin\n"), std::string::npos) << shown;
}

TEST_F(Depot, SpaceIsTakenAndGivenBack)
{
    const Json::Value before = Done({"info"});
    EXPECT_EQ(before["used"].asUInt64(), 0U);
    EXPECT_EQ(before["free"], before["total"]);
    const std::string key = PutContent("file.bin", Pattern(50000));
    const Json::Value full = Done({"info"});
    EXPECT_EQ(full["used"].asUInt64(), 50000U);
    EXPECT_EQ(full["free"].asUInt64(), full["total"].asUInt64() - 50000U);
    Done({"rm", key});
    EXPECT_EQ(UsedSpace(), 0U);
    EXPECT_EQ(Refused({"rm", key}), 404);
    EXPECT_EQ(Refused({"renew", key}), 404);
    EXPECT_EQ(Refused({"get", key}), -112);
    EXPECT_EQ(Refused({"info", key}), -112);
}

TEST_F(Depot, OtherAccountsReadAFileByItsOwnersUid)
{
    const std::string content = Pattern(70000);
    const std::string key = PutContent("file.bin", content);
    EXPECT_EQ(Refused({"info", key}, kBob), -112);
    EXPECT_EQ(Done({"info", key, "--uid", UidOf(kAnn)}, kBob)["size"].asUInt64(), content.size());
    EXPECT_EQ(Get(key, {"--uid", UidOf(kAnn)}, kBob), content);
    EXPECT_EQ(Refused({"rm", key}, kBob), 404);
    EXPECT_EQ(Refused({"renew", key}, kBob), 404);
}

TEST_F(Depot, NamesAreWhatTheOemCodePageMakesOfThem)
{
    const std::string accented = "gr\xC3\xB6\xC3\x9F"
                                 "e.bin";
    EXPECT_EQ(Put(Write(accented, "text"))["name"].asString(), accented);
    EXPECT_EQ(Files()[0]["name"].asString(), accented);

    const std::string emoji = "\xF0\x9F\x98\x80.bin";
    const ConsoleRun put = Run({"put", Write(emoji, "smile")});
    EXPECT_EQ(put.exitStatus, 0) << put.errors;
    EXPECT_EQ(put.Json()["name"].asString(), "??.bin");
    EXPECT_NE(put.errors.find("on the server the file is named ??.bin"), std::string::npos) << put.errors;
    const std::filesystem::path out = MakeFolder("out");
    Done({"get", put.Json()["key"].asString(), "--out", out.string()});
    EXPECT_EQ(ReadFile(out / "__.bin"), "smile");
}

TEST_F(Depot, KilledUploadGoesOnWhereItWas)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string path = Write("large.bin", content);
    const std::vector<std::string> options = {"put", path, "--block-size", "256KiB"};
    {
        ConsoleProcess upload(Command(options));
        PauseEarly(upload);
        upload.Kill();
    }
    const Json::Value files = Files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_FALSE(files[0]["finished"].asBool());
    EXPECT_EQ(Refused({"info", files[0]["key"].asString()}), -112);

    const Json::Value rest = Done(options);
    EXPECT_EQ(rest["key"], files[0]["key"]);
    EXPECT_GE(rest["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_LT(rest["resumed_from"].asUInt64(), content.size());
    EXPECT_TRUE(rest["verified"].asBool());
    EXPECT_EQ(Get(rest["key"].asString()), content);
}

TEST_F(Depot, BlocksConfirmedBeforeTheServerDiedAreKept)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string path = Write("large.bin", content);
    const std::vector<std::string> options = {"put", path, "--block-size", "256KiB"};
    {
        ConsoleProcess upload(Command(options));
        PauseEarly(upload);
        services->End(SIGKILL);
        upload.Resume();
        EXPECT_EQ(upload.Finish(), 1) << upload.Output();
    }
    StartServices(port);
    const Json::Value rest = Done(options);
    EXPECT_GE(rest["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_EQ(Get(rest["key"].asString()), content);
}

TEST_F(Depot, UploadThatTheServerGaveUpBeginsAnew)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::vector<std::string> options = {"put", Write("large.bin", content), "--block-size", "256KiB"};
    {
        ConsoleProcess upload(Command(options));
        PauseEarly(upload);
        upload.Kill();
    }
    Done({"rm", Files()[0]["key"].asString()});
    const Json::Value put = Done(options);
    EXPECT_EQ(put["resumed_from"].asUInt64(), 0U);
    EXPECT_EQ(Get(put["key"].asString()), content);
}

TEST_F(Depot, KilledDownloadGoesOnWhereItWas)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string key = PutContent("large.bin", content);
    const std::filesystem::path out = folder.Path() / "fetched.bin";
    const std::vector<std::string> options = {"get", key, "--out", out.string(), "--block-size", "256KiB"};
    {
        ConsoleProcess download(Command(options));
        PauseEarly(download);
        download.Kill();
    }
    EXPECT_FALSE(std::filesystem::exists(out));
    const Json::Value rest = Done(options);
    EXPECT_GE(rest["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_LT(rest["resumed_from"].asUInt64(), content.size());
    EXPECT_TRUE(rest["verified"].asBool());
    EXPECT_EQ(ReadFile(out), content);
}

TEST_F(Depot, PartOfAnotherFileIsFetchedAnew)
{
    const std::string content = Pattern(2 * kMebibyte);
    const std::string key = PutContent("large.bin", content);
    Write("fetched.quorvex-part", Pattern(kMebibyte, 7));
    EXPECT_EQ(Get(key), content);
}

TEST_F(Depot, SessionThatEndsDuringAnUploadIsOpenedAnew)
{
    const std::string content = Pattern(32 * kMebibyte);
    EXPECT_EQ(LoginsOf({"put", Write("large.bin", content)}), 2);
    ASSERT_EQ(Files().size(), 1U);
    EXPECT_EQ(Get(Files()[0]["key"].asString()), content);
}

TEST_F(Depot, SessionThatEndsDuringADownloadIsOpenedAnew)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string key = PutContent("large.bin", content);
    const std::filesystem::path out = folder.Path() / "fetched.bin";
    EXPECT_EQ(LoginsOf({"get", key, "--out", out.string()}), 2);
    EXPECT_EQ(ReadFile(out), content);
}

TEST_F(Depot, LoginThatIsRefusedMeanwhileEndsTheUpload)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::vector<std::string> options = {"put", Write("large.bin", content), "--block-size", "64KiB"};
    {
        ConsoleProcess upload(Command(options));
        PauseEarly(upload);
        Json::Value body;
        body["account"] = kAnn.name;
        body["password"] = "changed";
        Admin("users", body);
        EndSessions(kAnn);
        upload.Resume();
        EXPECT_EQ(upload.Finish(), 1);
        EXPECT_NE(upload.Output().find("\"code\":401"), std::string::npos) << upload.Output();
    }
    const Json::Value rest = Done(options, {"ann", "changed"});
    EXPECT_GE(rest["resumed_from"].asUInt64(), content.size() / 10);
}

TEST_F(Depot, ExpiredFileIsGone)
{
    const std::string key = PutContent("brief.bin", Pattern(30000));
    const std::string other = PutContent("lasting.bin", "text");
    Json::Value body;
    body["fkey"] = key;
    Admin("depot/expire", body);
    EXPECT_EQ(Refused({"get", key}), -112);
    EXPECT_EQ(Refused({"renew", key}), 404);
    ASSERT_EQ(Files().size(), 1U);
    EXPECT_EQ(Files()[0]["key"].asString(), other);
    EXPECT_EQ(UsedSpace(), 4U);
}

TEST_F(DepotInTime, RenewedFileIsKeptForTheWholeTime)
{
    const std::string renewed = PutContent("renewed.bin", Pattern(1000));
    PutContent("brief.bin", "text");
    EXPECT_EQ(Files()[0]["minutes_left"].asInt(), kWeekInMinutes);
    now += 6 * 86400;
    EXPECT_EQ(Files()[0]["minutes_left"].asInt(), kWeekInMinutes / 7);
    Done({"renew", renewed});
    now += 86400;
    const Json::Value files = Files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0]["key"].asString(), renewed);
    EXPECT_EQ(files[0]["minutes_left"].asInt(), kWeekInMinutes * 6 / 7);
    now += 6 * 86400;
    EXPECT_TRUE(Files().empty());
}

} // namespace quorvex::e2e
