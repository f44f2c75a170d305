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

template <class Type>
concept Number = std::same_as<Type, int> || std::same_as<Type, unsigned int> || std::same_as<Type, long> ||
    std::same_as<Type, unsigned long>;

/// @return where to cut a text at `count` bytes at the latest: before a character of UTF-8 that would be halved; bytes
///         that are no UTF-8 are cut anywhere
std::size_t WholeUtf8(std::string_view text, std::size_t count);

/// Narrow text; wide pieces are converted.
template <std::size_t Size, Platform::CodePage WidePieces = Platform::CodePage::Utf8>
class NarrowText
{
public:
    NarrowText& operator<<(std::string_view piece)
    {
        const std::size_t count = WholeUtf8(piece, std::min(piece.size(), Room()));
        piece.copy(m_text.data() + m_length, count);
        return GrowBy(count);
    }

    NarrowText& operator<<(std::wstring_view piece)
    {
        return GrowBy(Platform::ToNarrow(piece, WidePieces, std::span(m_text).subspan(m_length, Room())));
    }

    /// A null piece is empty.
    NarrowText& operator<<(const wchar_t* piece)
    {
        return *this << (piece != nullptr ? std::wstring_view(piece) : std::wstring_view());
    }
    NarrowText& operator<<(const char* piece)
    {
        return *this << (piece != nullptr ? std::string_view(piece) : std::string_view());
    }

    NarrowText& operator<<(Number auto number)
    {
        std::array<char, 24> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return *this << std::string_view(digits.data(), end);
    }

    /// The text so far; it ends with a zero.
    const char* c_str() const { return m_text.data(); }
    std::string_view view() const { return {m_text.data(), m_length}; }

private:
    std::size_t Room() const { return Size - 1 - m_length; }

    NarrowText& GrowBy(std::size_t count)
    {
        m_length += count;
        // A conversion that found too little room may have left something behind the text.
        m_text[m_length] = '\0';
        return *this;
    }

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
        const std::wstring_view kept = piece.substr(0, Size - 1 - m_length);
        kept.copy(m_text.data() + m_length, kept.size());
        m_length += kept.size();
        if (kept.size() < piece.size())
        {
            m_isCut = true;
            m_length -= !kept.empty() && Platform::IsHighSurrogate(m_text[m_length - 1]) ? 1 : 0;
            m_text[m_length] = L'\0';
        }
        return *this;
    }

    /// A null piece is empty.
    WideText& operator<<(const wchar_t* piece)
    {
        return *this << (piece != nullptr ? std::wstring_view(piece) : std::wstring_view());
    }

    WideText& operator<<(Number auto number)
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
