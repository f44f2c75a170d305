#include "CommonUtil.h"

#include "Platform/LastError.h"
#include "Platform/Random.h"

#include <algorithm>

namespace quorvex
{

namespace
{

template <class Character>
std::unique_ptr<Character[]> Copy(const Character* text)
{
    if (text == nullptr)
    {
        return nullptr;
    }
    const std::size_t size = std::char_traits<Character>::length(text) + 1;
    auto copy = std::make_unique_for_overwrite<Character[]>(size);
    std::copy_n(text, size, copy.get());
    return copy;
}

} // namespace

LastErrorKeeper::LastErrorKeeper() : m_code(Platform::LastError())
{
}

void LastErrorKeeper::Restore() const
{
    Platform::SetLastError(m_code);
}

void LogErrorText(const char* callerTag, int callerLine)
{
    const unsigned long code = Platform::LastError();
    const Platform::SystemErrorText systemText(code);
    const wchar_t* const text =
        systemText.Text() != nullptr ? systemText.Text() : L" Sorry, cannot find this error info. ";
    LOG_ERROR(L"GetLastError()=" << code << L" : " << text << callerTag << L":" << callerLine);
}

const wchar_t* LastErrMsg()
{
    static const wchar_t text[1] = {};
    return text;
}

std::string BoundaryToken()
{
    // "j" and "J" stand twice, so that six bits always name a character.
    static constexpr char kAlphabet[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZjJ";
    static constexpr std::size_t kLength = 40;
    static constexpr int kCharactersPerNumber = 5;

    std::string token;
    token.reserve(kLength);
    while (token.size() < kLength)
    {
        std::uint32_t number = Platform::RandomNumber();
        for (int i = 0; i < kCharactersPerNumber; ++i)
        {
            token += kAlphabet[number & 0x3FU];
            number >>= 6U;
        }
    }
    return token;
}

std::string PercentEncode(std::string_view text)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";

    std::string encoded;
    encoded.reserve(text.size() * 3);
    for (const char character : text)
    {
        const auto byte = static_cast<unsigned char>(character);
        const bool isSafe =
            (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
        if (isSafe)
        {
            encoded += character;
        }
        else
        {
            encoded += '%';
            encoded += kDigits[byte >> 4U];
            encoded += kDigits[byte & 0xFU];
        }
    }
    return encoded;
}

void CopyToWide(std::string_view text, wchar_t* out, std::size_t capacity, Platform::CodePage codePage)
{
    if (out != nullptr && capacity != 0)
    {
        out[Platform::ToWide(text, codePage, {out, capacity - 1})] = L'\0';
    }
}

void CopyWide(std::wstring_view text, wchar_t* out, std::size_t capacity)
{
    if (out == nullptr || capacity == 0)
    {
        return;
    }
    std::size_t count = std::min(text.size(), capacity - 1);
    if (count < text.size() && count > 0 && Platform::IsHighSurrogate(text[count - 1]))
    {
        --count;
    }
    text.copy(out, count);
    out[count] = L'\0';
}

void CopyToUtf8(std::wstring_view text, char* out, std::size_t capacity)
{
    if (out != nullptr && capacity != 0)
    {
        out[Platform::ToNarrow(text, Platform::CodePage::Utf8, {out, capacity - 1})] = '\0';
    }
}

std::unique_ptr<wchar_t[]> CopyText(const wchar_t* text)
{
    return Copy(text);
}

std::unique_ptr<char[]> CopyText(const char* text)
{
    return Copy(text);
}

std::wstring Utf8ToWide(std::string_view text)
{
    return Platform::ToWide(text, Platform::CodePage::Utf8);
}

std::string WideToUtf8(std::wstring_view text)
{
    return Platform::ToNarrow(text, Platform::CodePage::Utf8);
}

} // namespace quorvex
