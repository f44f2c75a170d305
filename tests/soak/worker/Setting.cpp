#include "Setting.h"

#include <algorithm>

namespace quorvex::soak
{

std::wstring Setting::NewName(const wchar_t* kind, const wchar_t* ending)
{
    return kind + std::to_wstring(number) + L"-" + std::to_wstring(++names) + ending;
}

std::size_t Setting::Turn(Op operation, std::size_t ways)
{
    return (turns[static_cast<std::size_t>(operation)]++ + static_cast<std::size_t>(number)) % ways;
}

Content Setting::NewContent()
{
    constexpr std::uint32_t kibibyte = 1024;
    const std::uint64_t seed = random();
    const std::size_t chance = Below(random, 1000);
    std::size_t most = 256 * kibibyte;
    if (chance < 5)
    {
        most = 4096 * kibibyte;
    }
    else if (chance < 600)
    {
        most = 16 * kibibyte;
    }
    const std::size_t size = chance >= 980 ? 0 : Below(random, most + 1);
    return {seed, static_cast<std::uint32_t>(size)};
}

bool Setting::Check(const std::string& come, const Content& stored, bool mayEndEarly, const std::string& what) const
{
    const Match match = Compare(come, stored.Bytes());
    if (match == Match::Whole)
    {
        return true;
    }
    if (match == Match::Beginning && mayEndEarly && !tally.IsCalm())
    {
        tally.NoteShort();
        return false;
    }
    Require(false, what + " gave " + std::to_string(come.size()) + " bytes of " + std::to_string(stored.size) +
                       (match == Match::Beginning ? ", its beginning" : ", and not its own"));
    return false;
}

void Setting::Verify(std::atomic<std::uint64_t>& all, std::atomic<std::uint64_t>& found, bool isFound,
                     const std::string& what) const
{
    ++all;
    found += isFound ? 1 : 0;
    Require(isFound, what);
}

void Setting::VerifyFile(const Content& content, bool isFound, const std::string& what) const
{
    Verify(verdict.files, verdict.filesVerified, isFound, what + " was acknowledged and is not there as it was stored");
    verdict.bytesVerified += isFound ? content.size : 0;
}

void Setting::VerifyDeletion(bool isFound, const std::string& what) const
{
    Verify(verdict.deletions, verdict.deletionsVerified, isFound,
           what + " was acknowledged as deleted and is there again");
}

void Setting::VerifyOther(bool isFound, const std::string& what) const
{
    Verify(verdict.others, verdict.othersVerified, isFound, what + " is not as it was acknowledged");
}

bool IsAscii(std::wstring_view text)
{
    return std::ranges::all_of(text, [](wchar_t letter) { return letter < 128; });
}

std::string Narrow(std::wstring_view text)
{
    std::string narrow;
    std::ranges::transform(text, std::back_inserter(narrow),
                           [](wchar_t letter) { return letter < 128 ? static_cast<char>(letter) : '?'; });
    return narrow;
}

} // namespace quorvex::soak
