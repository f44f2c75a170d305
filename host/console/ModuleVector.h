#pragma once

#include <quorvex/NetDisk.h>

#include <memory>
#include <new>
#include <vector>

namespace quorvex::console
{

/// A vector of records on the module's heap: the module has made it, grows it and takes it back.
template <class Record>
using ModuleVector = std::unique_ptr<std::vector<Record>, void (*)(std::vector<Record>*)>;

template <class Record>
ModuleVector<Record> Owned(std::vector<Record>* made, void (*takeBack)(std::vector<Record>*))
{
    if (made == nullptr)
        throw std::bad_alloc();
    return {made, takeBack};
}

inline ModuleVector<netdisk::_FileInfo> NewFiles()
{
    return Owned(netdisk::CNetDisk::NewFileInfoVector(), &netdisk::CNetDisk::DeleteFileInfoVector);
}

inline ModuleVector<netdisk::_FolderInfo> NewFolders()
{
    return Owned(netdisk::CNetDisk::NewFolderInfoVector(), &netdisk::CNetDisk::DeleteFolderInfoVector);
}

inline ModuleVector<netdisk::_PcodeInfo> NewPcodes()
{
    return Owned(netdisk::CNetDisk::NewPcodeInfoVector(), &netdisk::CNetDisk::DeletePcodeInfoVector);
}

inline ModuleVector<netdisk::_RItemInfo> NewItems()
{
    return Owned(netdisk::CNetDisk::NewRItemInfoVector(), &netdisk::CNetDisk::DeleteRItemInfoVector);
}

} // namespace quorvex::console
