#include "BaseUrl.h"

namespace quorvex
{

BaseUrl SplitBaseUrl(std::wstring_view url)
{
    // Past "http://" or "https://", whichever it is.
    static constexpr std::size_t kBehindScheme = 8;

    const std::size_t slash = url.find(L'/', kBehindScheme);
    if (slash == std::wstring_view::npos)
    {
        return {url, {}, url.size()};
    }
    std::wstring_view prefix = url.substr(slash + 1);
    if (prefix.ends_with(L'/'))
    {
        prefix.remove_suffix(1);
    }
    return {url.substr(0, slash + 1), prefix, slash};
}

} // namespace quorvex
