#include "StorageFixture.h"

#include <csignal>

namespace quorvex::e2e
{

namespace
{

constexpr int kGenerations[] = {1, 2, 3};

std::vector<std::string> In(int generation, std::vector<std::string> command)
{
    command.insert(command.end(), {"--generation", std::to_string(generation)});
    return command;
}

std::size_t CountOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at)
    {
        ++count;
    }
    return count;
}

class PictureGenerations : public StorageFixture
{
protected:
    PictureGenerations() : StorageFixture("storage") {}

    std::string Fetched(int generation, const std::string& name, const Account& account = kAnn) const
    {
        const std::filesystem::path out = folder.Path() / "fetched";
        std::filesystem::remove(out);
        const Json::Value get = Done(In(generation, {"get-picture", name, "--out", out.string()}), account);
        EXPECT_EQ(get["name"].asString(), name);
        std::string content = ReadFile(out);
        EXPECT_EQ(get["size"].asUInt64(), content.size());
        return content;
    }
};

class SecondDepot : public StorageFixture
{
protected:
    SecondDepot() : StorageFixture("depot") {}
};

/// The depot's later generations.
class DepotGenerations : public StorageFixture, public ::testing::WithParamInterface<int>
{
protected:
    DepotGenerations() : StorageFixture("depot") {}

    std::vector<std::string> Options(const char* blockSize) const
    {
        return {"--generation", std::to_string(GetParam()), "--block-size", blockSize};
    }

    /// The command of this generation, in small blocks.
    std::vector<std::string> InBlocks(std::vector<std::string> command, const char* blockSize = "256KiB") const
    {
        const std::vector<std::string> options = Options(blockSize);
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    /// Fetches with a generation that may not tell whether what has come is verified.
    std::string Fetched(int generation, const std::string& key, const Account& account = kAnn,
                        const std::vector<std::string>& options = {}) const
    {
        const std::filesystem::path out = folder.Path() / "fetched";
        std::vector<std::string> command = In(generation, {"get", key, "--out", out.string()});
        command.insert(command.end(), options.begin(), options.end());
        const Json::Value get = Done(command, account);
        EXPECT_EQ(get["verified"].asBool(), generation == 1);
        return ReadFile(out);
    }

    /// Starts a transfer that takes a while, and has it stand still when something has been confirmed.
    void PauseEarly(ConsoleProcess& transfer) const
    {
        ASSERT_TRUE(transfer.WaitForError("\n")) << transfer.Errors();
        transfer.Pause();
    }

    /// Runs a transfer whose session ends on the way, and returns how often it has logged in.
    std::size_t LoginsOf(std::vector<std::string> command) const
    {
        const std::filesystem::path log = folder.Path() / "module.log";
        command.insert(command.end(), {"--log", "trace", "--log-file", log.string()});
        ConsoleProcess transfer(Command(command));
        PauseEarly(transfer);
        EndSessions(kAnn, GetParam() == 2 ? "service" : "centre");
        transfer.Resume();
        EXPECT_EQ(transfer.Finish(), 0) << transfer.Output() << transfer.Errors();
        const char* const login =
            GetParam() == 2 ? "CFileStorage2::UserLoginWithSession(lpszUapSession=" : "CFileStorage2::UserLogin(";
        return CountOf(ReadFile(log), login);
    }

    /// The account's only file, as the first generation lists it.
    Json::Value OnlyFile() const
    {
        const Json::Value files = Done({"ls"})["files"];
        EXPECT_EQ(files.size(), 1U);
        return files[0];
    }

    const std::string large = Pattern(32 * kMebibyte);
};

} // namespace

TEST_F(PictureGenerations, EachFetchesWhatEachHasSent)
{
    for (const int sender : kGenerations)
    {
        const std::string name = "sunset" + std::to_string(sender) + ".png";
        const std::string content = Pattern(3 * kMebibyte + 1, static_cast<std::uint64_t>(sender));
        const Json::Value put = Done(In(sender, {"put-picture", Write(name, content)}));
        EXPECT_EQ(put["name"].asString(), name);
        EXPECT_EQ(put["size"].asUInt64(), content.size());
        for (const int fetcher : kGenerations)
        {
            EXPECT_EQ(Fetched(fetcher, name, kBob), content) << sender << " to " << fetcher;
        }
    }
}

TEST_F(PictureGenerations, AnswersAreOfOneShape)
{
    const std::string path = Write("sunset.png", "bytes");
    const std::filesystem::path out = MakeFolder("out");
    const Json::Value put = Done({"put-picture", path});
    const Json::Value get = Done({"get-picture", "sunset.png", "--out", out.string()});
    for (const int generation : kGenerations)
    {
        EXPECT_EQ(Done(In(generation, {"put-picture", path})), put);
        EXPECT_EQ(Done(In(generation, {"get-picture", "sunset.png", "--out", out.string()})), get);
    }
}

TEST_F(PictureGenerations, NamesMayHaveSignsOfAddresses)
{
    const std::string name = "a%41 b#c&d+e.png";
    for (const int generation : {2, 3})
    {
        const std::string content = Pattern(2000, static_cast<std::uint64_t>(generation));
        Done(In(generation, {"put-picture", Write(name, content)}));
        for (const int fetcher : kGenerations)
        {
            EXPECT_EQ(Fetched(fetcher, name), content) << fetcher;
        }
    }
}

TEST_F(PictureGenerations, NameOfAnotherAccountsPictureIsRefused)
{
    Done({"put-picture", Write("sunset.png", "bytes")});
    for (const int generation : kGenerations)
    {
        EXPECT_EQ(Refused(In(generation, {"put-picture", Write("sunset.png", "other bytes")}), kBob), 423);
        EXPECT_EQ(Fetched(generation, "sunset.png"), "bytes");
    }
}

TEST_F(PictureGenerations, FailedDownloadLeavesWhatWasThere)
{
    const std::string out = Write("kept.png", "kept");
    EXPECT_EQ(Refused(In(2, {"get-picture", "none.png", "--out", out})), 404);
    const ConsoleRun run = Run(In(3, {"get-picture", "none.png", "--out", out}));
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_TRUE(run.Json()["code"].isNull()) << run.output;
    EXPECT_NE(run.Json()["message"].asString().find("there is no such picture"), std::string::npos) << run.output;
    EXPECT_EQ(ReadFile(out), "kept");
    EXPECT_FALSE(std::filesystem::exists(out + ".quorvex-part"));
}

TEST_F(PictureGenerations, NameThatCannotBeSentIsNotSilentlyAnother)
{
    const std::string path = Write("\xE4\xB8\xAD\xE6\x96\x87.png", "text");
    EXPECT_EQ(Refused(In(2, {"put-picture", path})), -103);
    const ConsoleRun run = Run(In(3, {"put-picture", path}));
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.Json()["message"].asString().find("would make ??.png of it"), std::string::npos) << run.output;
}

TEST_F(PictureGenerations, LoginIsTriedForReal)
{
    EXPECT_EQ(Done(In(2, {"login"}))["login"].asString(), "password");
    EXPECT_EQ(Refused(In(2, {"login"}), {"ann", "wrong"}), 401);
    EXPECT_EQ(Refused(In(3, {"put-picture", Write("a.png", "a")}), {"ann", "wrong"}), 401);
}

TEST_F(PictureGenerations, SessionMayBeGiven)
{
    const std::string session =
        RunConsole({"search", "login", "--server", "http://127.0.0.1:" + std::to_string(port) + "/search", "--user",
                    kAnn.name, "--password", kAnn.password, "--json"})
            .Json()["session"]
            .asString();
    const auto put = [&](int generation, const std::string& text) {
        return RunConsole(In(generation, {"storage", "put-picture", Write("a.png", "a"), "--server", StorageServer(),
                                          "--session", text, "--json"}));
    };
    for (const int generation : {2, 3})
    {
        EXPECT_EQ(put(generation, session).exitStatus, 0) << generation;
    }
    EXPECT_EQ(put(2, "nosuchsession").Json()["code"].asInt(), 401);
    EXPECT_EQ(put(3, "nosuchsession").Json()["code"].asInt(), 403);
}

TEST_F(PictureGenerations, ServerOutOfReachIsAPlainFailure)
{
    services.reset();
    for (const int generation : {2, 3})
    {
        const ConsoleRun run = RunConsole(In(generation, {"storage", "get-picture", "sunset.png", "--server",
                                                          StorageServer(), "--session", "any", "--json"}));
        EXPECT_EQ(run.exitStatus, 1);
        EXPECT_EQ(run.Json()["code"].asInt(), -1) << run.output;
        EXPECT_NE(run.Json()["meaning"].asString().find("cannot be reached"), std::string::npos) << run.output;
    }
}

TEST_F(PictureGenerations, OperationThatAGenerationLacksIsAWrongCommandLine)
{
    for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
             {"get-photo", "n"}, {"emoticons", "ls"}, {"put-photo", Write("a.png", "a")}})
    {
        const ConsoleRun run = Run(In(2, command));
        EXPECT_EQ(run.exitStatus, 2);
        EXPECT_NE(run.Json()["message"].asString().find("has no such operation"), std::string::npos) << run.output;
    }
}

TEST_P(DepotGenerations, FileComesBackUnchangedInEachGeneration)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, 2 * kMebibyte, 2 * kMebibyte + 321})
    {
        const std::string content = Pattern(size, size + 1);
        const ConsoleRun run = Run(InBlocks({"put", Write("large.bin", content)}, "1MiB"));
        ASSERT_EQ(run.exitStatus, 0) << run.output << run.errors;
        const Json::Value put = run.Json();
        EXPECT_EQ(put["name"].asString(), "large.bin");
        EXPECT_EQ(put["size"].asUInt64(), size);
        EXPECT_EQ(put["resumed_from"].asUInt64(), 0U);
        EXPECT_FALSE(put["verified"].asBool());
        EXPECT_NE(run.errors.find("note: this generation tells nothing of a stored file"), std::string::npos);

        const std::string key = put["key"].asString();
        EXPECT_EQ(Done({"info", key})["md5"], put["md5"]);
        EXPECT_EQ(Fetched(1, key), content);
        for (const int generation : {2, 3})
        {
            EXPECT_EQ(Fetched(generation, key, kAnn, {"--block-size", "512KiB"}), content) << generation;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "large.bin.quorvex-resume"));
}

TEST_P(DepotGenerations, FetchesWhatTheFirstHasSent)
{
    const std::string content = Pattern(3 * kMebibyte);
    const std::string key = PutContent("large.bin", content);
    EXPECT_EQ(Fetched(GetParam(), key), content);
    EXPECT_EQ(Fetched(GetParam(), key, kBob, {"--uid", UidOf(kAnn)}), content);
}

TEST_P(DepotGenerations, AnswersAreOfOneShape)
{
    const Json::Value put = Put(Write("one.bin", "text"));
    const Json::Value later = Done(In(GetParam(), {"put", Write("two.bin", "text")}));
    EXPECT_EQ(put.getMemberNames(), later.getMemberNames());
    const std::filesystem::path out = MakeFolder("out");
    const std::string key = put["key"].asString();
    const Json::Value get = Done({"get", key, "--out", out.string()});
    const Json::Value laterGet = Done(In(GetParam(), {"get", key, "--out", out.string()}));
    EXPECT_EQ(get.getMemberNames(), laterGet.getMemberNames());
    // It is told no name, and takes the key for one.
    EXPECT_EQ(laterGet["name"].asString(), key);
    EXPECT_EQ(ReadFile(out / key), "text");
}

TEST_P(DepotGenerations, MissingFileIsRefused)
{
    const std::filesystem::path out = MakeFolder("out");
    EXPECT_EQ(Refused(In(GetParam(), {"get", "0123456789abcdef0123456789abcdef", "--out", out.string()})), 404);
    EXPECT_TRUE(std::filesystem::is_empty(out));
}

TEST_P(DepotGenerations, KilledUploadGoesOnWhereItWas)
{
    const std::vector<std::string> command = InBlocks({"put", Write("large.bin", large)});
    {
        ConsoleProcess upload(Command(command));
        PauseEarly(upload);
        upload.Kill();
    }
    const std::string key = OnlyFile()["key"].asString();
    const Json::Value rest = Done(command);
    EXPECT_EQ(rest["key"].asString(), key);
    EXPECT_GE(rest["resumed_from"].asUInt64(), large.size() / 10);
    EXPECT_LT(rest["resumed_from"].asUInt64(), large.size());
    EXPECT_EQ(OnlyFile()["md5"], rest["md5"]);
    EXPECT_EQ(Fetched(1, key), large);
}

TEST_P(DepotGenerations, BlocksConfirmedBeforeTheServerDiedAreKept)
{
    const std::vector<std::string> command = InBlocks({"put", Write("large.bin", large)});
    {
        ConsoleProcess upload(Command(command));
        PauseEarly(upload);
        services->End(SIGKILL);
        upload.Resume();
        EXPECT_EQ(upload.Finish(), 1) << upload.Output();
        EXPECT_NE(upload.Output().find("the same command goes on from there"), std::string::npos) << upload.Output();
    }
    StartServices(port);
    const Json::Value rest = Done(command);
    EXPECT_GE(rest["resumed_from"].asUInt64(), large.size() / 10);
    EXPECT_EQ(Fetched(1, rest["key"].asString()), large);
}

TEST_P(DepotGenerations, UploadThatTheServerGaveUpBeginsAnew)
{
    const std::vector<std::string> command = InBlocks({"put", Write("large.bin", large)});
    {
        ConsoleProcess upload(Command(command));
        PauseEarly(upload);
        upload.Kill();
    }
    Done({"rm", OnlyFile()["key"].asString()});
    const Json::Value put = Done(command);
    EXPECT_EQ(put["resumed_from"].asUInt64(), 0U);
    EXPECT_EQ(Fetched(1, put["key"].asString()), large);
}

TEST_P(DepotGenerations, KilledDownloadGoesOnWhereItWas)
{
    const std::string key = PutContent("large.bin", large);
    const std::filesystem::path out = folder.Path() / "fetched.bin";
    const std::vector<std::string> command = InBlocks({"get", key, "--out", out.string()});
    {
        ConsoleProcess download(Command(command));
        PauseEarly(download);
        download.Kill();
    }
    EXPECT_FALSE(std::filesystem::exists(out));
    const ConsoleRun rest = Run(command);
    EXPECT_EQ(rest.exitStatus, 0) << rest.output << rest.errors;
    EXPECT_GE(rest.Json()["resumed_from"].asUInt64(), kMebibyte);
    EXPECT_LT(rest.Json()["resumed_from"].asUInt64(), large.size());
    EXPECT_EQ(rest.Json()["size"].asUInt64(), large.size());
    EXPECT_NE(rest.errors.find("is not verified"), std::string::npos) << rest.errors;
    EXPECT_EQ(ReadFile(out), large);
}

TEST_P(DepotGenerations, PartOfAnotherFileIsNotTakenForItsOwn)
{
    const std::filesystem::path out = folder.Path() / "fetched";
    const std::string other = PutContent("other.bin", large);
    {
        ConsoleProcess download(Command(InBlocks({"get", other, "--out", out.string()})));
        PauseEarly(download);
        download.Kill();
    }
    const std::string content = Pattern(3 * kMebibyte, 7);
    EXPECT_EQ(Fetched(GetParam(), PutContent("one.bin", content)), content);
}

TEST_P(DepotGenerations, SessionThatEndsDuringAnUploadIsOpenedAnew)
{
    EXPECT_EQ(LoginsOf(InBlocks({"put", Write("large.bin", large)}, "64KiB")), 2U);
    EXPECT_EQ(Fetched(1, OnlyFile()["key"].asString()), large);
}

TEST_P(DepotGenerations, SessionThatEndsDuringADownloadIsOpenedAnew)
{
    const std::string key = PutContent("large.bin", large);
    const std::filesystem::path out = folder.Path() / "fetched.bin";
    EXPECT_EQ(LoginsOf(InBlocks({"get", key, "--out", out.string()}, "64KiB")), 2U);
    EXPECT_EQ(ReadFile(out), large);
}

INSTANTIATE_TEST_SUITE_P(Later, DepotGenerations, ::testing::Values(2, 3));

TEST_F(SecondDepot, RemovesFiles)
{
    const std::string key = PutContent("file.bin", "text");
    EXPECT_EQ(Done(In(2, {"rm", key}))["removed"].asString(), key);
    EXPECT_EQ(Refused(In(2, {"rm", key})), 404);
    EXPECT_TRUE(Done({"ls"})["files"].empty());
}

} // namespace quorvex::e2e
