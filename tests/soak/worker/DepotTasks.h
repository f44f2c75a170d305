#pragma once

#include "StorageClients.h"

namespace quorvex::soak
{

/// What one account does with the depot of the shared file storage, and the book of it.
class DepotTasks
{
public:
    DepotTasks(Setting& setting, StorageClients& clients);

    /// @name Tasks
    /// @{
    void UploadFirst();
    void UploadSecond();
    void UploadThird();
    void Download();
    void LookAt();
    void Renew();
    void Remove();
    void List();
    void CheckDigests() const;
    /// @}

    void Verify();

private:
    bool HasRoom();
    Stored NewFile();
    template <class Client>
    void UploadWith(Client& client, Op create, Op upload, Op finish);
    bool IsDownloaded(const Stored& file, int generation) const;
    int GetInfo(const Stored& file) const;

    Setting& m_setting;
    StorageClients& m_clients;
    Book m_files;
};

} // namespace quorvex::soak
