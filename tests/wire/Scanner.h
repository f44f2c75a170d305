#pragma once

#include "wire/Pattern.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

namespace wire
{

/// Reads the arguments and values of a case from left to right.
class Scanner
{
public:
    explicit Scanner(std::string_view raw) : m_rest(raw) {}

    bool atEnd()
    {
        skipBlanks();
        return m_rest.empty();
    }

    bool isAt(std::string_view token)
    {
        skipBlanks();
        return m_rest.starts_with(token);
    }

    bool accept(std::string_view token)
    {
        if (!isAt(token))
            return false;
        m_rest.remove_prefix(token.size());
        return true;
    }

    void expect(std::string_view token)
    {
        if (!accept(token))
            throw CaseError("expected " + std::string(token) + " before: " + std::string(m_rest));
    }

    /// The inside of a quoted text, its escapes left as they are.
    std::string_view quoted()
    {
        expect("\"");
        std::size_t end = 0;
        while (end < m_rest.size() && m_rest[end] != '"')
            end += m_rest[end] == '\\' ? 2 : 1;
        if (end >= m_rest.size())
            throw CaseError("a text without an end");
        const std::string_view inside = m_rest.substr(0, end);
        m_rest.remove_prefix(end + 1);
        return inside;
    }

    std::string word()
    {
        skipBlanks();
        const auto isPart = [](unsigned char c) { return c < 0x80 && (std::isalnum(c) != 0 || c == '-' || c == '_'); };
        const auto end = std::ranges::find_if_not(m_rest, isPart);
        std::string found(m_rest.begin(), end);
        if (found.empty())
            throw CaseError("expected a name or a number before: " + std::string(m_rest));
        m_rest.remove_prefix(found.size());
        return found;
    }

    /// The 3 of 3*"text"; 1 where there is none.
    std::size_t repetition()
    {
        if (isAt("\"") || isAt("{"))
            return 1;
        const long long count = number();
        expect("*");
        return static_cast<std::size_t>(count);
    }

    long long number()
    {
        const std::string digits = word();
        char* end = nullptr;
        const long long value = std::strtoll(digits.c_str(), &end, 0);
        if (*end != '\0')
            throw CaseError("not a number: " + digits);
        return value;
    }

private:
    void skipBlanks() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(' '), m_rest.size())); }

    std::string_view m_rest;
};

} // namespace wire
