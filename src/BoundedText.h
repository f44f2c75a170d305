#pragma once

#include "Platform/CodePage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>

/// Text built piece by piece in a buffer of fixed size. The buffer holds its size less one of text; what does not
/// fit is cut without a word, never within a character, and later pieces still go into the room that is left.
namespace quorvex
{

/// Narrow text; wide pieces are converted.
template <std::size_t Size, Platform::CodePage WidePieces = Platform::CodePage::Utf8>
class NarrowText
{
public:
    NarrowText& operator<<(std::string_view piece)
    {
        std::size_t count = std::min(piece.size(), Room());
        while (count > 0 && count < piece.size() && IsContinuation(piece[count]))
        {
            --count;
        }
        piece.copy(m_text.data() + m_length, count);
        m_length += count;
        return *this;
    }

    NarrowText& operator<<(std::wstring_view piece)
    {
        m_length += Platform::ToNarrow(piece, WidePieces, std::span(m_text).subspan(m_length, Room()));
        return *this;
    }

    /// A null piece is empty.
    NarrowText& operator<<(const wchar_t* piece)
    {
        return *this << (piece != nullptr ? std::wstring_view(piece) : std::wstring_view());
    }

    NarrowText& operator<<(std::unsigned_integral auto number)
    {
        std::array<char, 24> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return *this << std::string_view(digits.data(), end);
    }

    /// The text so far; it ends with a zero.
    const char* c_str() const { return m_text.data(); }
    std::string_view view() const { return {m_text.data(), m_length}; }

private:
    static bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }
    std::size_t Room() const { return Size - 1 - m_length; }

    std::array<char, Size> m_text = {};
    std::size_t m_length = 0;
};

/// Wide text.
template <std::size_t Size>
class WideText
{
public:
    WideText& operator<<(std::wstring_view piece)
    {
        std::size_t count = std::min(piece.size(), Size - 1 - m_length);
        if (count < piece.size())
        {
            m_isCut = true;
            count -= count > 0 && Platform::IsHighSurrogate(piece[count - 1]) ? 1U : 0U;
        }
        piece.copy(m_text.data() + m_length, count);
        m_length += count;
        return *this;
    }

    /// A null piece is empty.
    WideText& operator<<(const wchar_t* piece)
    {
        return *this << (piece != nullptr ? std::wstring_view(piece) : std::wstring_view());
    }

    WideText& operator<<(std::integral auto number)
    {
        std::array<char, 24> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        for (const char* digit = digits.data(); digit != end; ++digit)
        {
            const auto wide = static_cast<wchar_t>(*digit);
            *this << std::wstring_view(&wide, 1);
        }
        return *this;
    }

    /// The text so far; it ends with a zero.
    const wchar_t* c_str() const { return m_text.data(); }
    std::wstring_view view() const { return {m_text.data(), m_length}; }
    bool IsCut() const { return m_isCut; }

private:
    std::array<wchar_t, Size> m_text = {};
    std::size_t m_length = 0;
    bool m_isCut = false;
};

} // namespace quorvex
