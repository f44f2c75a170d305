#pragma once

#include <cstdint>
#include <filesystem>

namespace quorvex::bench
{

/// A folder of this run's own, removed with all that is in it.
class WorkFolder
{
public:
    explicit WorkFolder(const std::filesystem::path& parent);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Makes a file of zeros that takes no room on the disk where the file system can do that.
void MakeSparseFile(const std::filesystem::path& path, std::uint64_t size);

} // namespace quorvex::bench
