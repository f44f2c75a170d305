#pragma once

#include <cstddef>
#include <string_view>

namespace quorvex
{

/// The two halves of a service's base URL.
struct BaseUrl
{
    /// Scheme and host, up to and including the "/" behind them when there is one.
    std::wstring_view server;
    /// The path without its leading "/" and without one trailing "/"; the same goes before every request's path.
    std::wstring_view prefix;
    /// Where the first half ends, in characters.
    std::size_t serverEnd;
};

BaseUrl SplitBaseUrl(std::wstring_view url);

} // namespace quorvex
