#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::console
{

/// A local file as the module wants it: a folder without a trailing backslash, and a name in it.
struct LocalPath
{
    std::wstring folder;
    std::wstring name;

    std::filesystem::path Whole() const { return folder + L'\\' + name; }
};

/// Makes a path absolute, in the system's spelling, and splits it.
/// @throws Failure when it names no file or is too long for the module
LocalPath SplitPath(const std::filesystem::path& path);

/// The same file with an ending added to its name, which is cut first where the whole would be longer than names can
/// be.
std::filesystem::path WithEnding(const std::filesystem::path& path, std::wstring_view ending);

/// A name from a response header, whose UTF-8 the system has taken for its own 8-bit encoding, as it was meant.
std::wstring RepairedName(const std::wstring& name);

/// A server's name for a file, made fit to be a file name here: one that stays in its folder and names no device.
/// @param fallback taken, made fit as well, when nothing is left of the name
std::wstring SafeName(std::wstring name, const std::wstring& fallback);

/// File names that can be in one folder: of names that the system takes for the same, all but the first get a number.
std::vector<std::wstring> DistinctNames(std::vector<std::wstring> names);

/// Where a download goes: into the folder, or to the file, that the user names.
/// @param out        what the user names; empty is the current folder
/// @param serverName the file's name in a folder
/// @throws Failure as SplitPath
std::filesystem::path TargetOf(const std::string& out, const std::wstring& serverName);

/// Where the downloads of one command go, side by side also when the server has one name for some of them.
class DownloadPlaces
{
public:
    /// @param out   as in TargetOf; several downloads need a folder
    /// @param count how many there will be
    /// @throws Failure
    DownloadPlaces(const std::string& out, std::size_t count);

    std::filesystem::path For(const std::wstring& serverName);

    /// Where something else of that name can lie for a while, in the same folder.
    std::filesystem::path Beside(const std::wstring& name) const;

private:
    std::string m_out;
    std::vector<std::wstring> m_names;
};

} // namespace quorvex::console
