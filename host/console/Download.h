#pragma once

#include "Failure.h"
#include "HostStorage.h"
#include "Options.h"
#include "RemoteFile.h"
#include "StorageSession.h"

#include <quorvex/NetDisk.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace quorvex::console
{

/// Where a download's bytes come from.
struct DownloadSource
{
    RemoteFile remote; ///< where nothing is told of the file, its size is the most that one can have
    /// Writes the whole file into a folder, under a name, of which null is the server's; empty where files come in
    /// ranges alone.
    std::function<Outcome(const wchar_t* folder, const wchar_t* name)> fetchWhole;
    /// Reads one range; "size" is the bytes wanted, then those received: none behind the file's end.
    std::function<Outcome(unsigned long position, void* buffer, unsigned long& size)> fetchRange;
    bool isToldOf = true;                       ///< whether the server tells the file's name, size and MD5
    std::wstring partEnding = L".quorvex-part"; ///< of the file that grows
    Transport transport = Transport::Module;
};

/// A file of the user's disk.
/// @throws Failure
DownloadSource FromDisk(const netdisk::CNetDisk& disk, const std::string& key);

/// @name A file of the depot
/// @param uid the owner's; empty for the account's own, and in the third generation for whoever's it is
/// @throws Failure
/// @{
DownloadSource FromDepot(Storage& storage, const std::string& uid, const std::string& key);
DownloadSource FromDepot(Storage2& storage, const std::string& uid, const std::string& key);
DownloadSource FromDepot(Storage3& storage, const std::string& uid, const std::string& key);
/// @}

/// A file of a share code.
DownloadSource FromShare(const netdisk::CNetDisk& disk, const std::string& pcode, const FileEntry& file);

/// Whether the name that a listing has may be the beginning of a longer one.
bool IsNameCut(const FileEntry& file);

/// Fetches a whole file right away, by the name that comes with it, which no listing has cut. Its download then finds
/// it here.
/// @param folder an empty one, which is there until the file is downloaded
/// @return false, the listing's name being kept, when no such name comes, or none that the module can give a file here
/// @throws Failure
bool FetchByWholeName(DownloadSource& source, const std::filesystem::path& folder);

struct DownloadResult
{
    RemoteFile remote;
    std::filesystem::path path;    ///< where it is now
    std::uint64_t resumedFrom = 0; ///< bytes that an interrupted run had received
    bool verified = false;         ///< the server tells the same MD5
};

/// Downloads a file: whole up to options.largeFrom bytes where that can be, otherwise range by range. The file grows
/// under another name beside its place, where an interrupted download goes on, and takes its place when it is verified.
/// @throws Failure
DownloadResult Download(const DownloadSource& source, const std::filesystem::path& path, const Options& options);

} // namespace quorvex::console
