#pragma once

#include "Failure.h"
#include "HostStorage.h"
#include "Paths.h"
#include "RemoteFile.h"
#include "ResumeRecord.h"
#include "StorageSession.h"

#include <quorvex/NetDisk.h>

#include <functional>
#include <string>

namespace quorvex::console
{

struct Block
{
    void* data;
    unsigned long size;
    unsigned long position;
    bool isLast;
};

/// Where an upload goes. The operations tell what the module's have returned.
struct UploadTarget
{
    /// Sends a whole file; empty where files go in blocks alone.
    std::function<Outcome(const LocalPath& local, std::string& key)> sendWhole;
    /// Announces a file; "isComplete" tells that the server has all of it already. Empty where a file begins with its
    /// first block.
    std::function<Outcome(const LocalPath& local, std::string& key, bool& isComplete)> create;
    /// Sends a block and takes what the server tells to know the next one by.
    std::function<Outcome(const LocalPath& local, UploadIds& ids, const Block& block)> sendBlock;
    /// Empty where a file ends with its last block.
    std::function<Outcome(const std::wstring& key)> finish;
    /// As AskAbout; empty where nothing can be asked.
    std::function<RemoteFile(const std::wstring& key, const std::string& what)> askAbout;
    Transport transport = Transport::Module;
};

UploadTarget ToDisk(const netdisk::CNetDisk& disk);
UploadTarget ToDepot(Storage& storage);
UploadTarget ToDepot(Storage2& storage);
UploadTarget ToDepot(Storage3& storage);

} // namespace quorvex::console
