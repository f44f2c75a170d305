#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace quorvex::services::test
{

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "services-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
    {
        throw std::runtime_error("no temporary folder");
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::size_t CountFiles(const std::filesystem::path& folder)
{
    const std::filesystem::recursive_directory_iterator entries(folder);
    return static_cast<std::size_t>(
        std::count_if(begin(entries), end(entries), [](const auto& entry) { return entry.is_regular_file(); }));
}

} // namespace quorvex::services::test
