#include "support/ServiceFixture.h"

#include <fstream>
#include <string>

namespace quorvex::services::test
{

namespace
{

namespace fs = std::filesystem;

class DataFolderTest : public ServiceFixture
{
protected:
    fs::path Other() const { return folder_.Path() / "other"; }

    void Put(const fs::path& file)
    {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << "precious";
    }

    bool StartsIn(const fs::path& folder)
    {
        Application::Options options = options_;
        options.dataFolder = folder;
        try
        {
            const Application application(options);
            return true;
        }
        catch (const std::runtime_error&)
        {
            return false;
        }
    }
};

} // namespace

TEST_F(DataFolderTest, IsUsedByOneProcessOnly)
{
    EXPECT_FALSE(StartsIn(options_.dataFolder));
}

TEST_F(DataFolderTest, IsLeftAsItIsWhenItHoldsSomethingElse)
{
    for (const char* file : {"letter.txt", "tmp/letter.txt", "blobs/letter.txt", "partial/letter.txt"})
    {
        const fs::path folder = Other() / std::string(1, file[0]);
        Put(folder / file);
        fs::permissions(folder, fs::perms::all);

        EXPECT_FALSE(StartsIn(folder)) << file;
        EXPECT_TRUE(fs::exists(folder / file)) << file;
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::all) << file;
    }
}

TEST_F(DataFolderTest, BelongsToItsOwnerAlone)
{
    fs::create_directories(Other());
    EXPECT_TRUE(StartsIn(Other()));
    EXPECT_EQ(fs::status(Other()).permissions(), fs::perms::owner_all);
    EXPECT_TRUE(StartsIn(Other()));
}

TEST_F(DataFolderTest, IsTakenUpAgainAfterAFirstStartThatWasCutOff)
{
    Put(Other() / "lock");
    EXPECT_TRUE(StartsIn(Other()));
}

} // namespace quorvex::services::test
