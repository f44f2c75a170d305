#include "DiskFixture.h"

#include <fstream>
#include <iterator>

namespace quorvex::e2e
{

std::string Pattern(std::size_t size, std::uint64_t seed)
{
    std::string text(size, '\0');
    std::uint64_t state = seed;
    for (char& character : text)
    {
        state ^= state << 13U;
        state ^= state >> 7U;
        state ^= state << 17U;
        character = static_cast<char>(state);
    }
    return text;
}

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void DiskFixture::StartServices(int wantedPort)
{
    std::vector<std::string> arguments;
    for (const Account& account : {kAnn, kBob})
    {
        arguments.insert(arguments.end(), {"--user", std::string(account.name) + ':' + account.password});
    }
    services.emplace(folder.Path() / "data", arguments, wantedPort);
    port = services->Port();
}

std::string DiskFixture::Server() const
{
    return "http://127.0.0.1:" + std::to_string(port) + "/object";
}

std::vector<std::string> DiskFixture::Command(std::vector<std::string> arguments, const Account& account) const
{
    arguments.insert(arguments.begin(), "netdisk");
    arguments.insert(arguments.end(),
                     {"--server", Server(), "--user", account.name, "--password", account.password, "--json"});
    return arguments;
}

ConsoleRun DiskFixture::Run(const std::vector<std::string>& arguments, const Account& account) const
{
    return RunConsole(Command(arguments, account));
}

Json::Value DiskFixture::Done(const std::vector<std::string>& arguments, const Account& account) const
{
    const ConsoleRun run = Run(arguments, account);
    EXPECT_EQ(run.exitStatus, 0) << arguments.front() << ": " << run.output << run.errors;
    return run.Json();
}

int DiskFixture::Refused(const std::vector<std::string>& arguments, const Account& account) const
{
    const ConsoleRun run = Run(arguments, account);
    EXPECT_EQ(run.exitStatus, 1) << arguments.front() << ": " << run.output << run.errors;
    return run.Json()["code"].asInt();
}

std::string DiskFixture::Shown(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> command = Command(arguments);
    command.pop_back();
    const ConsoleRun run = RunConsole(command);
    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    return run.output;
}

std::string DiskFixture::Write(const std::string& name, const std::string& content) const
{
    const std::filesystem::path path = folder.Path() / name;
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
}

std::filesystem::path DiskFixture::MakeFolder(const std::string& name) const
{
    std::filesystem::path path = folder.Path() / name;
    std::filesystem::create_directory(path);
    return path;
}

Json::Value DiskFixture::Put(const std::string& path, const std::vector<std::string>& options) const
{
    std::vector<std::string> arguments = {"put", path};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Done(arguments);
}

std::string DiskFixture::PutContent(const std::string& name, const std::string& content,
                                    const std::vector<std::string>& options) const
{
    return Put(Write(name, content), options)["key"].asString();
}

std::string DiskFixture::Get(const std::string& key, const std::vector<std::string>& options,
                             const Account& account) const
{
    const std::filesystem::path out = folder.Path() / "fetched";
    std::vector<std::string> arguments = {"get", key, "--out", out.string()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Json::Value get = Done(arguments, account);
    EXPECT_TRUE(get["verified"].asBool()) << get;
    return ReadFile(out);
}

std::uint64_t DiskFixture::Used(const Account& account) const
{
    return Done({"quota"}, account)["used"].asUInt64();
}

} // namespace quorvex::e2e
