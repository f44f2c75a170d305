#include "DiskFixture.h"

#include <csignal>

namespace quorvex::e2e
{

namespace
{

class NetDisk : public DiskFixture
{
};

} // namespace

TEST_F(NetDisk, SmallFileComesBackUnchanged)
{
    const std::string content = Pattern(12345);
    const Json::Value put = Put(Write("small.bin", content));
    EXPECT_EQ(put["name"].asString(), "small.bin");
    EXPECT_EQ(put["size"].asUInt(), content.size());
    EXPECT_TRUE(put["verified"].asBool());
    EXPECT_EQ(Get(put["key"].asString()), content);
}

TEST_F(NetDisk, EmptyFileComesBackEmpty)
{
    const Json::Value put = Put(Write("empty", ""));
    EXPECT_EQ(put["size"].asUInt(), 0U);
    EXPECT_EQ(Get(put["key"].asString()), "");
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "fetched"));
}

TEST_F(NetDisk, LargeFileGoesInBlocksAndComesBackUnchanged)
{
    const std::string content = Pattern(9 * kMebibyte + 321);
    const Json::Value put = Put(Write("large.bin", content), {"--large-from", "1MiB", "--block-size", "1MiB"});
    EXPECT_FALSE(put["instant"].asBool());
    EXPECT_TRUE(put["verified"].asBool());
    EXPECT_EQ(Get(put["key"].asString(), {"--large-from", "1MiB", "--block-size", "2MiB"}), content);
    EXPECT_EQ(Get(put["key"].asString(), {"--large-from", "1GiB"}), content);
}

TEST_F(NetDisk, ShorterFileReplacesALongerOne)
{
    const std::string content = Pattern(1000);
    const Json::Value put = Put(Write("short.bin", content));
    Write("fetched", Pattern(5000));
    EXPECT_EQ(Get(put["key"].asString()), content);
}

TEST_F(NetDisk, ContentThatTheServerHoldsIsNotSentAgain)
{
    const std::string path = Write("large.bin", Pattern(3 * kMebibyte));
    const std::string again = Write("copy.bin", Pattern(3 * kMebibyte));
    EXPECT_FALSE(Put(path, {"--large-from", "1MiB"})["instant"].asBool());
    const Json::Value put = Put(again, {"--large-from", "1MiB"});
    EXPECT_TRUE(put["instant"].asBool());
    EXPECT_EQ(Get(put["key"].asString()), ReadFile(again));
}

TEST_F(NetDisk, NamesOfEveryScriptSurvive)
{
    std::string veryLong;
    for (int i = 0; i < 80; ++i)
    {
        veryLong += "\xE6\x97\xA5";
    }
    veryLong += ".pdf";
    for (const std::string& name :
         std::vector<std::string>{"\xE4\xB8\xAD\xE6\x96\x87.txt", "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB.txt",
                                  "\xF0\x9F\x98\x80 smile.txt", "na\xC3\xAFve caf\xC3\xA9.txt",
                                  // With the ending that it has while it grows, it would be too long.
                                  veryLong})
    {
        const Json::Value put = Put(Write(name, name));
        EXPECT_EQ(put["name"].asString(), name);
        const ConsoleRun info = Run({"info", put["key"].asString()});
        EXPECT_EQ(info.Json()["name"].asString(), name) << info.output;

        const std::filesystem::path out = folder.Path() / "out";
        std::filesystem::create_directory(out);
        const ConsoleRun get = Run({"get", put["key"].asString(), "--out", out.string()});
        EXPECT_EQ(get.exitStatus, 0) << get.output << get.errors;
        EXPECT_EQ(ReadFile(out / name), name);
    }
}

TEST_F(NetDisk, RenamedFileHasItsNewName)
{
    const std::string key = Put(Write("old.txt", "text"))["key"].asString();
    EXPECT_EQ(Run({"mv", key, "--name", "new.txt"}).exitStatus, 0);
    EXPECT_EQ(Run({"info", key}).Json()["name"].asString(), "new.txt");
    // Names that no file can have here.
    for (const std::string name : {"what?.txt", "CON.txt", "a:b"})
    {
        Done({"mv", key, "--name", name});
        EXPECT_EQ(Run({"info", key}).Json()["name"].asString(), name);
    }
}

TEST_F(NetDisk, QuotaCountsWhatIsStoredAndGetsItBack)
{
    const std::uint64_t before = Used();
    const std::string key = Put(Write("file.bin", Pattern(50000)))["key"].asString();
    EXPECT_EQ(Used(), before + 50000);
    EXPECT_EQ(Run({"rm", key, "--forever"}).exitStatus, 0);
    EXPECT_EQ(Used(), before);
    const ConsoleRun info = Run({"info", key});
    EXPECT_EQ(info.exitStatus, 1);
    EXPECT_FALSE(info.Json()["ok"].asBool());
    EXPECT_EQ(info.Json()["code"].asInt(), 404);
}

TEST_F(NetDisk, ChecksumIsThatOfTheUploadedFile)
{
    const std::string path = Write("file.bin", Pattern(100000));
    const ConsoleRun checksum = RunConsole({"netdisk", "checksum", path, "--json"});
    EXPECT_EQ(checksum.exitStatus, 0);
    EXPECT_EQ(checksum.Json()["md5"], Put(path)["md5"]);
}

TEST_F(NetDisk, EachLoginIsTriedForReal)
{
    EXPECT_EQ(Run({"login"}).exitStatus, 0);

    const ConsoleRun wrong =
        RunConsole({"netdisk", "login", "--server", Server(), "--user", "ann", "--password", "wrong", "--json"});
    EXPECT_EQ(wrong.exitStatus, 1);
    EXPECT_EQ(wrong.Json()["code"].asInt(), 401);

    const ConsoleRun session =
        RunConsole({"netdisk", "login", "--server", Server(), "--session", "nosuchsession", "--json"});
    EXPECT_EQ(session.exitStatus, 1);
    const ConsoleRun ticket = RunConsole({"netdisk", "login", "--server", Server(), "--ticket", "00:00", "--json"});
    EXPECT_EQ(ticket.exitStatus, 1);
}

TEST_F(NetDisk, ServerOutOfReachIsAPlainFailure)
{
    services.reset();
    const ConsoleRun run =
        RunConsole({"netdisk", "quota", "--server", Server(), "--user", "ann", "--password", "secret"});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_NE(run.errors.find("(result -1"), std::string::npos) << run.errors;
}

TEST_F(NetDisk, WrongCommandLineHasAStatusOfItsOwn)
{
    EXPECT_EQ(RunConsole({"netdisk", "put"}).exitStatus, 2);
    EXPECT_EQ(RunConsole({"nonsense"}).exitStatus, 2);
    EXPECT_EQ(RunConsole({"--help"}).exitStatus, 0);
}

TEST_F(NetDisk, MissingLocalFileIsAPlainFailure)
{
    const ConsoleRun run = Run({"put", (folder.Path() / "none").string()});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_FALSE(run.Json()["ok"].asBool());
}

TEST_F(NetDisk, KilledUploadGoesOnWhereItWas)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string path = Write("large.bin", content);
    const std::vector<std::string> options = {"put", path, "--block-size", "256KiB"};
    {
        ConsoleProcess upload(Command(options));
        // A tenth has been confirmed when the first line of progress comes.
        ASSERT_TRUE(upload.WaitForError("\n")) << upload.Errors();
        upload.Kill();
    }
    const ConsoleRun rest = Run(options);
    EXPECT_EQ(rest.exitStatus, 0) << rest.output << rest.errors;
    EXPECT_GE(rest.Json()["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_TRUE(rest.Json()["verified"].asBool());
    EXPECT_EQ(Get(rest.Json()["key"].asString()), content);
}

TEST_F(NetDisk, BlocksConfirmedBeforeTheServerDiedAreKept)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string path = Write("large.bin", content);
    const std::vector<std::string> options = {"put", path, "--block-size", "256KiB"};
    {
        ConsoleProcess upload(Command(options));
        ASSERT_TRUE(upload.WaitForError("\n")) << upload.Errors();
        services->End(SIGKILL);
        EXPECT_EQ(upload.Finish(), 1) << upload.Output();
    }
    StartServices(port);
    const ConsoleRun rest = Run(options);
    EXPECT_EQ(rest.exitStatus, 0) << rest.output << rest.errors;
    EXPECT_GE(rest.Json()["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_EQ(Get(rest.Json()["key"].asString()), content);
}

TEST_F(NetDisk, KilledDownloadGoesOnWhereItWas)
{
    const std::string content = Pattern(32 * kMebibyte);
    const std::string key = Put(Write("large.bin", content))["key"].asString();
    const std::filesystem::path out = folder.Path() / "fetched.bin";
    const std::vector<std::string> options = {"get", key, "--out", out.string(), "--block-size", "256KiB"};
    {
        ConsoleProcess download(Command(options));
        ASSERT_TRUE(download.WaitForError("\n")) << download.Errors();
        download.Kill();
    }
    EXPECT_FALSE(std::filesystem::exists(out));
    const ConsoleRun rest = Run(options);
    EXPECT_EQ(rest.exitStatus, 0) << rest.output << rest.errors;
    EXPECT_GE(rest.Json()["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_EQ(ReadFile(out), content);
}

TEST_F(NetDisk, LogTellsEachStep)
{
    const std::filesystem::path log = folder.Path() / "module.log";
    ASSERT_EQ(Run({"quota", "--log", "trace", "--log-file", log.string()}).exitStatus, 0);
    const std::string text = ReadFile(log);
    for (const char* message :
         {"[TRACE] CHttpHelper::InitialConnection()\t[.\\src\\HttpHelper.cpp:", "[TRACE] CNetDisk::UserLogin(",
          "[DEBUG] json result: uap_uid=", "[TRACE] CNetDisk::CapacityInfo()",
          "[TRACE] CHttpHelper::CloseConnection()"})
    {
        EXPECT_NE(text.find(message), std::string::npos) << message;
    }
    EXPECT_EQ(text.find("secret"), std::string::npos);
}

} // namespace quorvex::e2e
