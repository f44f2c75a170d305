#pragma once

#include "Options.h"
#include "RemoteFile.h"

#include <quorvex/NetDisk.h>

#include <cstdint>
#include <filesystem>

namespace quorvex::console
{

struct DownloadResult
{
    RemoteFile remote;
    std::filesystem::path path;    ///< where it is now
    std::uint64_t resumedFrom = 0; ///< bytes that an interrupted run had received
    bool verified = false;         ///< the server tells the same MD5
};

/// Downloads options.key: whole up to options.largeFrom bytes, otherwise range by range. The file grows under
/// another name beside its place, where an interrupted download goes on, and takes its place when it is verified.
/// @throws Failure
DownloadResult Download(const netdisk::CNetDisk& disk, const Options& options);

} // namespace quorvex::console
