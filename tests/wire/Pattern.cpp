#include "wire/Pattern.h"

#include "support/LogCapture.h"
#include "support/TempFolder.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <utility>

namespace wire
{
namespace
{

constexpr std::size_t boundaryLength = 40;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBoundary(std::string_view text)
{
    return text.size() == boundaryLength &&
           std::ranges::all_of(text, [](unsigned char c) { return c < 0x80 && std::isalnum(c) != 0; });
}

template <typename Number>
std::optional<Number> number(std::string_view text, int base = 10)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc{} || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

std::string utf8(unsigned long codePoint)
{
    const auto tail = [&](int shift) { return static_cast<char>(0x80 | (codePoint >> shift & 0x3F)); };
    if (codePoint < 0x80)
        return {static_cast<char>(codePoint)};
    if (codePoint < 0x800)
        return {static_cast<char>(0xC0 | codePoint >> 6), tail(0)};
    if (codePoint < 0x10000)
        return {static_cast<char>(0xE0 | codePoint >> 12), tail(6), tail(0)};
    return {static_cast<char>(0xF0 | codePoint >> 18), tail(12), tail(6), tail(0)};
}

/// Reads one escape, from behind its backslash, and moves behind it.
std::string unescape(std::string_view raw, std::size_t& at)
{
    static constexpr std::string_view names = "rnt0";
    static constexpr std::string_view values{"\r\n\t\0", 4};
    if (at == raw.size())
        throw CaseError("a backslash at the end");
    const char name = raw[at++];
    if (const auto index = names.find(name); index != std::string_view::npos)
        return {values[index]};
    if (name == '\\' || name == '"' || name == '$')
        return {name};

    const std::size_t digits = name == 'x' ? 2 : name == 'u' ? 4 : name == 'U' ? 8 : 0;
    const auto code = number<unsigned long>(raw.substr(at, digits), 16);
    if (digits == 0 || !code || at + digits > raw.size())
        throw CaseError(std::string("unknown escape \\") + name);
    at += digits;
    return name == 'x' ? std::string{static_cast<char>(*code)} : utf8(*code);
}

std::string repeated(std::size_t count, std::string_view what)
{
    std::string text;
    text.reserve(count * what.size());
    for (std::size_t i = 0; i < count; ++i)
        text += what;
    return text;
}

} // namespace

Pattern::Pattern(std::string_view raw, const Variables& variables)
{
    std::string literal;
    for (std::size_t at = 0; at < raw.size();)
    {
        const char c = raw[at++];
        if (c == '\\')
        {
            literal += unescape(raw, at);
            continue;
        }
        if (c != '$' || at == raw.size() || raw[at] != '{')
        {
            literal += c;
            continue;
        }
        const auto end = raw.find('}', at);
        if (end == std::string_view::npos)
            throw CaseError("a placeholder without an end");
        appendBytes(std::exchange(literal, {}));
        appendPlaceholder(raw.substr(at + 1, end - at - 1), variables);
        at = end + 1;
    }
    appendBytes(literal);
}

void Pattern::appendPlaceholder(std::string_view name, const Variables& variables)
{
    static const std::map<std::string_view, Kind> kinds{
        {"length", Kind::Length}, {"boundary", Kind::Boundary},    {"any", Kind::Any},
        {"number", Kind::Number}, {"source-tag", Kind::SourceTag},
    };
    static constexpr std::string_view systemError = "system-error";
    static constexpr std::string_view patternBytes = "pattern:";

    if (const auto kind = kinds.find(name); kind != kinds.end())
        m_tokens.push_back({kind->second, {}});
    else if (const auto variable = variables.find(name); variable != variables.end())
        appendBytes(variable->second);
    else if (name.starts_with(systemError))
        appendSystemError(name.substr(systemError.size()));
    else if (name.starts_with(patternBytes))
        appendBytes(support::patternBytes(number<std::size_t>(name.substr(patternBytes.size())).value_or(0)));
    else if (const auto star = name.find('*'); star != std::string_view::npos)
    {
        const auto count = number<std::size_t>(name.substr(0, star));
        if (!count)
            throw CaseError("no number before the star: " + std::string(name));
        appendBytes(repeated(*count, expand(name.substr(star + 1), variables)));
    }
    else
        throw CaseError("unknown placeholder " + std::string(name));
}

void Pattern::appendSystemError(std::string_view code)
{
    appendBytes("GetLastError()=");
    if (code.starts_with(':'))
        appendBytes(code.substr(1));
    else
        m_tokens.push_back({Kind::Number, {}});
    appendBytes(" : ");
    m_tokens.push_back({Kind::Any, {}});
    m_tokens.push_back({Kind::SourceTag, {}});
    appendBytes(":");
    m_tokens.push_back({Kind::Number, {}});
}

void Pattern::append(const Pattern& other)
{
    m_tokens.insert(m_tokens.end(), other.m_tokens.begin(), other.m_tokens.end());
}

void Pattern::appendBytes(std::string_view bytes)
{
    if (!bytes.empty())
        m_tokens.push_back({Kind::Literal, std::string(bytes)});
}

void Pattern::appendPieceBreak()
{
    m_tokens.push_back({Kind::PieceBreak, {}});
}

void Pattern::resolveLength()
{
    std::string seen;
    std::size_t behind = 0;
    std::size_t headEnd = std::string::npos;
    for (const Token& token : m_tokens)
    {
        const std::size_t size = token.kind == Kind::Boundary ? boundaryLength : token.text.size();
        if (headEnd != std::string::npos)
        {
            behind += size;
            continue;
        }
        seen += token.text;
        headEnd = seen.find("\r\n\r\n");
        if (headEnd != std::string::npos)
            behind = seen.size() - headEnd - 4;
    }
    for (Token& token : m_tokens)
        if (token.kind == Kind::Length)
            token = {Kind::Literal, std::to_string(behind)};
}

bool Pattern::matchFrom(std::size_t token, std::string_view bytes, std::string& boundary) const
{
    for (; token < m_tokens.size(); ++token)
    {
        const Token& expected = m_tokens[token];
        switch (expected.kind)
        {
        case Kind::Literal:
            if (!bytes.starts_with(expected.text))
                return false;
            bytes.remove_prefix(expected.text.size());
            break;
        case Kind::Boundary:
            if (boundary.empty() && isBoundary(bytes.substr(0, boundaryLength)))
                boundary = bytes.substr(0, boundaryLength);
            if (boundary.empty() || !bytes.starts_with(boundary))
                return false;
            bytes.remove_prefix(boundaryLength);
            break;
        case Kind::Number:
        {
            const auto digits = static_cast<std::size_t>(std::ranges::find_if_not(bytes, isDigit) - bytes.begin());
            if (digits == 0)
                return false;
            bytes.remove_prefix(digits);
            break;
        }
        case Kind::Any:
        case Kind::SourceTag:
            for (std::size_t length = 0; length <= bytes.size(); ++length)
                if ((expected.kind == Kind::Any || support::isSourceTag(bytes.substr(0, length))) &&
                    matchFrom(token + 1, bytes.substr(length), boundary))
                    return true;
            return false;
        case Kind::Length:
        case Kind::PieceBreak:
            throw CaseError("a placeholder that cannot stand here");
        }
    }
    return bytes.empty();
}

Pattern::Match Pattern::match(std::string_view bytes) const
{
    Match result;
    result.matched = matchFrom(0, bytes, result.boundary);
    return result;
}

std::string Pattern::bytes() const
{
    std::string all;
    for (const std::string& piece : pieces())
        all += piece;
    return all;
}

std::vector<std::string> Pattern::pieces() const
{
    std::vector<std::string> all(1);
    for (const Token& token : m_tokens)
    {
        if (token.kind == Kind::PieceBreak)
            all.emplace_back();
        else if (token.kind == Kind::Literal)
            all.back() += token.text;
        else
            throw CaseError("a placeholder that cannot stand here");
    }
    return all;
}

std::string Pattern::text(std::string_view boundary) const
{
    std::string text;
    for (const Token& token : m_tokens)
    {
        switch (token.kind)
        {
        case Kind::Literal:
            text += token.text;
            break;
        case Kind::Boundary:
            text += boundary.empty() ? "${boundary}" : boundary;
            break;
        case Kind::Any:
            text += "${any}";
            break;
        case Kind::Number:
            text += "${number}";
            break;
        case Kind::SourceTag:
            text += "${source-tag}";
            break;
        case Kind::Length:
        case Kind::PieceBreak:
            break;
        }
    }
    return text;
}

std::string expand(std::string_view raw, const Variables& variables)
{
    return Pattern(raw, variables).bytes();
}

} // namespace wire
