#include "DiskTasks.h"

#include "Blocks.h"
#include "ModuleVector.h"

#include <algorithm>

namespace quorvex::soak
{

namespace
{

constexpr unsigned long kKeySize = 17; // to be doubled
constexpr wchar_t kTop[] = L"0";
constexpr std::uint64_t kQuota = 17179869184;
constexpr std::size_t kMostFolders = 16;

} // namespace

DiskTasks::DiskTasks(Setting& setting, Account account)
    : m_setting(setting), m_account(std::move(account)), m_files(setting.mostFiles), m_folders(setting.mostFiles)
{
}

void DiskTasks::Open()
{
    m_client.emplace((m_setting.server + L"/object").c_str(), m_account.session.c_str());
    m_setting.Note(Op::DiskCreate, Result::Ok);
    m_setting.NoteRight(Op::DiskIsConnected, m_client->IsConnected(), "CNetDisk::IsConnected");
    m_setting.NoteRight(Op::DiskGetLastErrMsg, *m_client->GetLastErrMsg() == L'\0', "CNetDisk::GetLastErrMsg");
}

void DiskTasks::Close()
{
    m_client.reset();
    m_setting.Note(Op::DiskDestroy, Result::Ok);
}

void DiskTasks::LogIn()
{
    const Account& account = m_account;
    m_setting.Note(Op::DiskUserLogout, m_client->UserLogout());
    switch (m_setting.Turn(Op::DiskUserLoginSession, 3))
    {
    case 0:
        m_setting.Note(Op::DiskUserLoginPassword, m_client->UserLogin(account.name.c_str(), account.password.c_str()));
        break;
    case 1:
        m_setting.Note(Op::DiskPassportLoginTicket,
                       m_client->PassportLoginTicket(account.blowfish.c_str(), account.ticket.c_str()));
        break;
    default:
        m_setting.Note(Op::DiskUserLoginSession, m_client->UserLogin(account.session.c_str()));
        break;
    }
}

void DiskTasks::Upload()
{
    if (m_files.IsFull() || m_files.Count(State::Live) >= kMostLive)
    {
        return Delete();
    }
    const Content content = m_setting.NewContent();
    const std::wstring name = m_setting.NewName(Chance(m_setting.random, 20) ? L"über €" : L"file", L".bin");
    const Setting::LocalFile file(m_setting, name);
    file.Write(content);
    wchar_t key[2 * kKeySize] = {};
    if (m_setting.Note(Op::DiskFileUpload,
                       m_client->FileUpload(m_setting.folder.c_str(), name.c_str(), key, kKeySize)) == Result::Ok)
    {
        m_files.Add({State::Live, content, Text<66>(key), Text<66>(name), Text<34>(kTop)});
    }
    if (Chance(m_setting.random, 30))
    {
        unsigned long size = 0;
        wchar_t md5[33] = {};
        m_client->FileGetChecksum(m_setting.folder.c_str(), name.c_str(), size, md5);
        const std::wstring own = content.size == 0 ? L"" : Md5Of(content.Bytes(), content.size);
        m_setting.NoteRight(Op::DiskFileGetChecksum, own == md5 && size == content.size, "CNetDisk::FileGetChecksum");
    }
}

int DiskTasks::DownloadTo(const Stored& file, const wchar_t* localName) const
{
    return m_setting.Note(Op::DiskFileDownload,
                          m_client->FileDownload(file.key.c_str(), m_setting.folder.c_str(), localName));
}

bool DiskTasks::IsDownloaded(const Stored& file, const std::function<int(const wchar_t*)>& download,
                             const std::string& what) const
{
    // Sometimes under the name that the server gives.
    const bool isServersName = file.isPlaced && IsAscii(file.name) && Chance(m_setting.random, 30);
    const std::wstring localName = isServersName ? std::wstring(file.name.c_str()) : L"download";
    const Setting::LocalFile local(m_setting, localName);
    return download(isServersName ? nullptr : localName.c_str()) == Result::Ok &&
           m_setting.Check(local.Read(), file.content, true, what);
}

void DiskTasks::Download()
{
    if (const Stored* const file = m_files.Pick(m_setting.random, State::Live))
    {
        IsDownloaded(
            *file, [&](const wchar_t* localName) { return DownloadTo(*file, localName); }, "CNetDisk::FileDownload");
    }
}

void DiskTasks::Change()
{
    Stored* const file =
        m_files.Pick(m_setting.random, [](const Stored& entry) { return entry.Is(State::Live) && entry.isPlaced; });
    if (file == nullptr)
    {
        return Upload();
    }
    const Stored* const folder = m_folders.Pick(m_setting.random, State::Live);
    const std::wstring name = m_setting.NewName(L"renamed", L".bin");
    const Text<34> target = folder != nullptr && Chance(m_setting.random, 70) ? Text<34>(folder->key) : Text<34>(kTop);
    file->isPlaced = false;
    if (m_setting.Note(Op::DiskFileModify, m_client->FileModify(file->key.c_str(), target.c_str(), name.c_str())) ==
        Result::Ok)
    {
        file->name = name;
        file->folder = target;
        file->isPlaced = true;
    }
}

void DiskTasks::Delete()
{
    Stored* const file = m_files.Pick(m_setting.random, State::Live);
    if (file == nullptr)
    {
        return Upload();
    }
    const bool isForEver = m_setting.Turn(Op::DiskFileDelete);
    file->state = State::Unknown;
    const int result = isForEver ? m_setting.Note(Op::DiskFileDelete4ever, m_client->FileDelete4ever(file->key.c_str()))
                                 : m_setting.Note(Op::DiskFileDelete, m_client->FileDelete(file->key.c_str()));
    if (result == Result::Ok)
    {
        file->state = isForEver ? State::Gone : State::Binned;
    }
}

void DiskTasks::UploadLarge()
{
    if (m_files.IsFull() || m_files.Count(State::Live) >= kMostLive)
    {
        return Delete();
    }
    Content content = m_setting.NewContent();
    const Stored* const held = m_files.Pick(m_setting.random, State::Live);
    if (held != nullptr && held->content.size != 0 && Chance(m_setting.random, 15))
    {
        content = held->content;
    }
    content.size = std::max(content.size, 1U);
    Stored file{State::Live, content, {}, Text<66>(m_setting.NewName(L"large", L".bin")), Text<34>(kTop)};
    const Setting::LocalFile local(m_setting, file.name.c_str());
    local.Write(content);
    wchar_t key[2 * kKeySize] = {};
    int complete = 0;
    if (m_setting.Note(Op::DiskLargeFileCreate, m_client->LargeFileCreate(m_setting.folder.c_str(), file.name.c_str(),
                                                                          key, kKeySize, complete)) != Result::Ok)
    {
        return;
    }
    file.key = key;
    if (complete != 0 || UploadBlocks(file))
    {
        m_files.Add(file);
    }
}

bool DiskTasks::UploadBlocks(const Stored& file) const
{
    const wchar_t* const key = file.key.c_str();
    return SendBlocks(m_setting, file.content,
                      [&](void* data, unsigned long size, unsigned long position) {
                          return m_setting.Note(Op::DiskLargeFileUpload,
                                                m_client->LargeFileUpload(key, data, size, position));
                      }) &&
           TryThrice([&] { return m_setting.Note(Op::DiskLargeFileFinish, m_client->LargeFileFinish(key)); }) ==
               Result::Ok;
}

void DiskTasks::DownloadLarge()
{
    const Stored* const file = m_files.Pick(m_setting.random, State::Live);
    if (file == nullptr)
    {
        return UploadLarge();
    }
    wchar_t name[65] = {};
    wchar_t md5[65] = {};
    unsigned long size = 0;
    if (m_setting.Note(Op::DiskLargeFileGetInfo, m_client->LargeFileGetInfo(file->key.c_str(), name, 65, size, md5)) ==
        Result::Ok)
    {
        const bool isNamed = !file->isPlaced || !IsAscii(file->name) || std::wstring_view(name) == file->name;
        m_setting.Require(isNamed && size == file->content.size,
                          "CNetDisk::LargeFileGetInfo gave other facts: " + Narrow(name) + ", " + std::to_string(size) +
                              " bytes");
    }
    const auto read = [&](unsigned long position, void* room, unsigned long& length) {
        return m_setting.Note(Op::DiskLargeFileDownload,
                              m_client->LargeFileDownload(file->key.c_str(), position, room, length)) == Result::Ok;
    };
    ReadRanges(m_setting, file->content, read, "CNetDisk::LargeFileDownload");
}

void DiskTasks::AskForCapacity()
{
    unsigned long long total = 0;
    unsigned long long used = 0;
    unsigned long most = 0;
    if (m_setting.Note(Op::DiskCapacityInfo, m_client->CapacityInfo(total, used, most)) == Result::Ok)
    {
        m_setting.Require(total == kQuota && used < total && most != 0, "CNetDisk::CapacityInfo gave other facts");
    }
}

void DiskTasks::AddFolder()
{
    if (m_folders.IsFull() || m_folders.Count(State::Live) >= kMostFolders)
    {
        return DeleteFolder();
    }
    const std::wstring name = m_setting.NewName(L"folder", L"");
    wchar_t id[33] = {};
    if (m_setting.Note(Op::DiskFolderAdd, m_client->FolderAdd(name.c_str(), kTop, id, 33)) == Result::Ok)
    {
        m_folders.Add({State::Live, {}, Text<66>(id), Text<66>(name), Text<34>(kTop)});
    }
}

void DiskTasks::ChangeFolder()
{
    Stored* const folder = m_folders.Pick(m_setting.random, State::Live);
    if (folder == nullptr)
    {
        return AddFolder();
    }
    const std::wstring name = m_setting.NewName(L"named", L"");
    folder->isPlaced = false;
    if (m_setting.Note(Op::DiskFolderModi, m_client->FolderModi(folder->key.c_str(), name.c_str(),
                                                                Chance(m_setting.random, 50) ? kTop : nullptr)) ==
        Result::Ok)
    {
        folder->name = name;
        folder->isPlaced = true;
    }
}

void DiskTasks::ChangeContents(const Stored& folder, State from, State to)
{
    for (Stored& file : m_files.Entries())
    {
        if (file.Is(from) && file.isPlaced && std::wstring_view(file.folder) == folder.key)
        {
            file.state = to;
        }
    }
}

void DiskTasks::DeleteFolder()
{
    Stored* const folder = m_folders.Pick(m_setting.random, State::Live);
    if (folder == nullptr)
    {
        return AddFolder();
    }
    // A file that may have been moved into it may go with it.
    for (Stored& file : m_files.Entries())
    {
        if (file.Is(State::Live) && !file.isPlaced)
        {
            file.state = State::Unknown;
        }
    }
    const bool isForEver = m_setting.Turn(Op::DiskFolderDel);
    const int result = isForEver ? m_setting.Note(Op::DiskFolderDel4ever, m_client->FolderDel4ever(folder->key.c_str()))
                                 : m_setting.Note(Op::DiskFolderDel, m_client->FolderDel(folder->key.c_str()));
    const bool isDone = result == Result::Ok;
    folder->state = !isDone ? State::Unknown : isForEver ? State::Gone : State::Binned;
    ChangeContents(*folder, State::Live, !isDone ? State::Unknown : isForEver ? State::Gone : State::Buried);
}

std::optional<DiskTasks::Listing> DiskTasks::ListFolder(const wchar_t* id) const
{
    const FileVector files(m_setting);
    const FolderVector folders(m_setting);
    if (m_setting.Note(Op::DiskFolderList, m_client->FolderList(id, *files, *folders)) != Result::Ok)
    {
        return std::nullopt;
    }
    return Listing{*files, *folders};
}

/// @return the keys
std::optional<std::vector<Text<66>>> DiskTasks::ListUtf8(const wchar_t* id) const
{
    std::vector<netdisk::_FileInfoUTF8> files;
    std::vector<netdisk::_FolderInfoUTF8> folders;
    if (m_setting.Note(Op::DiskFolderListUtf8, m_client->FolderList(id, files, folders)) != Result::Ok)
    {
        return std::nullopt;
    }
    std::vector<Text<66>> keys;
    for (const netdisk::_FileInfoUTF8& file : files)
    {
        const std::string_view key(file.fkey);
        keys.emplace_back(std::wstring(key.begin(), key.end()));
    }
    return keys;
}

void DiskTasks::List()
{
    const Stored* const folder = m_folders.Pick(m_setting.random, State::Live);
    const Text<34> id = folder != nullptr && Chance(m_setting.random, 50) ? Text<34>(folder->key) : Text<34>(kTop);
    std::vector<Text<66>> keys;
    if (m_setting.Turn(Op::DiskFolderList))
    {
        const auto listed = ListUtf8(id.c_str());
        if (!listed)
        {
            return;
        }
        keys = *listed;
    }
    else
    {
        const auto listing = ListFolder(id.c_str());
        if (!listing)
        {
            return;
        }
        std::ranges::transform(listing->files, std::back_inserter(keys),
                               [](const netdisk::_FileInfo& file) { return Text<66>(file.fkey); });
    }
    for (const Stored& file : m_files.Entries())
    {
        const bool isListed = std::ranges::any_of(
            keys, [&](const Text<66>& key) { return std::wstring_view(key) == std::wstring_view(file.key); });
        const bool isHere = file.isPlaced && std::wstring_view(file.folder) == std::wstring_view(id);
        m_setting.Require(isListed || !file.Is(State::Live) || !isHere, "a listing lacks " + Narrow(file.name));
        m_setting.Require(!isListed || file.Is(State::Live) || file.Is(State::Unknown),
                          "a listing has the deleted " + Narrow(file.name));
    }
}

std::optional<std::vector<DiskTasks::Item>> DiskTasks::ListBin() const
{
    const ItemVector items(m_setting);
    if (m_setting.Note(Op::DiskRecyclebinList, m_client->RecyclebinList(*items)) != Result::Ok)
    {
        return std::nullopt;
    }
    return *items;
}

const DiskTasks::Item* DiskTasks::Find(const std::vector<Item>& items, std::wstring_view name)
{
    const auto found = std::ranges::find_if(items, [name](const Item& item) { return name == item.name; });
    return found == items.end() ? nullptr : &*found;
}

/// Whether no other thing that is or may be in the bin has this one's name, which copies of shared files can have.
bool DiskTasks::IsAlone(const Stored& entry) const
{
    const auto isLike = [&](const Stored& other) {
        return &other != &entry && (other.Is(State::Binned) || other.Is(State::Unknown)) &&
               std::wstring_view(other.name) == std::wstring_view(entry.name);
    };
    auto& files = const_cast<Book&>(m_files).Entries();
    return std::ranges::none_of(files, isLike);
}

void DiskTasks::UseBin()
{
    std::vector<netdisk::_RItemInfoUTF8> narrowItems;
    const int narrowResult = m_setting.Note(Op::DiskRecyclebinListUtf8, m_client->RecyclebinList(narrowItems));
    const auto items = ListBin();
    if (!items)
    {
        return;
    }
    m_setting.Require(narrowResult != Result::Ok || narrowItems.size() == items->size(),
                      "the two listings of the bin differ");
    const auto fits = [&](const Stored& entry) { return entry.Is(State::Binned) && entry.isPlaced && IsAlone(entry); };
    Book& book = Chance(m_setting.random, 70) ? m_files : m_folders;
    Stored* const entry = book.Pick(m_setting.random, fits);
    if (entry == nullptr)
    {
        return;
    }
    const Item* const item = Find(*items, entry->name);
    m_setting.Require(item != nullptr, "the bin lacks " + Narrow(entry->name));
    if (item == nullptr)
    {
        return;
    }
    if (m_setting.Turn(Op::DiskRecyclebinRecover))
    {
        return RecoverItem(*entry, item->rs_id);
    }
    DeleteItem(*entry, item->rs_id);
}

void DiskTasks::RecoverItem(Stored& entry, const wchar_t* item)
{
    const bool isDone = m_setting.Note(Op::DiskRecyclebinRecover, m_client->RecyclebinRecover(item)) == Result::Ok;
    entry.state = isDone ? State::Live : State::Unknown;
    ChangeContents(entry, State::Buried, entry.state);
    const Stored* const folder = FolderOf(entry);
    if (folder == nullptr || folder->Is(State::Live))
    {
        return;
    }
    // The folder is not there to take it back.
    entry.isPlaced = !folder->Is(State::Unknown);
    entry.folder = kTop;
}

void DiskTasks::DeleteItem(Stored& entry, const wchar_t* item)
{
    const bool isDone = m_setting.Note(Op::DiskRecyclebinDel, m_client->RecyclebinDel(item)) == Result::Ok;
    entry.state = isDone ? State::Gone : State::Unknown;
    ChangeContents(entry, State::Buried, entry.state);
}

const Stored* DiskTasks::FolderOf(const Stored& file)
{
    const auto& folders = m_folders.Entries();
    const auto found = std::ranges::find_if(
        folders, [&](const Stored& folder) { return std::wstring_view(folder.key) == std::wstring_view(file.folder); });
    return found == folders.end() ? nullptr : &*found;
}

void DiskTasks::TakeIn(const Stored& original)
{
    const auto listing = ListFolder(kTop);
    if (!listing)
    {
        return;
    }
    for (const netdisk::_FileInfo& file : listing->files)
    {
        const bool isKnown = std::ranges::any_of(
            m_files.Entries(), [&](const Stored& entry) { return std::wstring_view(entry.key) == file.fkey; });
        if (!isKnown && !m_files.IsFull() && std::wstring_view(original.name) == file.name)
        {
            m_files.Add({State::Live, original.content, Text<66>(file.fkey), original.name, Text<34>(kTop)});
        }
    }
}

void DiskTasks::Verify()
{
    VerifyListings();
    VerifyFiles();
    VerifyBin();
}

void DiskTasks::VerifyListings()
{
    std::vector<netdisk::_FileInfo> listed;
    std::vector<Text<34>> places;
    const auto list = [&](const wchar_t* id) {
        const auto listing = ListFolder(id);
        if (listing)
        {
            listed.insert(listed.end(), listing->files.begin(), listing->files.end());
            places.resize(listed.size(), Text<34>(id));
        }
        return listing;
    };
    const auto top = list(kTop);
    m_setting.VerifyOther(top.has_value(), "the listing of the top");
    for (const Stored& folder : m_folders.Entries())
    {
        if (folder.Is(State::Unknown))
        {
            ++m_setting.verdict.uncertain;
            continue;
        }
        const bool isOpen = list(folder.key.c_str()).has_value();
        const bool isListed = top && std::ranges::any_of(top->folders, [&](const netdisk::_FolderInfo& info) {
                                  return std::wstring_view(folder.key) == info.fo_id &&
                                         (!folder.isPlaced || std::wstring_view(folder.name) == info.name);
                              });
        const bool isLive = folder.Is(State::Live);
        if (isLive)
        {
            m_setting.VerifyOther(isOpen && isListed, "the folder " + Narrow(folder.name));
        }
        else
        {
            m_setting.VerifyDeletion(!isOpen && !isListed, "the folder " + Narrow(folder.name));
        }
    }
    for (const Stored& file : m_files.Entries())
    {
        const auto found = std::ranges::find_if(
            listed, [&](const netdisk::_FileInfo& info) { return std::wstring_view(file.key) == info.fkey; });
        const bool isListed = found != listed.end();
        if (file.Is(State::Live))
        {
            const std::wstring md5 = Md5Of(file.content.Bytes(), std::max(file.content.size, 1U));
            const bool isRight =
                isListed && found->size == file.content.size && md5 == found->md5 &&
                (!file.isPlaced || (std::wstring_view(file.name) == found->name &&
                                    std::wstring_view(places[static_cast<std::size_t>(found - listed.begin())]) ==
                                        std::wstring_view(file.folder)));
            m_setting.VerifyOther(isRight, "the place or the digest of the file " + Narrow(file.name));
        }
        else if (!file.Is(State::Unknown))
        {
            m_setting.VerifyOther(!isListed, "the listing without the deleted file " + Narrow(file.name));
        }
    }
}

void DiskTasks::VerifyFiles()
{
    for (const Stored& file : m_files.Entries())
    {
        if (file.Is(State::Unknown))
        {
            ++m_setting.verdict.uncertain;
            continue;
        }
        const std::string name = "the file " + Narrow(file.name);
        const auto download = [&](const wchar_t* localName) { return DownloadTo(file, localName); };
        if (file.Is(State::Live))
        {
            m_setting.VerifyFile(file.content, IsDownloaded(file, download, "CNetDisk::FileDownload"), name);
        }
        else
        {
            const Setting::LocalFile local(m_setting, L"deleted");
            m_setting.VerifyDeletion(download(L"deleted") != Result::Ok, name);
        }
    }
}

void DiskTasks::VerifyBin()
{
    const auto items = ListBin();
    m_setting.VerifyOther(items.has_value(), "the recycle bin");
    for (Book* const book : {&m_files, &m_folders})
    {
        for (const Stored& entry : book->Entries())
        {
            if (items && entry.Is(State::Binned) && entry.isPlaced)
            {
                m_setting.VerifyOther(Find(*items, entry.name) != nullptr, "the bin's " + Narrow(entry.name));
            }
        }
    }
}

} // namespace quorvex::soak
