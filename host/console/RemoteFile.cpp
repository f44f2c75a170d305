#include "RemoteFile.h"

#include "Failure.h"
#include "Paths.h"
#include "Text.h"

#include <quorvex/Results.h>

#include <algorithm>
#include <array>

namespace quorvex::console
{
namespace
{

/// @return the text when it is an MD5, in lowercase; otherwise an empty text
std::string AsDigest(std::string text)
{
    if (!text.empty() && text.back() == '"')
        text.pop_back();
    const auto lower = [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c + ('a' - 'A')) : c; };
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text.size() == 32 && text.find_first_not_of("0123456789abcdef") == std::string::npos ? text : std::string();
}

/// Takes what the module tells of a file.
struct Told
{
    static constexpr unsigned long kRoom = 1024;

    std::array<wchar_t, kRoom> name{};
    std::array<wchar_t, kRoom> second{};
    unsigned long size = 0;

    RemoteFile Of(const std::wstring& key) const
    {
        std::wstring stated = RepairedName(name.data());
        // A header that closes the quotation gives its mark along with the name.
        if (!stated.empty() && stated.back() == L'"')
            stated.pop_back();
        return {SafeName(stated, key), size, AsDigest(ToUtf8(second.data())), ToUtf8(stated)};
    }
};

} // namespace

RemoteFile AskAbout(const netdisk::CNetDisk& disk, const std::wstring& key, const std::string& what)
{
    Told told;
    Check({disk.LargeFileGetInfo(key.c_str(), told.name.data(), Told::kRoom, told.size, told.second.data()),
           "LargeFileGetInfo"},
          what);
    return told.Of(key);
}

RemoteFile AskAbout(Storage& storage, const std::wstring& uid, const std::wstring& key, const std::string& what)
{
    Told told;
    // The module tells an expired session by the same result as every other refusal.
    Check({storage.Run(
               [&](const CFileStorage& depot) {
                   return depot.LargeFileGetInfo(uid.c_str(), key.c_str(), told.name.data(), Told::kRoom, told.size,
                                                 told.second.data(), nullptr);
               },
               Result::RangeAnswerInvalid),
           "LargeFileGetInfo"},
          what);
    return told.Of(key);
}

RemoteFile SharedFile(const FileEntry& entry)
{
    return {SafeName(Wide(entry.name), Wide(entry.key)), entry.size, AsDigest(entry.md5), entry.name};
}

bool IsSameFile(const RemoteFile& remote, std::uint64_t size, const std::string& md5, const std::string& what)
{
    if (remote.size != size)
        throw Failure(what + ": it has " + std::to_string(size) + " bytes here and " + std::to_string(remote.size) +
                      " on the server");
    if (!remote.md5.empty() && remote.md5 != md5)
        throw Failure(what + ": its MD5 is " + md5 + " here and " + remote.md5 + " on the server");
    return !remote.md5.empty();
}

} // namespace quorvex::console
