#include "FileName.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quorvex
{

namespace
{

constexpr std::array<std::wstring_view, 6> kDevices = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
constexpr std::array<std::wstring_view, 2> kNumberedDevices = {L"COM", L"LPT"};
// Superscript digits count as digits here.
constexpr std::wstring_view kDeviceNumbers = L"0123456789\u00B9\u00B2\u00B3";

wchar_t ToUpper(wchar_t character)
{
    return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A') : character;
}

bool EqualsIgnoringCase(std::wstring_view text, std::wstring_view upper)
{
    return std::ranges::equal(text, upper, {}, ToUpper);
}

/// The system takes a device's name for the device whatever extension follows.
bool IsDevice(std::wstring_view name)
{
    std::wstring_view stem = name.substr(0, name.find(L'.'));
    stem = stem.substr(0, stem.find_last_not_of(L' ') + 1);

    const auto isStem = [&](std::wstring_view device) { return EqualsIgnoringCase(stem, device); };
    if (std::ranges::any_of(kDevices, isStem))
    {
        return true;
    }
    if (stem.empty() || kDeviceNumbers.find(stem.back()) == std::wstring_view::npos)
    {
        return false;
    }
    stem.remove_suffix(1);
    return std::ranges::any_of(kNumberedDevices, isStem);
}

} // namespace

bool StaysInFolder(std::wstring_view name)
{
    // Of dots and blanks alone the system makes a folder, this one or the one above it.
    const bool isFolder = !name.empty() && name.find_first_not_of(L". ") == std::wstring_view::npos;
    return !isFolder && name.find_first_of(L"\\/:") == std::wstring_view::npos && !IsDevice(name);
}

} // namespace quorvex
