#include "ShareTasks.h"

#include "Blocks.h"
#include "ModuleVector.h"

#include <algorithm>

namespace quorvex::soak
{

namespace
{

constexpr unsigned long kDay = 86400;
constexpr unsigned long kAlive = 1; // the listing of the codes that have not ended
constexpr std::size_t kMostCodes = 16;
constexpr std::size_t kMostShared = 3;

} // namespace

ShareTasks::ShareTasks(Setting& setting, DiskTasks& owner, DiskTasks& guest)
    : m_setting(setting), m_owner(owner), m_guest(guest), m_codes(setting.mostFiles)
{
}

void ShareTasks::Make()
{
    if (m_codes.IsFull() || m_codes.Count(State::Live) >= kMostCodes)
    {
        return Delete();
    }
    std::vector<netdisk::_FileInfo> files;
    const std::size_t wanted = 1 + Below(m_setting.random, kMostShared);
    while (files.size() < wanted)
    {
        const Stored* const file = m_owner.Files().Pick(m_setting.random, State::Live);
        if (file == nullptr)
        {
            return m_owner.Upload();
        }
        std::copy_n(file->key.c_str(), 33, files.emplace_back().fkey);
    }
    wchar_t code[33] = {};
    if (m_setting.Note(Op::DiskPcodeCreate, m_owner.Client().PcodeCreate(files, kDay, code, 33)) == Result::Ok)
    {
        m_codes.Add({State::Live, {}, Text<66>(code), {}, {}});
    }
}

Stored* ShareTasks::PickCode()
{
    return m_codes.Pick(m_setting.random, State::Live);
}

const Stored* ShareTasks::OriginalOf(const netdisk::_FileInfo& listed)
{
    const auto& files = m_owner.Files().Entries();
    const auto found = std::ranges::find_if(
        files, [&](const Stored& file) { return file.isPlaced && std::wstring_view(file.name) == listed.name; });
    return found == files.end() ? nullptr : &*found;
}

void ShareTasks::Use()
{
    const Stored* const code = PickCode();
    if (code == nullptr)
    {
        return Make();
    }
    const FileVector listed(m_setting);
    if (m_setting.Note(Op::DiskPcodeInfo, m_guest.Client().PcodeInfo(code->key.c_str(), *listed)) != Result::Ok ||
        (*listed).empty())
    {
        return;
    }
    const netdisk::_FileInfo& file = (*listed)[Below(m_setting.random, (*listed).size())];
    const Stored* const original = OriginalOf(file);
    if (original == nullptr)
    {
        return;
    }
    m_setting.Require(file.size == original->content.size, "CNetDisk::PcodeInfo gave another size");
    Download(*code, file, *original);
    if (m_guest.Files().Count(State::Live) < kMostLive && Chance(m_setting.random, 50) &&
        m_setting.Note(Op::DiskPcodeSave, m_guest.Client().PcodeSave(code->key.c_str(), L"0")) == Result::Ok)
    {
        m_guest.TakeIn(*original);
    }
}

void ShareTasks::Download(const Stored& code, const netdisk::_FileInfo& listed, const Stored& original) const
{
    const netdisk::CNetDisk& client = m_guest.Client();
    if (m_setting.Turn(Op::DiskPcodeDown))
    {
        const auto download = [&](const wchar_t* localName) {
            return m_setting.Note(Op::DiskPcodeDown,
                                  client.PcodeDown(code.key.c_str(), listed.fkey, m_setting.folder.c_str(), localName));
        };
        m_guest.IsDownloaded(original, download, "CNetDisk::PcodeDown");
        return;
    }
    const auto read = [&](unsigned long position, void* room, unsigned long& size) {
        return m_setting.Note(Op::DiskLargePcodeDown,
                              client.LargePcodeDown(code.key.c_str(), listed.fkey, position, room, size)) == Result::Ok;
    };
    ReadRanges(m_setting, original.content, read, "CNetDisk::LargePcodeDown");
}

void ShareTasks::Defer()
{
    const Stored* const code = PickCode();
    if (code == nullptr)
    {
        return Make();
    }
    m_setting.Note(Op::DiskPcodeDefer, m_owner.Client().PcodeDefer(code->key.c_str(), kDay));
    m_setting.Require(IsListed(*code), "a listing lacks the share code " + Narrow(code->key));
}

/// Also when the codes could not be listed.
bool ShareTasks::IsListed(const Stored& code) const
{
    const PcodeVector codes(m_setting);
    return m_setting.Note(Op::DiskPcodeList, m_owner.Client().PcodeList(kAlive, *codes)) != Result::Ok ||
           std::ranges::any_of(
               *codes, [&](const netdisk::_PcodeInfo& info) { return std::wstring_view(code.key) == info.pcode; });
}

void ShareTasks::Delete()
{
    Stored* const code = PickCode();
    if (code == nullptr)
    {
        return Make();
    }
    std::vector<netdisk::_PcodeInfo> codes(1);
    std::copy_n(code->key.c_str(), 33, codes.front().pcode);
    code->state = State::Unknown;
    if (m_setting.Note(Op::DiskPcodeDelete, m_owner.Client().PcodeDelete(codes)) == Result::Ok)
    {
        code->state = State::Gone;
    }
}

void ShareTasks::Verify()
{
    for (const Stored& code : m_codes.Entries())
    {
        if (code.Is(State::Unknown))
        {
            ++m_setting.verdict.uncertain;
            continue;
        }
        const FileVector files(m_setting);
        const bool isThere =
            m_setting.Note(Op::DiskPcodeInfo, m_guest.Client().PcodeInfo(code.key.c_str(), *files)) == Result::Ok;
        const std::string name = "the share code " + Narrow(code.key);
        if (code.Is(State::Live))
        {
            m_setting.VerifyOther(isThere && IsListed(code), name);
        }
        else
        {
            m_setting.VerifyDeletion(!isThere, name);
        }
    }
}

} // namespace quorvex::soak
