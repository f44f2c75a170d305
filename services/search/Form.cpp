#include "search/Form.h"

#include "common/HttpAnswers.h"
#include "common/QueryText.h"
#include "common/Text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvex::services::search
{

namespace
{

constexpr std::size_t MaxNameSize = 64;

bool IsHexDigit(char letter)
{
    return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'F') || (letter >= 'a' && letter <= 'f');
}

bool HasWholeEscapes(std::string_view text)
{
    for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1))
    {
        if (text.size() - at < 3 || !IsHexDigit(text[at + 1]) || !IsHexDigit(text[at + 2]))
        {
            return false;
        }
    }
    return true;
}

// An ampersand separates the fields of a form, but is part of the application in a query: it can be in neither.
bool IsNameAllowed(std::string_view name)
{
    return !name.empty() && name.size() <= MaxNameSize && std::none_of(name.begin(), name.end(), [](char letter) {
        const auto byte = static_cast<unsigned char>(letter);
        return byte < 0x20 || byte == 0x7F || letter == '&';
    });
}

Field ParseField(std::string_view text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos)
    {
        throw HttpError(Status::BadRequest, "a field has no equals sign; was the form cut?");
    }
    const std::string_view value = text.substr(equals + 1);
    Field field{Unescape(text.substr(0, equals)), Unescape(value)};
    if (field.name != "app" && !HasWholeEscapes(value))
    {
        throw HttpError(Status::BadRequest, "a value has a broken percent escape; was the form cut?");
    }
    if (!IsNameAllowed(field.name))
    {
        throw HttpError(Status::BadRequest, "a field's name is empty, too long or has a control character or &");
    }
    return field;
}

std::int64_t ParseSkip(std::string_view text)
{
    const auto skip = ParseUnsigned(text);
    if (!skip || *skip > std::numeric_limits<std::int32_t>::max())
    {
        throw HttpError(Status::BadRequest, "skip is not a number of 0 to 2147483647");
    }
    return static_cast<std::int64_t>(*skip);
}

template <class T>
void SetOnce(std::optional<T>& place, T value)
{
    if (place)
    {
        throw HttpError(Status::BadRequest, "app or skip is there twice");
    }
    place = std::move(value);
}

void Add(Form& form, Field field)
{
    if (field.name == "app")
    {
        SetOnce(form.app, std::move(field.value));
    }
    else if (field.name == "skip")
    {
        SetOnce(form.skip, ParseSkip(field.value));
    }
    else
    {
        form.fields.push_back(std::move(field));
    }
}

} // namespace

Form ParseForm(std::string_view body)
{
    Form form;
    bool isEnd = body.empty();
    while (!isEnd)
    {
        const std::size_t end = body.find('&');
        Add(form, ParseField(body.substr(0, end)));
        isEnd = end == std::string_view::npos;
        body.remove_prefix(isEnd ? body.size() : end + 1);
    }
    return form;
}

std::string RequireAppName(const std::optional<std::string>& app)
{
    if (!app || !IsNameAllowed(*app))
    {
        throw HttpError(Status::BadRequest, "app is missing, empty, too long or has a control character or &");
    }
    return *app;
}

} // namespace quorvex::services::search
