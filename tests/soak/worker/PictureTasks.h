#pragma once

#include "StorageClients.h"

namespace quorvex::soak
{

/// What one account does with pictures, photos and emoticons, and the book of them. All generations share the
/// pictures.
class PictureTasks
{
public:
    PictureTasks(Setting& setting, StorageClients& clients);

    /// @name Tasks
    /// @{
    void Upload();
    void Download();
    void UploadPhoto();
    void UploadEmoticon();
    void DownloadEmoticon();
    void RemoveEmoticon();
    /// @}

    void Verify();

private:
    Stored* NewOrHeld(const wchar_t* kind);
    void UploadSecond(Stored& picture);
    bool IsDownloaded(const Stored& picture, int generation) const;
    bool IsDownloadedThird(const Stored& picture) const;
    bool IsEmoticon(const Stored& emoticon) const;
    int UploadThird(const Stored& picture) const;

    Setting& m_setting;
    StorageClients& m_clients;
    Book m_pictures;
    Book m_emoticons;
};

} // namespace quorvex::soak
