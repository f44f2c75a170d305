#pragma once

#include "BoundedText.h"

#include <string_view>

namespace quorvex
{

/// A request's path below the base URL, with its query.
using ObjectPath = WideText<256>;

/// @param format its last "%s" stands for the value; null is an empty one
inline ObjectPath FormatObjectPath(const wchar_t* format, const wchar_t* value)
{
    static constexpr std::wstring_view kPlaceholder = L"%s";

    const std::wstring_view text = format != nullptr ? format : L"";
    const std::size_t place = text.rfind(kPlaceholder);
    ObjectPath path;
    path << text.substr(0, place);
    if (place != std::wstring_view::npos)
    {
        path << value << text.substr(place + kPlaceholder.size());
    }
    return path;
}

} // namespace quorvex
