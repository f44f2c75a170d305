#include "HeaderValues.h"

#include "BoundedText.h"

#include <cstddef>

namespace quorvex
{

namespace
{

std::wstring_view From(std::wstring_view text, std::size_t position)
{
    return position < text.size() ? text.substr(position) : std::wstring_view();
}

/// @param parameters "name=value", with or without further ones behind a semicolon
std::wstring_view ParameterValue(std::wstring_view parameters)
{
    const std::wstring_view first = parameters.substr(0, parameters.find(L';'));
    const std::size_t equals = first.find(L'=');
    return equals == std::wstring_view::npos ? first : first.substr(equals + 1);
}

} // namespace

ContentDisposition ParseContentDisposition(std::wstring_view value)
{
    static constexpr std::size_t kNameStart = std::wstring_view(L"attachment;filename=\"").size();
    static constexpr std::size_t kSecondValueOffset = std::wstring_view(L";md5=").size();

    // A semicolon in the name's first place belongs to the name.
    const std::size_t nameEnd = value.find(L';', kNameStart + 1);
    if (nameEnd == std::wstring_view::npos)
    {
        return {From(value, kNameStart), {}, {}};
    }
    const std::wstring_view second = From(value, nameEnd + kSecondValueOffset);
    const std::size_t secondEnd = second.find(L';');
    return {value.substr(kNameStart, nameEnd - kNameStart), second.substr(0, secondEnd),
            secondEnd == std::wstring_view::npos ? std::wstring_view() : ParameterValue(From(second, secondEnd + 1))};
}

std::uint32_t ParseContentRangeTotal(std::wstring_view value)
{
    static constexpr std::size_t kTotalStart = std::wstring_view(L"bytes 0-0/").size();

    std::wstring_view digits = From(value, kTotalStart);
    while (!digits.empty() && (digits.front() == L' ' || (digits.front() >= L'\t' && digits.front() <= L'\r')))
    {
        digits.remove_prefix(1);
    }
    const bool isNegative = digits.starts_with(L'-');
    if (isNegative || digits.starts_with(L'+'))
    {
        digits.remove_prefix(1);
    }
    std::uint32_t total = 0;
    for (; !digits.empty() && digits.front() >= L'0' && digits.front() <= L'9'; digits.remove_prefix(1))
    {
        total = total * 10 + static_cast<std::uint32_t>(digits.front() - L'0');
    }
    return isNegative ? 0U - total : total;
}

std::wstring RangeHeader(std::uint32_t start, std::uint32_t size)
{
    WideText<100> header;
    header << L"Range: bytes=" << start << L"-" << start + size - 1;
    return header.c_str();
}

} // namespace quorvex
