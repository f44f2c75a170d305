#include "DiskFixture.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quorvex::e2e
{

namespace
{

constexpr int kInterrupted = 130;

class Interruption : public DiskFixture
{
protected:
    /// Presses Ctrl+C in the middle of a transfer, whose blocks are small.
    ConsoleRun InterruptedRun(const std::vector<std::string>& command) const
    {
        ConsoleProcess process(Command(command));
        EXPECT_TRUE(process.WaitForError("\n")) << process.Errors();
        process.Interrupt();
        const int exitStatus = process.Finish();
        return {exitStatus, process.Output(), process.Errors()};
    }

    const std::string content = Pattern(16 * kMebibyte);
};

/// Takes connections, as the system does for it, and answers none.
class SilentServer
{
public:
    SilentServer() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_EQ(::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), length), 0);
        EXPECT_EQ(::listen(m_socket, 1), 0);
        EXPECT_EQ(::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length), 0);
        m_port = ntohs(address.sin_port);
    }

    ~SilentServer() { ::close(m_socket); }

    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    std::string Url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/object"; }

private:
    int m_socket;
    int m_port = 0;
};

} // namespace

TEST_F(Interruption, OfAnUploadLeavesWhatTheSameCommandGoesOnWith)
{
    const std::vector<std::string> command = {"put", Write("large.bin", content), "--block-size", "128KiB"};
    const ConsoleRun interrupted = InterruptedRun(command);
    EXPECT_EQ(interrupted.exitStatus, kInterrupted) << interrupted.output << interrupted.errors;
    EXPECT_NE(interrupted.Json()["message"].asString().find("the same command goes on from there"), std::string::npos)
        << interrupted.output;
    EXPECT_TRUE(interrupted.Json()["code"].isNull());

    const Json::Value rest = Done(command);
    EXPECT_GE(rest["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_EQ(Get(rest["key"].asString()), content);
}

TEST_F(Interruption, OfADownloadLeavesWhatTheSameCommandGoesOnWith)
{
    const std::string key = PutContent("large.bin", content);
    const std::filesystem::path out = folder.Path() / "out.bin";
    const std::vector<std::string> command = {"get", key, "--out", out.string(), "--block-size", "128KiB"};
    EXPECT_EQ(InterruptedRun(command).exitStatus, kInterrupted);
    EXPECT_FALSE(std::filesystem::exists(out));

    EXPECT_GE(Done(command)["resumed_from"].asUInt64(), content.size() / 10);
    EXPECT_EQ(ReadFile(out), content);
}

TEST_F(Interruption, OfSeveralUploadsTellsWhichAreDone)
{
    const ConsoleRun run = InterruptedRun({"put", Write("small.txt", "small"), Write("large.bin", content),
                                           Write("never.txt", "never"), "--block-size", "128KiB"});
    EXPECT_EQ(run.exitStatus, kInterrupted);
    const Json::Value files = run.Json()["files"];
    ASSERT_EQ(files.size(), 3U) << run.output;
    EXPECT_TRUE(files[0]["ok"].asBool());
    EXPECT_FALSE(files[1]["ok"].asBool());
    EXPECT_FALSE(files[2]["ok"].asBool());
}

TEST(InterruptionOfARequest, EndsTheProgramAtOnce)
{
    const SilentServer server;
    ConsoleProcess process(
        {"netdisk", "quota", "--server", server.Url(), "--session", "s", "--log", "trace", "--json"});
    ASSERT_TRUE(process.WaitForError("CNetDisk::UserLogin")) << process.Errors();
    process.Interrupt();
    const int exitStatus = process.Finish();
    EXPECT_EQ(exitStatus, kInterrupted);
    const ConsoleRun run{exitStatus, process.Output(), {}};
    EXPECT_EQ(run.Json()["message"].asString(), "interrupted: netdisk quota");
}

} // namespace quorvex::e2e
