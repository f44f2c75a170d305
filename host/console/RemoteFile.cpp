#include "RemoteFile.h"

#include "Failure.h"
#include "Paths.h"
#include "Text.h"

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

} // namespace

RemoteFile AskAbout(const netdisk::CNetDisk& disk, const std::wstring& key, const std::string& what)
{
    std::array<wchar_t, 1024> name{};
    std::array<wchar_t, 1024> second{};
    unsigned long size = 0;
    Check(disk.LargeFileGetInfo(key.c_str(), name.data(), static_cast<unsigned long>(name.size()), size, second.data()),
          what);
    return {SafeName(RepairedName(name.data()), key), size, AsDigest(ToUtf8(second.data()))};
}

RemoteFile SharedFile(const FileEntry& entry)
{
    return {SafeName(Wide(entry.name), Wide(entry.key)), entry.size, AsDigest(entry.md5)};
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
