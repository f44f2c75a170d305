#include "FileDigests.h"

#include "NetDiskClient.h"
#include "Pairs.h"
#include "WorkFolder.h"

#include <ChecksumHelper.h>

namespace quorvex::bench
{

namespace fs = std::filesystem;

void DigestMd5(const fs::path& file)
{
    char md5[kMd5TextSize] = {};
    std::uint32_t size = 0;
    CheckResult(FileMd5(file.filename().c_str(), file.parent_path().c_str(), md5, size), "FileMd5");
}

void DigestMd5AndSha1(const fs::path& file)
{
    char md5[kMd5TextSize] = {};
    char sha1[kSha1TextSize] = {};
    std::uint32_t size = 0;
    CheckResult(FileMd5AndSha1(file.filename().c_str(), md5, file.parent_path().c_str(), sha1, size), "FileMd5AndSha1");
}

void BenchFileDigests(const fs::path& folder, int runs)
{
    const fs::path file = folder / "digested.bin";
    MakeSparseFile(file, 256ULL << 20);
    CompareAndPrint({"file", "MD5", "MD5 and SHA-1", "time for both over time for MD5"}, {Target::Bound::AtMost, 1.05},
                    {{"256 MiB", [&file] { DigestMd5(file); }, [&file] { DigestMd5AndSha1(file); }}}, runs);
}

} // namespace quorvex::bench
