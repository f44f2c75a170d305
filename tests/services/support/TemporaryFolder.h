#pragma once

#include <filesystem>

namespace quorvex::services::test
{

// A folder of this test alone, removed at its end.
class TemporaryFolder
{
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

std::size_t CountFiles(const std::filesystem::path& folder);

} // namespace quorvex::services::test
