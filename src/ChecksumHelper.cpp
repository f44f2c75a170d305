#include "ChecksumHelper.h"

#include "BoundedText.h"
#include "CommonUtil.h"
#include "Hex.h"
#include "Md5.h"
#include "Md5Sha1.h"
#include "Platform/File.h"
#include "Platform/LastError.h"

#include <quorvex/Results.h>

#include <algorithm>
#include <memory>

namespace quorvex
{

using Platform::File;

namespace
{

// Reading in blocks rather than through a mapping: a mapped file that becomes unreadable ends the process.
constexpr std::uint32_t kBlockSize = 0x100000;

enum class Read
{
    Exactly,
    UpToEnd
};

/// Feeds a file's next bytes to a digest.
template <class Digest>
bool FeedFile(const File& file, std::uint64_t length, Read extent, Digest& digest)
{
    const auto block = std::make_unique_for_overwrite<unsigned char[]>(kBlockSize);
    while (length != 0)
    {
        std::uint32_t read = 0;
        if (!file.Read(block.get(), static_cast<std::uint32_t>(std::min<std::uint64_t>(length, kBlockSize)), read))
        {
            return false;
        }
        if (read == 0)
        {
            Platform::SetLastError(Platform::kEndOfFile);
            return extent == Read::UpToEnd;
        }
        digest.Append(block.get(), read);
        length -= read;
    }
    return true;
}

/// What the two routines for a file of a folder have in common.
/// @param openFailure what a file that cannot be opened gives, and a path of more than 259 characters
template <class Digest>
int DigestFile(const wchar_t* folder, const wchar_t* fileName, int openFailure, std::uint32_t& fileSize, Digest& digest)
{
    WideText<260> path;
    path << folder << L"\\" << fileName;

    File file;
    if (path.IsCut())
    {
        Platform::SetLastError(Platform::kInvalidName);
    }
    // A path that was cut would lead to another file than the one that was asked for.
    if (path.IsCut() || !file.OpenToRead(path.c_str(), File::Share::ReadAndWrite, File::Access::Random))
    {
        LOG_LAST_ERROR();
        return openFailure;
    }
    std::uint64_t size = 0;
    if (!file.Size(size))
    {
        LOG_LAST_ERROR();
        return Result::BadAnswer;
    }
    if (size == 0)
    {
        Platform::SetLastError(Platform::kFileIsEmpty);
        LOG_LAST_ERROR();
        return Result::BadAnswer;
    }
    fileSize = static_cast<std::uint32_t>(size);
    if (!FeedFile(file, fileSize, Read::Exactly, digest))
    {
        LOG_LAST_ERROR();
        return Result::BadAnswer;
    }
    return Result::Ok;
}

} // namespace

int FileMd5(const wchar_t* fileName, const wchar_t* folder, char* md5, std::uint32_t& fileSize)
{
    Md5 digest;
    const int result = DigestFile(folder, fileName, Result::BadAnswer, fileSize, digest);
    if (result == Result::Ok)
    {
        std::ranges::copy(HexText(digest.Finish()), md5);
    }
    return result;
}

int FileMd5AndSha1(const wchar_t* fileName, char* md5, const wchar_t* folder, char* sha1, std::uint32_t& fileSize)
{
    Md5Sha1 digest;
    const int result = DigestFile(folder, fileName, Result::DigestFileFailed, fileSize, digest);
    if (result == Result::Ok)
    {
        const Md5Sha1::Digests digests = digest.Finish();
        std::ranges::copy(HexText(digests.md5), md5);
        std::ranges::copy(HexText(digests.sha1), sha1);
    }
    return result;
}

std::string StreamedFileMd5(const std::string& path)
{
    File file;
    Md5 digest;
    if (!file.OpenToRead(Utf8ToWide(path).c_str(), File::Share::ReadAndWrite) ||
        !FeedFile(file, UINT64_MAX, Read::UpToEnd, digest))
    {
        LOG_LAST_ERROR();
        return {};
    }
    return HexText(digest.Finish()).data();
}

std::string StringMd5(const void* data, std::size_t length)
{
    return HexText(Md5Of(data, length)).data();
}

} // namespace quorvex
