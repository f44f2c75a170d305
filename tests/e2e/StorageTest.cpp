#include "StorageFixture.h"

#include "support/ServiceFixture.h"

namespace quorvex::e2e
{

namespace
{

constexpr const char* kChinese = "\xE4\xB8\xAD\xE6\x96\x87.png";
constexpr const char* kAccented = "na\xC3\xAFve.png";
constexpr const char* kAwkward = "a%41 b#c&d+e.png";

class Storage : public StorageFixture
{
protected:
    Storage() : StorageFixture("storage") {}

    /// Fetches into a file and returns its content.
    std::string Fetched(std::vector<std::string> arguments, const Account& account = kAnn) const
    {
        const std::filesystem::path out = folder.Path() / "fetched";
        std::filesystem::remove(out);
        arguments.insert(arguments.end(), {"--out", out.string()});
        const Json::Value get = Done(arguments, account);
        const std::string content = ReadFile(out);
        EXPECT_EQ(get["size"].asUInt64(), content.size());
        return content;
    }

    std::string Message(const std::vector<std::string>& arguments) const
    {
        return Run(arguments).Json()["message"].asString();
    }
};

} // namespace

TEST_F(Storage, PictureComesBackUnderItsName)
{
    const std::filesystem::path out = MakeFolder("out");
    for (const std::size_t size : {std::size_t{0}, std::size_t{12345}, 3 * kMebibyte + 1})
    {
        const std::string content = Pattern(size, size + 1);
        const Json::Value put = Done({"put-picture", Write("sunset.png", content)});
        EXPECT_EQ(put["name"].asString(), "sunset.png");
        EXPECT_EQ(put["size"].asUInt64(), size);
        const Json::Value get = Done({"get-picture", "sunset.png", "--out", out.string()}, kBob);
        EXPECT_EQ(get["md5"], put["md5"]);
        EXPECT_EQ(ReadFile(out / "sunset.png"), content);
    }
    EXPECT_FALSE(std::filesystem::exists(out / "sunset.png.quorvex-part"));
}

TEST_F(Storage, SamePictureCanBeSentAgainAndByAnybody)
{
    const std::string path = Write("sunset.png", "bytes");
    Done({"put-picture", path});
    Done({"put-picture", path});
    Done({"put-picture", path}, kBob);
    EXPECT_EQ(Refused({"put-picture", Write("sunset.png", "other bytes")}, kBob), 423);
    EXPECT_EQ(Fetched({"get-picture", "sunset.png"}), "bytes");
}

TEST_F(Storage, PictureNameThatCannotBeSentIsExplained)
{
    const std::string content = Pattern(2000);
    const std::string path = Write(kChinese, content);
    const ConsoleRun put = Run({"put-picture", path});
    EXPECT_EQ(put.exitStatus, 1);
    EXPECT_EQ(put.Json()["code"].asInt(), -103);
    const std::string message = put.Json()["message"].asString();
    EXPECT_NE(message.find("on the server as ??.png"), std::string::npos) << message;
    EXPECT_NE(message.find("OEM code page, 437"), std::string::npos) << message;
    EXPECT_EQ(Fetched({"get-picture", "??.png"}), content);
}

TEST_F(Storage, PictureNameThatComesBackOtherwiseIsExplained)
{
    const std::string content = Pattern(2000);
    const std::string path = Write(kAccented, content);
    EXPECT_EQ(Refused({"put-picture", path}), -103);
    const std::string message = Message({"put-picture", path});
    EXPECT_NE(message.find("ANSI code page, 1252"), std::string::npos) << message;
    const std::filesystem::path out = MakeFolder("out");
    Done({"get-picture", kAccented, "--out", out.string()});
    EXPECT_EQ(ReadFile(out / kAccented), content);
}

TEST_F(Storage, PhotoHasTheNameThatItIsGiven)
{
    const std::string content = Pattern(4000);
    const std::string path = Write(kChinese, content);
    EXPECT_EQ(Done({"put-photo", path, "--name", "ann.jpg"})["name"].asString(), "ann.jpg");
    EXPECT_EQ(Fetched({"get-photo", "ann.jpg"}, kBob), content);
    EXPECT_EQ(Done({"put-photo", Write("own.jpg", "own")})["name"].asString(), "own.jpg");
    EXPECT_EQ(Fetched({"get-photo", "own.jpg"}), "own");
}

TEST_F(Storage, NameThatWouldSilentlyBeAnotherIsNotSent)
{
    const std::string path = Write(kChinese, "text");
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"put-photo", path}, {"emoticons", "put", path}})
    {
        const std::string message = Message(command);
        EXPECT_NE(message.find("would make ??.png of it"), std::string::npos) << message;
    }
    EXPECT_EQ(Refused({"get-photo", "??.png"}), 404);
    EXPECT_EQ(Refused({"emoticons", "get", "??.png"}), 404);
}

TEST_F(Storage, NamesThatLookLikeAddressesAreNames)
{
    const std::string path = Write(kAwkward, "awkward");
    Done({"put-picture", path});
    EXPECT_EQ(Fetched({"get-picture", kAwkward}), "awkward");
    const std::filesystem::path out = MakeFolder("out");
    Done({"get-picture", kAwkward, "--out", out.string()});
    EXPECT_EQ(ReadFile(out / kAwkward), "awkward");
    Done({"put-photo", Write("photo", "photo"), "--name", kAwkward});
    EXPECT_EQ(Fetched({"get-photo", kAwkward}), "photo");
    for (const char* name : {kAwkward, kAccented})
    {
        Done({"emoticons", "put", path, "--name", name});
        EXPECT_EQ(Fetched({"emoticons", "get", name}), "awkward");
        Done({"emoticons", "rm", name});
        EXPECT_EQ(Refused({"emoticons", "get", name}), 404);
    }
}

TEST_F(Storage, EachAccountHasEmoticonsOfItsOwn)
{
    Done({"emoticons", "put", Write("smile.gif", "of ann")});
    Done({"emoticons", "put", Write("smile.gif", "of bob")}, kBob);
    EXPECT_EQ(Fetched({"emoticons", "get", "smile.gif"}), "of ann");
    EXPECT_EQ(Fetched({"emoticons", "get", "smile.gif"}, kBob), "of bob");
    EXPECT_EQ(Fetched({"emoticons", "get", "smile.gif", "--uid", UidOf(kBob)}), "of bob");
    EXPECT_EQ(Fetched({"emoticons", "get", "smile.gif", "--uid", UidOf(kAnn)}, kBob), "of ann");

    Done({"emoticons", "rm", "smile.gif"}, kBob);
    EXPECT_EQ(Refused({"emoticons", "get", "smile.gif", "--uid", UidOf(kBob)}), 404);
    EXPECT_EQ(Refused({"emoticons", "rm", "smile.gif"}, kBob), 404);
    EXPECT_EQ(Fetched({"emoticons", "get", "smile.gif"}), "of ann");
}

TEST_F(Storage, EmoticonsAreCountedInTheLogAlone)
{
    for (const char* name : {"one.gif", "two.gif"})
    {
        Done({"emoticons", "put", Write(name, name)});
    }
    const std::filesystem::path log = folder.Path() / "module.log";
    const Json::Value list = Done({"emoticons", "ls", "--log", "trace", "--log-file", log.string()});
    EXPECT_TRUE(list.isMember("emoticons"));
    EXPECT_TRUE(list["emoticons"].isNull());
    EXPECT_NE(ReadFile(log).find("vecEmoticonList.size()=2"), std::string::npos) << ReadFile(log);
    EXPECT_NE(Shown({"emoticons", "ls"}).find("--log trace"), std::string::npos);
}

TEST_F(Storage, FailedDownloadLeavesWhatWasThere)
{
    const std::string out = Write("kept.png", "kept");
    EXPECT_EQ(Refused({"get-picture", "none.png", "--out", out}), 404);
    EXPECT_EQ(Refused({"get-photo", "none.png", "--out", out}), 404);
    EXPECT_EQ(ReadFile(out), "kept");
    EXPECT_FALSE(std::filesystem::exists(out + ".quorvex-part"));
    Done({"put-photo", Write("new.png", "new")});
    Done({"get-photo", "new.png", "--out", out});
    EXPECT_EQ(ReadFile(out), "new");
}

TEST_F(Storage, EachLoginIsTriedForReal)
{
    EXPECT_EQ(Done({"login"})["login"].asString(), "password");
    EXPECT_EQ(Refused({"login"}, {"ann", "wrong"}), 401);

    services::test::ServiceClient client(port);
    const std::string session = client.Login(kAnn.name, kAnn.password).Text("uap_sid");
    const auto logIn = [this](const std::string& text) {
        return RunConsole({"storage", "login", "--server", StorageServer(), "--session", text, "--json"});
    };
    const ConsoleRun good = logIn(session);
    EXPECT_EQ(good.exitStatus, 0) << good.output;
    EXPECT_EQ(good.Json()["login"].asString(), "session");
    EXPECT_EQ(logIn("nosuchsession").Json()["code"].asInt(), 401);
}

TEST_F(Storage, PasswordMayHaveAnySigns)
{
    Json::Value body;
    body["account"] = "d&e=f";
    body["password"] = "a b%41+#&\xC3\xA9/?\\\"";
    Admin("users", body);
    const Account account{"d&e=f", "a b%41+#&\xC3\xA9/?\\\""};
    Done({"login"}, account);
}

TEST_F(Storage, CredentialsThatARequestDoesNotHoldAreRefused)
{
    const std::string longPassword(240, 'p');
    const ConsoleRun run = Run({"login"}, {"ann", longPassword.c_str()});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.Json()["message"].asString().find("a request holds at most 255"), std::string::npos) << run.output;
}

TEST_F(Storage, ServerOutOfReachIsAPlainFailure)
{
    services.reset();
    const ConsoleRun run = Run({"get-picture", "sunset.png"});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_LE(run.Json()["code"].asInt(), -100);
}

TEST_F(Storage, MissingLocalFileIsAPlainFailure)
{
    const std::string none = (folder.Path() / "none").string();
    EXPECT_EQ(Refused({"put-picture", none}), -120);
    EXPECT_EQ(Refused({"put-photo", none}), -120);
    EXPECT_EQ(Refused({"emoticons", "put", none}), -120);
}

} // namespace quorvex::e2e
