#pragma once

#include "Expect.h"
#include "Platform/CodePage.h"
#include "platform/Log.h"

#include "CommonUtil.h"
#include "JsonHelper.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// What the checks of the three families' reply parsers have in common.
namespace quorvex::fuzz
{

/// What out-parameters hold before a parse.
inline constexpr int kUntouched = -77;
inline const char* const kUntouchedText = "untouched";

inline bool IsUntouched(const char* text)
{
    return text == kUntouchedText;
}

inline bool IsText(const char* text, const std::string& body)
{
    return text != nullptr && std::string_view(text).size() <= body.size();
}

/// Calls a parser.
/// @return whether it succeeded; anything but 0 and 1 is wrong, and so are a success that is no JSON and a failure
///         without a line
template <class Parse>
bool Succeeds(const std::string& body, Parse parse)
{
    const std::size_t linesBefore = ErrorLines();
    const int result = parse();
    Expect(result == 0 || result == 1, "a parse gives 0 or 1");
    if (result == 1)
    {
        Expect(ErrorLines() > linesBefore, "a failed parse writes an ERROR line");
        return false;
    }
    Json::Value root;
    bool isJson = false;
    try
    {
        isJson = ParseJson(body, root);
    }
    catch (const Json::Exception&)
    {
        isJson = false;
    }
    Expect(isJson, "what could be parsed is JSON");
    return true;
}

/// The same text as units of a record, or nothing when it is no string.
inline std::wstring WideOf(const Json::Value& value, Platform::CodePage codePage)
{
    return value.isString() ? Platform::ToWide(value.asCString(), codePage) : std::wstring();
}

/// A text that fits its array is there as it was sent. One that is absent leaves the array as it is: empty, unless a
/// text before it ran on.
/// @param ranOn whether one did; takes this one into account
template <std::size_t Size>
void ExpectField(const wchar_t (&field)[Size], const Json::Value& value, Platform::CodePage codePage, bool& ranOn)
{
    const std::wstring text = WideOf(value, codePage);
    const bool fits = text.size() < Size;
    Expect(!fits || (ranOn && value.isNull()) || FieldText(field) == text, "a text that fits is read whole");
    ranOn = ranOn || !fits;
}

/// An array filled as the last one of a record has its zero, in the array or in the padding behind it.
template <class Record, std::size_t Size>
void ExpectLastText(const Record& record, const wchar_t (&field)[Size])
{
    const auto* const end = reinterpret_cast<const wchar_t*>(&record) + sizeof(Record) / sizeof(wchar_t);
    const wchar_t* const zero = std::find(&field[0], end, L'\0');
    Expect(zero != end, "a record's last text ends within it");
    Expect(zero == &field[0] || !Platform::IsHighSurrogate(zero[-1]), "no text ends with half a character");
}

/// A buffer of exactly this room, so that one character too far is out of it.
struct ExactRoom
{
    explicit ExactRoom(std::size_t room) : room(room), text(std::make_unique<wchar_t[]>(room))
    {
        std::fill_n(text.get(), room, L'#');
    }

    bool HasText() const { return std::wstring_view(text.get(), room).find(L'\0') != std::wstring_view::npos; }

    /// Either nothing has been written, or a text with its zero.
    void ExpectText() const
    {
        const std::wstring_view whole(text.get(), room);
        const std::size_t zero = whole.find(L'\0');
        Expect(HasText() || whole.find_first_not_of(L'#') == std::wstring_view::npos,
               "a text that is handed out has its zero");
        Expect(zero == std::wstring_view::npos || zero == 0 || !Platform::IsHighSurrogate(whole[zero - 1]),
               "a cut never halves a character");
    }

    std::size_t room;
    std::unique_ptr<wchar_t[]> text;
};

} // namespace quorvex::fuzz
