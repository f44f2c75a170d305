#include "Download.h"

#include "Interruption.h"
#include "LocalFile.h"
#include "Output.h"
#include "Paths.h"
#include "Progress.h"
#include "Text.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>
#include <vector>

namespace quorvex::console
{
namespace
{

class Fetch
{
public:
    Fetch(const DownloadSource& source, const std::filesystem::path& target, const Options& options)
        : m_source(source),
          m_options(options),
          m_remote(source.remote),
          m_part(SplitPath(WithEnding(target, source.partEnding))),
          m_what("cannot download " + ToUtf8(source.remote.name))
    {
    }

    std::filesystem::path Part() const { return m_part.Whole(); }

    /// Brings the whole file into the part.
    /// @return how many bytes of it were there already
    std::uint64_t Run()
    {
        const bool isInRanges = !m_source.fetchWhole || m_remote.size > m_options.largeFrom;
        const std::uint64_t present = isInRanges ? Present() : 0;
        // The module does not shorten a file that it writes.
        if (present == 0)
            Discard();
        if (isInRanges)
            FetchRanges(present);
        else
            Check(m_source.fetchWhole(m_part.folder.c_str(), m_part.name.c_str()), m_what, m_source.transport);
        return present;
    }

    /// @return whether the server's MD5 confirms the part
    bool IsVerified() const
    {
        return m_source.isToldOf && IsSameFile(m_remote, std::filesystem::file_size(Part()), DigestOf(Part()), m_what);
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
        const auto total = m_source.isToldOf ? std::optional(m_remote.size) : std::nullopt;
        const StoppableWork work;
        Progress progress(ToUtf8(m_remote.name), total, position, m_options.quiet);
        std::vector<char> block(static_cast<std::size_t>(std::min(m_options.blockSize, m_remote.size)));
        while (position < m_remote.size)
        {
            if (isAskedToStop)
            {
                file.close();
                throw Stopped(position, total);
            }
            auto length = static_cast<unsigned long>(std::min<std::uint64_t>(block.size(), m_remote.size - position));
            const Outcome outcome = m_source.fetchRange(static_cast<unsigned long>(position), block.data(), length);
            if (outcome.result != 0)
            {
                file.close();
                throw BrokenOff(outcome, position, total);
            }
            if (length == 0 && !total)
                return;
            if (length == 0)
                throw Failure(m_what + ": the server's file has ended early, after " + std::to_string(position) +
                              " bytes");
            if (!file.write(block.data(), static_cast<std::streamsize>(length)).flush())
                throw Failure("cannot write " + NameOf(Part()), Result::TransferFailed);
            position += length;
            progress.Show(position);
        }
    }

    Failure BrokenOff(Outcome outcome, std::uint64_t position, std::optional<std::uint64_t> total) const
    {
        return {m_what, outcome, Standing(position, total), m_source.transport};
    }

    Failure Stopped(std::uint64_t position, std::optional<std::uint64_t> total) const
    {
        const std::string standing = Standing(position, total);
        return Failure::Interruption("interrupted the download of " + ToUtf8(m_remote.name) +
                                     (standing.empty() ? "" : ": ") + standing);
    }

    /// How far it has come, and that it can go on. Leaves no part in which there is nothing.
    std::string Standing(std::uint64_t position, std::optional<std::uint64_t> total) const
    {
        if (position != 0)
            return SizeText(position) + (total ? " of " + SizeText(*total) : "") +
                   " are here, and the same command goes on from there";
        Discard();
        return {};
    }

    const DownloadSource& m_source;
    const Options& m_options;
    const RemoteFile& m_remote;
    LocalPath m_part;
    std::string m_what;
};

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

/// Pieces of a file of which nothing is told: it is called by its key, as its part is, which an interrupted download
/// of another file then does not take for its own.
DownloadSource FileOfWhichNothingIsTold(const std::wstring& key)
{
    DownloadSource source;
    source.remote.name = key;
    source.remote.size = UINT32_MAX;
    source.isToldOf = false;
    source.partEnding = L'.' + key + L".quorvex-part";
    source.transport = Transport::Host;
    return source;
}

/// The end of a file whose size is not told: there the server has no range any more.
Outcome EndOfFileIsNoFailure(Outcome outcome, unsigned long& size)
{
    constexpr int kRangeNotSatisfiable = 416;
    if (outcome.result != kRangeNotSatisfiable)
        return outcome;
    size = 0;
    return Outcome(Result::Ok);
}

} // namespace

DownloadSource FromDisk(const netdisk::CNetDisk& disk, const std::string& key)
{
    const std::wstring wideKey = Wide(key);
    return {AskAbout(disk, wideKey, "cannot download " + key),
            [&disk, wideKey](const wchar_t* folder, const wchar_t* name) -> Outcome {
                return {disk.FileDownload(wideKey.c_str(), folder, name), "FileDownload"};
            },
            [&disk, wideKey](unsigned long position, void* buffer, unsigned long& size) -> Outcome {
                return {disk.LargeFileDownload(wideKey.c_str(), position, buffer, size), "LargeFileDownload"};
            }};
}

DownloadSource FromDepot(Storage& storage, const std::string& uid, const std::string& key)
{
    const std::wstring wideUid = Wide(uid);
    const std::wstring wideKey = Wide(key);
    return {AskAbout(storage, wideUid, wideKey, "cannot download " + key),
            {},
            [&storage, wideUid, wideKey](unsigned long position, void* buffer, unsigned long& size) -> Outcome {
                const int result = storage.Run([&](const CFileStorage& depot) {
                    return depot.LargeFileDownload(wideUid.c_str(), wideKey.c_str(), position, buffer, size);
                });
                return {result, "LargeFileDownload"};
            }};
}

DownloadSource FromDepot(Storage2& storage, const std::string& uid, const std::string& key)
{
    DownloadSource source = FileOfWhichNothingIsTold(Wide(key));
    source.fetchRange = [&storage, uid = Wide(uid), key = Wide(key)](unsigned long position, void* buffer,
                                                                     unsigned long& size) {
        const int result = storage.Run([&](const CFileStorage2& depot) {
            return depot.LargeFileDownload(uid.c_str(), key.c_str(), position, buffer, size);
        });
        return EndOfFileIsNoFailure({result, "LargeFileDownload"}, size);
    };
    return source;
}

DownloadSource FromDepot(Storage3& storage, const std::string& uid, const std::string& key)
{
    constexpr int kWhole = 200;
    constexpr int kPart = 206;
    DownloadSource source = FileOfWhichNothingIsTold(Wide(key));
    source.fetchRange = [&storage, uid = Wide(uid.empty() ? "0" : uid),
                         key = Wide(key)](unsigned long position, void* buffer, unsigned long& size) -> Outcome {
        const int result = storage.Run([&](const CFileStorage3& depot) {
            return depot.Bufferdownload(uid.c_str(), key.c_str(), position, buffer, size);
        });
        // A server that does not know ranges would give the file's start over and over.
        if (result == kPart || (result == kWhole && position == 0))
            return Outcome(Result::Ok);
        return EndOfFileIsNoFailure({result, "Bufferdownload"}, size);
    };
    return source;
}

DownloadSource FromShare(const netdisk::CNetDisk& disk, const std::string& pcode, const FileEntry& file)
{
    const std::wstring code = Wide(pcode);
    const std::wstring id = Wide(file.key);
    return {SharedFile(file),
            [&disk, code, id](const wchar_t* folder, const wchar_t* name) -> Outcome {
                return {disk.PcodeDown(code.c_str(), id.c_str(), folder, name), "PcodeDown"};
            },
            [&disk, code, id](unsigned long position, void* buffer, unsigned long& size) -> Outcome {
                return {disk.LargePcodeDown(code.c_str(), id.c_str(), position, buffer, size), "LargePcodeDown"};
            }};
}

bool IsNameCut(const FileEntry& file)
{
    // A cut divides no character and may leave the last of the record's 64 units free.
    constexpr std::size_t kShortestCut = std::size(netdisk::_FileInfo{}.name) - 2;
    return Wide(file.name).size() >= kShortestCut;
}

bool FetchByWholeName(DownloadSource& source, const std::filesystem::path& folder)
{
    const Outcome outcome = source.fetchWhole(folder.c_str(), nullptr);
    if (outcome.result == Result::DownloadRefused || outcome.result == Result::LocalFileFailed)
        return false;
    Check(outcome, "cannot download " + ToUtf8(source.remote.name), source.transport);
    const std::filesystem::directory_iterator fetched(folder);
    if (fetched == std::filesystem::directory_iterator())
        return false;
    const std::filesystem::path file = fetched->path();
    source.fetchWhole = [file](const wchar_t* place, const wchar_t* placeName) {
        std::error_code error;
        std::filesystem::rename(file, std::filesystem::path(place) / placeName, error);
        return Outcome(error ? Result::LocalFileFailed : Result::Ok);
    };
    const std::wstring name = RepairedName(file.filename().wstring());
    // A name that the system has had to cut in its turn would not even be the listing's.
    if (!name.starts_with(Wide(source.remote.stated)))
        return false;
    source.remote.name = SafeName(name, source.remote.name);
    source.remote.stated = ToUtf8(name);
    return true;
}

DownloadResult Download(const DownloadSource& source, const std::filesystem::path& path, const Options& options)
{
    DownloadResult result{source.remote, path};
    Fetch fetch(source, path, options);
    result.resumedFrom = fetch.Run();
    result.verified = VerifyOrRepeat(fetch, result.resumedFrom);

    PutInPlace(fetch.Part(), result.path);
    if (!source.isToldOf)
    {
        result.remote.size = std::filesystem::file_size(result.path);
        WriteError(
            "note: this generation tells neither size nor MD5 of a file, so that what has come is not verified\n");
    }
    return result;
}

} // namespace quorvex::console
