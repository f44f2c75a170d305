#include "common/QueryText.h"

#include <charconv>
#include <optional>

namespace quorvex::services
{

namespace
{

std::string_view FindValue(std::string_view target, std::string_view name)
{
    std::size_t start = target.find('?');
    while (start != std::string_view::npos)
    {
        const std::string_view parameter = target.substr(start + 1);
        if (parameter.starts_with(name) && parameter.substr(name.size()).starts_with('='))
        {
            return parameter.substr(name.size() + 1);
        }
        start = target.find('&', start + 1);
    }
    return {};
}

std::optional<char> EscapedByte(std::string_view text)
{
    unsigned char value = 0;
    if (text.size() < 3 || text[0] != '%')
    {
        return std::nullopt;
    }
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 3, value, 16);
    if (error != std::errc() || end != text.data() + 3)
    {
        return std::nullopt;
    }
    return static_cast<char>(value);
}

} // namespace

std::string QueryValue(const httplib::Request& request, std::string_view name)
{
    const std::string_view value = FindValue(request.target, name);
    return Unescape(value.substr(0, value.find('&')));
}

std::string LastQueryValue(const httplib::Request& request, std::string_view name)
{
    return Unescape(FindValue(request.target, name));
}

std::string Unescape(std::string_view text)
{
    std::string plain;
    while (!text.empty())
    {
        const auto escaped = EscapedByte(text);
        plain += escaped.value_or(text[0]);
        text.remove_prefix(escaped ? 3 : 1);
    }
    return plain;
}

} // namespace quorvex::services
