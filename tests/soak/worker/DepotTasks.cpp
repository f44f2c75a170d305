#include "DepotTasks.h"

#include "Blocks.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace quorvex::soak
{

namespace
{

constexpr unsigned long kKeyRoom = 65;
constexpr int kGenerations = 3;
constexpr double kQuota = 17179869184.0;

} // namespace

DepotTasks::DepotTasks(Setting& setting, StorageClients& clients)
    : m_setting(setting), m_clients(clients), m_files(setting.mostFiles)
{
}

bool DepotTasks::HasRoom()
{
    if (!m_files.IsFull() && m_files.Count(State::Live) < kMostLive)
    {
        return true;
    }
    Remove();
    return false;
}

Stored DepotTasks::NewFile()
{
    Content content = m_setting.NewContent();
    content.size = std::max(content.size, 1U);
    return {State::Live, content, {}, Text<66>(m_setting.NewName(L"depot", L".bin")), {}};
}

/// The first two generations have the same operations.
template <class Client>
void DepotTasks::UploadWith(Client& client, Op create, Op upload, Op finish)
{
    if (!HasRoom())
    {
        return;
    }
    Stored file = NewFile();
    const Setting::LocalFile local(m_setting, file.name.c_str());
    local.Write(file.content);
    wchar_t key[kKeyRoom] = {};
    if (m_setting.Note(create, client.LargeFileCreate(m_setting.folder.c_str(), file.name.c_str(), key, kKeyRoom)) !=
        Result::Ok)
    {
        return;
    }
    file.key = key;
    const auto send = [&](void* data, unsigned long size, unsigned long position) {
        return m_setting.Note(upload, client.LargeFileUpload(key, data, size, position));
    };
    if (SendBlocks(m_setting, file.content, send) &&
        TryThrice([&] { return m_setting.Note(finish, client.LargeFileUploadFinish(key)); }) == Result::Ok)
    {
        m_files.Add(file);
    }
}

void DepotTasks::UploadFirst()
{
    UploadWith(m_clients.First(), Op::Storage1LargeFileCreate, Op::Storage1LargeFileUpload,
               Op::Storage1LargeFileUploadFinish);
}

void DepotTasks::UploadSecond()
{
    UploadWith(m_clients.Second(), Op::Storage2LargeFileCreate, Op::Storage2LargeFileUpload,
               Op::Storage2LargeFileUploadFinish);
}

/// The third generation's blocks, one after the other, each with the ticket of the one before.
void DepotTasks::UploadThird()
{
    if (!HasRoom())
    {
        return;
    }
    Stored file = NewFile();
    std::string bytes = file.content.Bytes();
    wchar_t key[kKeyRoom] = {};
    wchar_t ticket[256] = {};
    for (std::size_t position = 0; position < bytes.size(); position += kBlockSize)
    {
        const std::size_t size = std::min(kBlockSize, bytes.size() - position);
        const int isLast = position + size == bytes.size() ? 1 : 0;
        const auto send = [&] {
            return m_setting.Note(Op::Storage3BufferUpload,
                                  m_clients.Third().BufferUpload(
                                      key, bytes.data() + position, static_cast<unsigned long>(size),
                                      static_cast<unsigned long>(position), file.name.c_str(), ticket, isLast));
        };
        if (TryThrice(send) != Result::Ok)
        {
            return;
        }
    }
    file.key = key;
    m_files.Add(file);
}

bool DepotTasks::IsDownloaded(const Stored& file, int generation) const
{
    const wchar_t* const uid = m_clients.Uid().c_str();
    const wchar_t* const key = file.key.c_str();
    const auto read = [&](unsigned long position, void* room, unsigned long& size) {
        if (generation == 1)
        {
            return m_setting.Note(Op::Storage1LargeFileDownload,
                                  m_clients.First().LargeFileDownload(uid, key, position, room, size)) == Result::Ok;
        }
        if (generation == 2)
        {
            return m_setting.Note(Op::Storage2LargeFileDownload,
                                  m_clients.Second().LargeFileDownload(uid, key, position, room, size)) == Result::Ok;
        }
        const int result = m_setting.Note(Op::Storage3Bufferdownload,
                                          m_clients.Third().Bufferdownload(uid, key, position, room, size));
        return result == 200 || result == 206;
    };
    return ReadRanges(m_setting, file.content, read, "a download from the depot");
}

void DepotTasks::Download()
{
    if (const Stored* const file = m_files.Pick(m_setting.random, State::Live))
    {
        IsDownloaded(*file, 1 + static_cast<int>(m_setting.Turn(Op::Storage1LargeFileDownload, kGenerations)));
    }
}

int DepotTasks::GetInfo(const Stored& file) const
{
    wchar_t name[kKeyRoom] = {};
    wchar_t md5[kKeyRoom] = {};
    wchar_t sha1[kKeyRoom] = {};
    unsigned long size = 0;
    const int result = m_setting.Note(
        Op::Storage1LargeFileGetInfo,
        m_clients.First().LargeFileGetInfo(m_clients.Uid().c_str(), file.key.c_str(), name, kKeyRoom, size, md5, sha1));
    m_setting.Require(result != Result::Ok ||
                          (std::wstring_view(name) == std::wstring_view(file.name) && size == file.content.size &&
                           std::wstring_view(md5).find(Md5Of(file.content.Bytes(), 4096)) != std::wstring_view::npos),
                      "CFileStorage::LargeFileGetInfo gave other facts");
    return result;
}

void DepotTasks::LookAt()
{
    if (const Stored* const file = m_files.Pick(m_setting.random, State::Live))
    {
        GetInfo(*file);
    }
    double total = 0;
    double used = 0;
    double left = 0;
    if (m_setting.Note(Op::Storage1LargeFileDepotInfo, m_clients.First().LargeFileDepotInfo(total, used, left)) ==
        Result::Ok)
    {
        m_setting.Require(total == kQuota && used + left == total, "CFileStorage::LargeFileDepotInfo gave other facts");
    }
}

void DepotTasks::Renew()
{
    if (const Stored* const file = m_files.Pick(m_setting.random, State::Live))
    {
        m_setting.Note(Op::Storage1LargeFileRenewTime, m_clients.First().LargeFileRenewTime(file->key.c_str()));
    }
}

void DepotTasks::Remove()
{
    Stored* const file = m_files.Pick(m_setting.random, State::Live);
    if (file == nullptr)
    {
        return;
    }
    file->state = State::Unknown;
    const int result =
        m_setting.Turn(Op::Storage1LargeFileRemove)
            ? m_setting.Note(Op::Storage1LargeFileRemove, m_clients.First().LargeFileRemove(file->key.c_str()))
            : m_setting.Note(Op::Storage2LargeFileRemove, m_clients.Second().LargeFileRemove(file->key.c_str()));
    if (result == Result::Ok)
    {
        file->state = State::Gone;
    }
}

void DepotTasks::List()
{
    std::vector<LargeFileInfo> listed;
    if (m_setting.Note(Op::Storage1LargeFileGetList, m_clients.First().LargeFileGetList(listed)) != Result::Ok)
    {
        return;
    }
    for (const Stored& file : m_files.Entries())
    {
        const bool isListed = std::ranges::any_of(
            listed, [&](const LargeFileInfo& info) { return std::wstring_view(file.key) == info.fkey; });
        m_setting.Require(isListed || !file.Is(State::Live), "the depot's listing lacks " + Narrow(file.name));
        m_setting.Require(!isListed || !file.Is(State::Gone),
                          "the depot's listing has the deleted " + Narrow(file.name));
    }
}

/// The digests of a local file, and of the same bytes in memory in pieces of any size.
void DepotTasks::CheckDigests() const
{
    const Content content = m_setting.NewContent();
    const std::string bytes = content.Bytes();
    const Setting::LocalFile local(m_setting, L"digested");
    local.Write(content);
    unsigned long size = 0;
    wchar_t md5[33] = {};
    wchar_t sha1[41] = {};
    m_clients.First().FileGetChecksum(m_setting.folder.c_str(), L"digested", size, md5, sha1);
    m_setting.Note(Op::Md5Init, Result::Ok);
    m_setting.Note(Op::Md5Append, Result::Ok);
    const std::wstring own = Md5Of(bytes, 1 + Below(m_setting.random, bytes.size() + 1));
    m_setting.NoteRight(Op::Md5Finish, own == Md5Of(bytes, bytes.size() + 1), "MD5 in pieces");
    const bool isRight = content.size == 0 ? md5[0] == L'\0' && sha1[0] == L'\0'
                                           : own == md5 && std::wcslen(sha1) == 40 && size == content.size;
    m_setting.NoteRight(Op::Storage1FileGetChecksum, isRight, "CFileStorage::FileGetChecksum");
}

void DepotTasks::Verify()
{
    int generation = 0;
    List();
    for (const Stored& file : m_files.Entries())
    {
        const std::string name = "the depot's file " + Narrow(file.name);
        if (file.Is(State::Unknown))
        {
            ++m_setting.verdict.uncertain;
        }
        else if (file.Is(State::Live))
        {
            generation = generation % kGenerations + 1;
            const bool isThere = GetInfo(file) == Result::Ok && IsDownloaded(file, generation);
            m_setting.VerifyFile(file.content, isThere, name);
        }
        else
        {
            m_setting.VerifyDeletion(GetInfo(file) != Result::Ok, name);
        }
    }
}

} // namespace quorvex::soak
