#include "Paths.h"

#include "Failure.h"
#include "Text.h"

#include <algorithm>
#include <cstdint>
#include <cwctype>
#include <optional>
#include <system_error>

#include <windows.h>

namespace quorvex::console
{
namespace
{

constexpr std::size_t kLongestPath = MAX_PATH - 1;

/// The bytes that the system's 8-bit encoding has for a text; nothing when a character has none.
std::optional<std::string> AnsiBytes(const std::wstring& text)
{
    if (GetACP() == CP_UTF8)
        return ToUtf8(text);
    const int length = static_cast<int>(text.size());
    BOOL lost = FALSE;
    const int size = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.data(), length, nullptr, 0, nullptr, &lost);
    if (lost != FALSE || size <= 0)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

/// The bytes of a text whose characters are one byte each; nothing when one is not.
std::optional<std::string> LatinBytes(const std::wstring& text)
{
    std::string bytes;
    for (const wchar_t character : text)
    {
        if (character > 0xFF)
            return std::nullopt;
        bytes += static_cast<char>(character);
    }
    return bytes;
}

bool IsForbidden(wchar_t character)
{
    // Some of the control characters steer a terminal.
    return character < L' ' || (character >= 0x7F && character < 0xA0) ||
           std::wstring_view(L"<>:\"/\\|?*").find(character) != std::wstring_view::npos;
}

/// Whether every file system takes it: some count UTF-16 units, some bytes of UTF-8, which are never fewer.
bool IsNameShort(const std::wstring& name)
{
    constexpr std::size_t kLongestName = 255;
    return ToUtf8(name).size() <= kLongestName;
}

/// Tells names that begin alike apart, and is the same in every run: 32 bits of FNV-1a.
std::wstring HashOf(const std::wstring& text)
{
    std::uint32_t hash = 2166136261u;
    for (const wchar_t character : text)
        hash = (hash ^ character) * 16777619u;
    std::wstring digits;
    for (int shift = 28; shift >= 0; shift -= 4)
        digits += L"0123456789abcdef"[hash >> shift & 15];
    return digits;
}

bool IsDevice(const std::wstring& name)
{
    std::wstring stem = name.substr(0, name.find(L'.'));
    while (!stem.empty() && stem.back() == L' ')
        stem.pop_back();
    std::transform(stem.begin(), stem.end(), stem.begin(), [](wchar_t c) { return std::towupper(c); });
    for (const wchar_t* const device : {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"})
        if (stem == device)
            return true;
    if (stem.size() != 4 || (!stem.starts_with(L"COM") && !stem.starts_with(L"LPT")))
        return false;
    return std::wstring_view(L"0123456789\xB9\xB2\xB3").find(stem[3]) != std::wstring_view::npos;
}

/// @return an empty text when nothing is left of the name
std::wstring Harmless(std::wstring name)
{
    std::replace_if(name.begin(), name.end(), IsForbidden, L'_');
    // The system drops dots and blanks at a name's end, which would make another name of it.
    while (!name.empty() && (name.back() == L'.' || name.back() == L' '))
        name.pop_back();
    return IsDevice(name) ? L'_' + name : name;
}

bool IsSameName(const std::wstring& one, const std::wstring& other)
{
    return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

} // namespace

LocalPath SplitPath(const std::filesystem::path& path)
{
    if (path.empty())
        throw Failure("an empty name is not a file's");
    const std::filesystem::path whole = std::filesystem::absolute(path).lexically_normal().make_preferred();
    if (!whole.has_filename())
        throw Failure(ToUtf8(whole.wstring()) + " is not a file");
    if (whole.wstring().size() > kLongestPath)
        throw Failure("the path of " + ToUtf8(whole.filename().wstring()) + " is longer than " +
                      std::to_string(kLongestPath) + " characters");
    std::wstring folder = whole.parent_path().wstring();
    while (!folder.empty() && folder.back() == L'\\')
        folder.pop_back();
    return {folder, whole.filename().wstring()};
}

std::filesystem::path WithEnding(const std::filesystem::path& path, std::wstring_view ending)
{
    std::wstring stem = path.filename().wstring();
    std::wstring tail(ending);
    if (!IsNameShort(stem + tail))
        tail = L'~' + HashOf(stem) + tail;
    while (!stem.empty() && !IsNameShort(stem + tail))
        stem.pop_back();
    // Half a character is no name's end.
    if (!stem.empty() && IS_HIGH_SURROGATE(stem.back()))
        stem.pop_back();
    return path.parent_path() / (stem + tail);
}

std::wstring RepairedName(const std::wstring& name)
{
    for (const auto& bytes : {AnsiBytes(name), LatinBytes(name)})
        if (bytes)
            if (const auto meant = ToWide(*bytes))
                return *meant;
    return name;
}

std::wstring SafeName(std::wstring name, const std::wstring& fallback)
{
    // A header that closes the quotation gives its mark along with the name.
    if (!name.empty() && name.back() == L'"')
        name.pop_back();
    // The fallback may be the server's as well.
    for (const std::wstring& each : {Harmless(name), Harmless(fallback)})
        if (!each.empty())
            return each;
    return L"file";
}

std::vector<std::wstring> DistinctNames(std::vector<std::wstring> names)
{
    for (auto current = names.begin(); current != names.end(); ++current)
    {
        const std::filesystem::path given = *current;
        const auto isTaken = [&](const std::wstring& other) { return IsSameName(other, *current); };
        for (int number = 2; std::any_of(names.begin(), current, isTaken); ++number)
            *current = given.stem().wstring() + L" (" + std::to_wstring(number) + L')' + given.extension().wstring();
    }
    return names;
}

std::filesystem::path TargetOf(const std::string& out, const std::wstring& serverName)
{
    const std::filesystem::path path = Wide(out.empty() ? "." : out);
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(path, error) || !path.has_filename();
    return SplitPath(isFolder ? path / serverName : path).Whole();
}

DownloadPlaces::DownloadPlaces(const std::string& out, std::size_t count) : m_out(out)
{
    std::error_code error;
    if (count > 1 && !out.empty() && !std::filesystem::is_directory(Wide(out), error))
        throw Failure(out + " is no folder, and there are " + std::to_string(count) + " files");
}

std::filesystem::path DownloadPlaces::For(const std::wstring& serverName)
{
    m_names.push_back(serverName);
    m_names = DistinctNames(std::move(m_names));
    return TargetOf(m_out, m_names.back());
}

std::filesystem::path DownloadPlaces::Beside(const std::wstring& name) const
{
    return TargetOf(m_out, name).parent_path() / name;
}

} // namespace quorvex::console
