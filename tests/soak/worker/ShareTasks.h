#pragma once

#include "DiskTasks.h"

namespace quorvex::soak
{

/// What two accounts do with share codes: one makes them, the other uses them.
class ShareTasks
{
public:
    ShareTasks(Setting& setting, DiskTasks& owner, DiskTasks& guest);

    /// @name Tasks
    /// @{
    void Make();
    void Use();
    void Defer();
    void Delete();
    /// @}

    void Verify();

private:
    Stored* PickCode();
    bool IsListed(const Stored& code) const;
    void Download(const Stored& code, const netdisk::_FileInfo& listed, const Stored& original) const;
    const Stored* OriginalOf(const netdisk::_FileInfo& listed);

    Setting& m_setting;
    DiskTasks& m_owner;
    DiskTasks& m_guest;
    Book m_codes;
};

} // namespace quorvex::soak
