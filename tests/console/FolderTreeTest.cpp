#include "FolderTree.h"

#include "Failure.h"
#include "Output.h"

#include <gtest/gtest.h>

#include <map>

namespace quorvex::console
{
namespace
{

FileEntry File(const std::string& key, const std::string& name, std::uint64_t size)
{
    FileEntry file;
    file.key = key;
    file.name = name;
    file.size = size;
    return file;
}

FolderTree Read(const std::map<std::string, Folder>& disk)
{
    return ReadTree({"0", "/"}, [&disk](const std::string& id) { return disk.at(id); });
}

const std::map<std::string, Folder> kDisk{
    {"0", {{{"1", "a"}, {"2", "b"}}, {File("k0", "top.txt", 1)}}},
    {"1", {{{"3", "deep"}}, {}}},
    {"2", {{}, {}}},
    {"3", {{}, {File("k1", "x", 1024), File("k2", "y\n", 0)}}},
};

TEST(FolderTree, IsDrawnWithLines)
{
    EXPECT_EQ(TreeText(Read(kDisk)), "/\n"
                                     "\xE2\x94\x9C\xE2\x94\x80 a/  [1]\n"
                                     "\xE2\x94\x82  \xE2\x94\x94\xE2\x94\x80 deep/  [3]\n"
                                     "\xE2\x94\x82     \xE2\x94\x9C\xE2\x94\x80 x  1.0 KiB  [k1]\n"
                                     "\xE2\x94\x82     \xE2\x94\x94\xE2\x94\x80 y\xEF\xBF\xBD  0 bytes  [k2]\n"
                                     "\xE2\x94\x9C\xE2\x94\x80 b/  [2]\n"
                                     "\xE2\x94\x94\xE2\x94\x80 top.txt  1 byte  [k0]\n");
}

TEST(FolderTree, CountsWhatItHolds)
{
    EXPECT_EQ(TotalsText(Read(kDisk)), "3 folders, 3 files, 1.0 KiB");
    EXPECT_EQ(TotalsText({}), "0 folders, 0 files, 0 bytes");
    EXPECT_EQ(TotalsText({{}, {FolderTree()}, {File("k", "f", 2)}}), "1 folder, 1 file, 2 bytes");
}

TEST(FolderTree, NestsForMachines)
{
    const Json::Value json = ToJson(Read(kDisk));
    EXPECT_EQ(json["folders"][0]["folders"][0]["name"].asString(), "deep");
    EXPECT_EQ(json["folders"][0]["folders"][0]["files"][1]["key"].asString(), "k2");
    EXPECT_EQ(JsonLine(json["folders"][1]), "{\"files\":[],\"folders\":[],\"id\":\"2\",\"name\":\"b\"}\n");
}

TEST(FolderTree, RefusesACircle)
{
    const std::map<std::string, Folder> circle{{"0", {{{"1", "a"}}, {}}}, {"1", {{{"0", "b"}}, {}}}};
    EXPECT_THROW(Read(circle), Failure);
    const std::map<std::string, Folder> twice{{"0", {{{"1", "a"}, {"1", "b"}}, {}}}, {"1", {}}};
    EXPECT_THROW(Read(twice), Failure);
}

TEST(FolderTree, RefusesABottomlessOne)
{
    const auto withFolders = [](int deepest) {
        return ReadTree({"0", "/"}, [deepest](const std::string& id) {
            const int depth = std::stoi(id);
            return depth < deepest ? Folder{{{std::to_string(depth + 1), "f"}}, {}} : Folder();
        });
    };
    EXPECT_EQ(TotalsText(withFolders(200)), "200 folders, 0 files, 0 bytes");
    EXPECT_THROW(withFolders(201), Failure);
}

TEST(FolderTree, FailsWithItsLister)
{
    EXPECT_THROW(ReadTree({"0", "/"}, [](const std::string&) -> Folder { throw Failure("no"); }), Failure);
}

} // namespace
} // namespace quorvex::console
