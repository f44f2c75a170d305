#pragma once

#include <cstddef>

namespace quorvex
{

/// A source file as the log names it: its path below the module's folder, for example ".\src\HttpHelper.cpp".
/// It is made at compile time, so that no path of the building machine gets into the module.
template <std::size_t Size>
struct SourceTag
{
    char text[Size + 2] = {};

    consteval explicit SourceTag(const char (&path)[Size])
    {
        std::size_t start = 0;
        for (std::size_t i = 0; i + 4 < Size; ++i)
        {
            const bool atFolder = i == 0 || IsSeparator(path[i - 1]);
            if (atFolder && path[i] == 's' && path[i + 1] == 'r' && path[i + 2] == 'c' && IsSeparator(path[i + 3]))
            {
                start = i;
            }
        }
        text[0] = '.';
        text[1] = '\\';
        std::size_t length = 2;
        for (std::size_t i = start; i < Size; ++i)
        {
            text[length] = IsSeparator(path[i]) ? '\\' : path[i];
            ++length;
            if (IsSeparator(path[i]) && EndsWithStepUp(length))
            {
                length = WithoutStepUp(length);
            }
        }
        for (std::size_t i = length; i < sizeof(text); ++i)
        {
            text[i] = '\0';
        }
    }

private:
    // "A\..\", as a header's path reads that was included from a folder beside it.
    consteval bool EndsWithStepUp(std::size_t length) const
    {
        return length > 4 && text[length - 2] == '.' && text[length - 3] == '.' && text[length - 4] == '\\';
    }

    consteval std::size_t WithoutStepUp(std::size_t length) const
    {
        std::size_t kept = length - 4;
        while (text[kept - 1] != '\\')
        {
            --kept;
        }
        return kept;
    }

    static constexpr bool IsSeparator(char character) { return character == '/' || character == '\\'; }
};

} // namespace quorvex
