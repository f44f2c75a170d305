#include "StorageFixture.h"

namespace quorvex::e2e
{

namespace
{

class NetDiskBlocks : public DiskFixture
{
};

class DepotBlocks : public StorageFixture
{
protected:
    DepotBlocks() : StorageFixture("depot") {}
};

} // namespace

TEST_F(NetDiskBlocks, MakeAFileOneByOne)
{
    const std::string content = Pattern(3000);
    const std::string path = Write("file.bin", content);
    const Json::Value created = Done({"blocks", "create", path});
    EXPECT_FALSE(created["complete"].asBool());
    const std::string key = created["key"].asString();
    EXPECT_EQ(Done({"blocks", "send", key, path, "--offset", "1000", "--length", "8000"})["length"].asUInt(), 2000U);
    EXPECT_EQ(Refused({"blocks", "finish", key}), 409);
    EXPECT_EQ(Done({"blocks", "send", key, path, "--length", "1000"})["length"].asUInt(), 1000U);
    Done({"blocks", "finish", key});
    EXPECT_EQ(Get(key), content);

    const std::filesystem::path piece = folder.Path() / "piece";
    const Json::Value read =
        Done({"blocks", "read", key, "--offset", "2900", "--length", "500", "--out", piece.string()});
    EXPECT_EQ(read["length"].asUInt(), 100U);
    EXPECT_EQ(ReadFile(piece), content.substr(2900));
    EXPECT_TRUE(Done({"blocks", "create", path})["complete"].asBool());
}

TEST_F(DepotBlocks, MakeAFileOneByOneInEachGeneration)
{
    for (const std::string generation : {"1", "2"})
    {
        const std::vector<std::string> of = {"--generation", generation};
        const auto with = [&of](std::vector<std::string> arguments) {
            arguments.insert(arguments.end(), of.begin(), of.end());
            return arguments;
        };
        const std::string content = Pattern(2000, std::stoul(generation));
        const std::string path = Write("file.bin", content);
        const std::string key = Done(with({"blocks", "create", path}))["key"].asString();
        Done(with({"blocks", "send", key, path, "--length", "1500"}));
        Done(with({"blocks", "send", key, path, "--offset", "1500"}));
        Done(with({"blocks", "finish", key}));
        for (const std::string& reader : {generation, std::string("3")})
        {
            const std::filesystem::path piece = folder.Path() / ("piece" + reader);
            Done({"blocks", "read", key, "--offset", "1400", "--length", "200", "--out", piece.string(), "--generation",
                  reader});
            EXPECT_EQ(ReadFile(piece), content.substr(1400, 200)) << generation << reader;
        }
    }
}

} // namespace quorvex::e2e
