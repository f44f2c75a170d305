#pragma once

#include "Setting.h"

#include <functional>
#include <optional>
#include <vector>

namespace quorvex::soak
{

/// What one account does with its network disk, and the book of it.
class DiskTasks
{
public:
    DiskTasks(Setting& setting, Account account);

    void Open();
    void Close();

    /// @name Tasks: a few operations each
    /// @{
    void LogIn();
    void Upload();
    void Download();
    void Change();
    void Delete();
    void UploadLarge();
    void DownloadLarge();
    void AskForCapacity();
    void AddFolder();
    void ChangeFolder();
    void DeleteFolder();
    void List();
    void UseBin();
    /// @}

    /// Compares the disk with the book.
    void Verify();

    const netdisk::CNetDisk& Client() const { return *m_client; }
    Book& Files() { return m_files; }

    /// Puts all files with this name that the book does not have into it.
    void TakeIn(const Stored& original);

    /// Compares a whole-file download with its entry.
    /// @param download downloads into a local file of the given name
    bool IsDownloaded(const Stored& file, const std::function<int(const wchar_t* localName)>& download,
                      const std::string& what) const;

private:
    using Item = netdisk::_RItemInfo;

    struct Listing
    {
        std::vector<netdisk::_FileInfo> files;
        std::vector<netdisk::_FolderInfo> folders;
    };

    bool UploadBlocks(const Stored& file) const;
    std::optional<Listing> ListFolder(const wchar_t* id) const;
    std::optional<std::vector<Text<66>>> ListUtf8(const wchar_t* id) const;
    std::optional<std::vector<Item>> ListBin() const;
    static const Item* Find(const std::vector<Item>& items, std::wstring_view name);
    bool IsAlone(const Stored& entry) const;
    void RecoverItem(Stored& entry, const wchar_t* item);
    void DeleteItem(Stored& entry, const wchar_t* item);
    void ChangeContents(const Stored& folder, State from, State to);
    const Stored* FolderOf(const Stored& file);
    void VerifyListings();
    void VerifyFiles();
    void VerifyBin();
    int DownloadTo(const Stored& file, const wchar_t* localName) const;

    Setting& m_setting;
    Account m_account;
    Book m_files;
    Book m_folders;
    std::optional<netdisk::CNetDisk> m_client;
};

} // namespace quorvex::soak
