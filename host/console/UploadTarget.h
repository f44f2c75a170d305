#pragma once

#include "Paths.h"
#include "RemoteFile.h"
#include "StorageSession.h"

#include <quorvex/NetDisk.h>

#include <functional>
#include <string>

namespace quorvex::console
{

/// Where an upload goes. The operations return the module's results.
struct UploadTarget
{
    /// Sends a whole file; empty where files go in blocks alone.
    std::function<int(const LocalPath& local, std::string& key)> sendWhole;
    /// Announces a file; "isComplete" tells that the server has all of it already.
    std::function<int(const LocalPath& local, std::string& key, bool& isComplete)> create;
    std::function<int(const std::wstring& key, void* data, unsigned long size, unsigned long position)> sendBlock;
    std::function<int(const std::wstring& key)> finish;
    /// As AskAbout.
    std::function<RemoteFile(const std::wstring& key, const std::string& what)> askAbout;
};

UploadTarget ToDisk(const netdisk::CNetDisk& disk);
UploadTarget ToDepot(Storage& storage);

} // namespace quorvex::console
