#include "wire/CaseRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{
namespace fs = std::filesystem;

class CaseTest : public testing::Test
{
public:
    CaseTest(fs::path file, wire::Logging logging) : m_file(std::move(file)), m_logging(logging) {}

    static void SetUpTestSuite() { s_heads = wire::readHeadTemplates(QUORVEX_HEADS); }

    void TestBody() override { wire::runCase(m_file, s_heads, m_logging); }

private:
    static inline wire::HeadTemplates s_heads;

    fs::path m_file;
    wire::Logging m_logging;
};

std::vector<fs::path> caseFiles(const fs::path& folder)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".case")
            files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

/// In a filter a hyphen would mean "but not".
std::string testName(std::string name)
{
    std::ranges::replace(name, '-', '_');
    std::ranges::replace(name, '/', '.');
    return name;
}

/// The folder below the cases is the suite's name, the file's name the test's.
void registerCase(const fs::path& file, const fs::path& root, wire::Logging logging)
{
    const std::string suite = testName(file.parent_path().lexically_relative(root).generic_string());
    const std::string name = testName(file.stem().string());
    const std::string shown = file.generic_string();
    testing::RegisterTest(suite.c_str(), name.c_str(), nullptr, nullptr, shown.c_str(), 1,
                          [=]() -> CaseTest* { return new CaseTest(file, logging); });
}

fs::path casesFolder(int argc, char** argv)
{
    static constexpr std::string_view option = "--cases=";
    for (int i = 1; i < argc; ++i)
        if (const std::string_view argument = argv[i]; argument.starts_with(option))
            return fs::path(argument.substr(option.size()));
    return QUORVEX_CASES;
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    try
    {
        const fs::path root = casesFolder(argc, argv);
        const bool isSilent = std::find(argv, argv + argc, std::string_view("--silent")) != argv + argc;
        const wire::Logging logging = isSilent ? wire::Logging::Off : wire::Logging::AsInCase;
        for (const fs::path& file : caseFiles(root))
            registerCase(file, root, logging);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
    const int result = RUN_ALL_TESTS();
    if (!GTEST_FLAG_GET(list_tests) && testing::UnitTest::GetInstance()->test_to_run_count() == 0)
    {
        std::fprintf(stderr, "no such case\n");
        return 2;
    }
    return result;
}
