#include "HeaderValues.h"
#include "Expect.h"
#include "Input.h"

#include "CommonUtil.h"
#include "FileName.h"

#include <algorithm>
#include <array>
#include <string>

using namespace quorvex;
using namespace quorvex::fuzz;

namespace
{

bool IsWithin(std::wstring_view part, std::wstring_view whole)
{
    return part.empty() || (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

void ExpectDisposition(const std::wstring& value)
{
    const ContentDisposition parsed = ParseContentDisposition(value);
    Expect(IsWithin(parsed.fileName, value) && IsWithin(parsed.second, value) && IsWithin(parsed.third, value),
           "the values are pieces of the header");
    Expect(parsed.fileName.empty() || parsed.fileName.substr(1).find(L';') == std::wstring_view::npos,
           "a name ends at a semicolon");
    Expect(parsed.second.find(L';') == std::wstring_view::npos && parsed.third.find(L';') == std::wstring_view::npos,
           "a value ends at a semicolon");
}

/// A header that is put together from values gives them back.
void ExpectDispositionOf(std::wstring name, std::wstring second, std::wstring third)
{
    for (std::wstring* const text : {&name, &second, &third})
    {
        std::erase(*text, L';');
    }
    const std::wstring start = L"attachment;filename=\"" + name;
    const ContentDisposition nameAlone = ParseContentDisposition(start);
    Expect(nameAlone.fileName == name && nameAlone.second.empty() && nameAlone.third.empty(), "a name alone");
    const std::wstring semicolon = L"attachment;filename=\";" + name;
    Expect(ParseContentDisposition(semicolon).fileName == L";" + name,
           "a semicolon in a name's first place is its own");
    if (name.empty())
    {
        return;
    }
    const std::wstring two = start + L";md5=" + second;
    const ContentDisposition twoValues = ParseContentDisposition(two);
    Expect(twoValues.fileName == name && twoValues.second == second && twoValues.third.empty(), "two values");
    for (const std::wstring& rest : {std::wstring(), std::wstring(L";more=1")})
    {
        const std::wstring three = two + L";sha=" + third + rest;
        const ContentDisposition threeValues = ParseContentDisposition(three);
        Expect(threeValues.fileName == name && threeValues.second == second && threeValues.third == third,
               "three values");
    }
}

void ExpectTotal(const std::wstring& text)
{
    ParseContentRangeTotal(text);

    std::wstring digits = text;
    std::erase_if(digits, [](wchar_t unit) { return unit < L'0' || unit > L'9'; });
    std::uint64_t total = 0;
    for (const wchar_t digit : digits)
    {
        total = (total * 10 + static_cast<std::uint64_t>(digit - L'0')) & 0xFFFFFFFFU;
    }
    const std::wstring start = L"bytes 0-0/";
    Expect(ParseContentRangeTotal(start + digits) == total, "a total is read modulo 2^32");
    Expect(ParseContentRangeTotal(start + L" \t+" + digits + L" more") == total, "blanks and a sign go before it");
    Expect(ParseContentRangeTotal(start + L"-" + digits) ==
               ((std::uint64_t{1} << 32) - total) % (std::uint64_t{1} << 32),
           "a negative total");
    Expect(ParseContentRangeTotal(start + L"x" + digits) == 0, "no number");
}

void ExpectRange(std::uint32_t start, std::uint32_t size)
{
    const auto end = static_cast<std::uint32_t>((std::uint64_t{start} + size + 0xFFFFFFFFU) & 0xFFFFFFFFU);
    Expect(RangeHeader(start, size) == L"Range: bytes=" + std::to_wstring(start) + L"-" + std::to_wstring(end),
           "a range's two ends");
}

wchar_t OtherCase(wchar_t unit)
{
    const bool isLetter = (unit >= L'a' && unit <= L'z') || (unit >= L'A' && unit <= L'Z');
    return isLetter ? static_cast<wchar_t>(unit ^ 0x20) : unit;
}

void ExpectFileName(const std::wstring& name)
{
    static const std::array<const wchar_t*, 6> kDevices = {L"nul", L"Con", L"COM1", L"lpt9", L"AUX", L"conin$"};

    const bool stays = StaysInFolder(name);
    std::wstring other = name;
    std::ranges::transform(other, other.begin(), OtherCase);
    Expect(StaysInFolder(other) == stays, "letters' case makes no difference");
    Expect(!stays || name.find_first_of(L"\\/:") == std::wstring::npos, "a path leads elsewhere");
    Expect(!stays || (name != L"." && name != L".."), "a folder is no file");
    for (const wchar_t separator : {L'\\', L'/', L':'})
    {
        Expect(!StaysInFolder(name + separator) && !StaysInFolder(separator + name), "a separator makes a path");
    }
    for (const std::wstring device : kDevices)
    {
        Expect(!StaysInFolder(device + L"." + name) && !StaysInFolder(device + L" ." + name),
               "a device stays one whatever its extension");
    }
    Expect(StaysInFolder(L"x" + name) == (name.find_first_of(L"\\/:") == std::wstring::npos), "a name like any other");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    switch (input.Byte())
    {
    case 'D':
        ExpectDisposition(Utf8ToWide(input.Rest()));
        break;
    case 'd':
    {
        const std::wstring name = Utf8ToWide(input.Text());
        const std::wstring second = Utf8ToWide(input.Text());
        ExpectDispositionOf(name, second, Utf8ToWide(input.Rest()));
        break;
    }
    case 'T':
        ExpectTotal(Utf8ToWide(input.Rest()));
        break;
    case 'R':
    {
        const std::uint32_t start = input.Number32();
        ExpectRange(start, input.Number32());
        break;
    }
    case 'N':
        ExpectFileName(Utf8ToWide(input.Rest()));
        break;
    default:
        return 0;
    }
    return 0;
}
