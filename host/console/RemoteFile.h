#pragma once

#include "Listings.h"
#include "StorageSession.h"

#include <quorvex/NetDisk.h>

#include <cstdint>
#include <string>

namespace quorvex::console
{

/// What the server tells about a stored file.
struct RemoteFile
{
    std::wstring name; ///< fit to be a local file name
    std::uint64_t size = 0;
    std::string md5;    ///< empty when the server tells none
    std::string stated; ///< the name as the server tells it
};

/// @name Questions about a stored file
/// @param what what cannot be done without the answer, for the message
/// @throws Failure
/// @{
RemoteFile AskAbout(const netdisk::CNetDisk& disk, const std::wstring& key, const std::string& what);

/// @param uid the owner's; empty for the account's own
RemoteFile AskAbout(Storage& storage, const std::wstring& uid, const std::wstring& key, const std::string& what);
/// @}

/// What a share code's listing tells about one of its files.
RemoteFile SharedFile(const FileEntry& entry);

/// Whether the server's size and MD5 are those of a local file.
/// @return false when they are not known to differ, but the server tells no MD5
/// @throws Failure when they differ
bool IsSameFile(const RemoteFile& remote, std::uint64_t size, const std::string& md5, const std::string& what);

} // namespace quorvex::console
