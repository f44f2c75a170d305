#pragma once

#include "Setting.h"

#include <vector>

namespace quorvex::soak
{

/// A vector on the module's heap, as hosts use it whose C++ runtime has another.
template <class Record>
class ModuleVector
{
public:
    using Make = std::vector<Record>* (*)();
    using Destroy = void (*)(std::vector<Record>*);

    ModuleVector(const Setting& setting, Make make, Op makeOperation, Destroy destroy, Op destroyOperation)
        : m_setting(setting), m_destroy(destroy), m_destroyOperation(destroyOperation), m_vector(make())
    {
        setting.NoteRight(makeOperation, m_vector != nullptr && m_vector->empty(), "a new vector");
    }

    ModuleVector(const ModuleVector&) = delete;
    ModuleVector& operator=(const ModuleVector&) = delete;

    ~ModuleVector()
    {
        m_destroy(m_vector);
        m_setting.Note(m_destroyOperation, Result::Ok);
    }

    std::vector<Record>& operator*() const { return *m_vector; }

private:
    const Setting& m_setting;
    Destroy m_destroy;
    Op m_destroyOperation;
    std::vector<Record>* m_vector;
};

struct FileVector : ModuleVector<netdisk::_FileInfo>
{
    explicit FileVector(const Setting& setting)
        : ModuleVector(setting, netdisk::CNetDisk::NewFileInfoVector, Op::DiskNewFileInfoVector,
                       netdisk::CNetDisk::DeleteFileInfoVector, Op::DiskDeleteFileInfoVector)
    {
    }
};

struct FolderVector : ModuleVector<netdisk::_FolderInfo>
{
    explicit FolderVector(const Setting& setting)
        : ModuleVector(setting, netdisk::CNetDisk::NewFolderInfoVector, Op::DiskNewFolderInfoVector,
                       netdisk::CNetDisk::DeleteFolderInfoVector, Op::DiskDeleteFolderInfoVector)
    {
    }
};

struct PcodeVector : ModuleVector<netdisk::_PcodeInfo>
{
    explicit PcodeVector(const Setting& setting)
        : ModuleVector(setting, netdisk::CNetDisk::NewPcodeInfoVector, Op::DiskNewPcodeInfoVector,
                       netdisk::CNetDisk::DeletePcodeInfoVector, Op::DiskDeletePcodeInfoVector)
    {
    }
};

struct ItemVector : ModuleVector<netdisk::_RItemInfo>
{
    explicit ItemVector(const Setting& setting)
        : ModuleVector(setting, netdisk::CNetDisk::NewRItemInfoVector, Op::DiskNewRItemInfoVector,
                       netdisk::CNetDisk::DeleteRItemInfoVector, Op::DiskDeleteRItemInfoVector)
    {
    }
};

} // namespace quorvex::soak
