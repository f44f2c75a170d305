#include "Download.h"

#include "Failure.h"
#include "LocalFile.h"
#include "Paths.h"
#include "Progress.h"
#include "Text.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <vector>

namespace quorvex::console
{
namespace
{

class Fetch
{
public:
    Fetch(const netdisk::CNetDisk& disk, const Options& options, const RemoteFile& remote,
          const std::filesystem::path& target)
        : m_disk(disk),
          m_options(options),
          m_remote(remote),
          m_key(Wide(options.key)),
          m_part(SplitPath(WithEnding(target, L".quorvex-part"))),
          m_what("cannot download " + ToUtf8(remote.name))
    {
    }

    std::filesystem::path Part() const { return m_part.Whole(); }

    /// Brings the whole file into the part.
    /// @return how many bytes of it were there already
    std::uint64_t Run()
    {
        const bool isLarge = m_remote.size > m_options.largeFrom;
        const std::uint64_t present = isLarge ? Present() : 0;
        // The module does not shorten a file that it writes.
        if (present == 0)
            Discard();
        if (isLarge)
            FetchRanges(present);
        else
            Check(m_disk.FileDownload(m_key.c_str(), m_part.folder.c_str(), m_part.name.c_str()), m_what);
        return present;
    }

    /// @return whether the server's MD5 confirms the part
    bool IsVerified() const
    {
        return IsSameFile(m_remote, std::filesystem::file_size(Part()), DigestOf(Part()), m_what);
    }

    void Discard() const
    {
        std::error_code ignored;
        std::filesystem::remove(Part(), ignored);
    }

private:
    std::uint64_t Present() const
    {
        std::error_code error;
        const std::uint64_t size = std::filesystem::file_size(Part(), error);
        return error || size > m_remote.size ? 0 : size;
    }

    void FetchRanges(std::uint64_t position)
    {
        std::ofstream file(Part(), std::ios::binary | std::ios::app);
        if (!file)
            throw Failure("cannot create " + NameOf(Part()), Result::LocalFileFailed);
        Progress progress(ToUtf8(m_remote.name), m_remote.size, position, m_options.quiet);
        std::vector<char> block(static_cast<std::size_t>(std::min(m_options.blockSize, m_remote.size)));
        while (position < m_remote.size)
        {
            auto length = static_cast<unsigned long>(std::min<std::uint64_t>(block.size(), m_remote.size - position));
            const int result =
                m_disk.LargeFileDownload(m_key.c_str(), static_cast<unsigned long>(position), block.data(), length);
            if (result != 0)
                throw Failure(m_what, result,
                              SizeText(position) + " of " + SizeText(m_remote.size) +
                                  " are here, and the same command goes on from there");
            if (length == 0)
                throw Failure(m_what + ": the server's file has ended early, after " + std::to_string(position) +
                              " bytes");
            if (!file.write(block.data(), static_cast<std::streamsize>(length)).flush())
                throw Failure("cannot write " + NameOf(Part()), Result::TransferFailed);
            position += length;
            progress.Show(position);
        }
    }

    const netdisk::CNetDisk& m_disk;
    const Options& m_options;
    const RemoteFile& m_remote;
    std::wstring m_key;
    LocalPath m_part;
    std::string m_what;
};

std::filesystem::path TargetOf(const std::string& out, const std::wstring& serverName)
{
    const std::filesystem::path path = Wide(out.empty() ? "." : out);
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(path, error) || !path.has_filename();
    return SplitPath(isFolder ? path / serverName : path).Whole();
}

/// A part that an earlier run has left may be of another file; only the digest tells, and then it is fetched anew.
bool VerifyOrRepeat(Fetch& fetch, std::uint64_t& resumedFrom)
{
    try
    {
        return fetch.IsVerified();
    }
    catch (const Failure&)
    {
        fetch.Discard();
        if (resumedFrom == 0)
            throw;
    }
    resumedFrom = fetch.Run();
    return VerifyOrRepeat(fetch, resumedFrom);
}

} // namespace

DownloadResult Download(const netdisk::CNetDisk& disk, const Options& options)
{
    DownloadResult result;
    result.remote = AskAbout(disk, Wide(options.key), "cannot download " + options.key);
    result.path = TargetOf(options.out, result.remote.name);

    Fetch fetch(disk, options, result.remote, result.path);
    result.resumedFrom = fetch.Run();
    result.verified = VerifyOrRepeat(fetch, result.resumedFrom);

    std::error_code error;
    std::filesystem::rename(fetch.Part(), result.path, error);
    if (error)
        throw Failure("the download is complete, but " + NameOf(fetch.Part()) + " cannot be renamed to " +
                      NameOf(result.path));
    return result;
}

} // namespace quorvex::console
