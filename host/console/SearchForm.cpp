#include "SearchForm.h"

#include "Failure.h"

#include <algorithm>
#include <string_view>

namespace quorvex::console
{
namespace
{

/// Bytes that applications, names and encoded values can have: a form has 8191, of which the application's own name
/// and the number of users to skip take at most 21.
constexpr std::size_t kFormRoom = 8191 - std::string_view("app=&skip=2147483647").size();

constexpr std::size_t kLongestApp = 64;

bool ChangesAForm(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    return byte < ' ' || byte == 0x7F || letter == '&' || letter == '%';
}

bool StaysAsItIs(char letter)
{
    return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

std::string Encoded(const std::string& value)
{
    std::string encoded;
    for (const char letter : value)
    {
        if (StaysAsItIs(letter))
        {
            encoded += letter;
            continue;
        }
        const auto byte = static_cast<unsigned char>(letter);
        encoded += '%';
        encoded += "0123456789ABCDEF"[byte >> 4];
        encoded += "0123456789ABCDEF"[byte & 15];
    }
    return encoded;
}

std::size_t EncodedSize(const std::string& value)
{
    const auto plain = static_cast<std::size_t>(std::count_if(value.begin(), value.end(), StaysAsItIs));
    return plain + 3 * (value.size() - plain);
}

} // namespace

std::string ComplaintAboutApp(const std::string& app)
{
    const auto isPlain = [](char c) { return StaysAsItIs(c) || c == '.' || c == '-' || c == '_'; };
    const bool isApp = !app.empty() && app.size() <= kLongestApp && std::all_of(app.begin(), app.end(), isPlain);
    return isApp ? std::string() : "an application has 1 to 64 letters, digits, full stops, hyphens and underscores";
}

std::string ComplaintAboutField(const std::string& field)
{
    const std::size_t equals = field.find('=');
    if (equals == std::string::npos || equals == 0)
        return "a value is given as NAME=VALUE";
    const std::string name = field.substr(0, equals);
    if (name == "app" || name == "skip")
        return name + " cannot be the name of a value";
    const bool isName = std::none_of(name.begin(), name.end(), ChangesAForm);
    return isName ? std::string() : "the name of a value has no &, no % and no control characters";
}

std::vector<std::string> NamesAndValues(const std::vector<std::string>& fields)
{
    std::vector<std::string> parts;
    parts.reserve(2 * fields.size());
    for (const std::string& field : fields)
    {
        const std::size_t equals = field.find('=');
        parts.push_back(field.substr(0, equals));
        parts.push_back(field.substr(equals + 1));
    }
    return parts;
}

std::string FormOf(const std::vector<std::string>& namesAndValues)
{
    std::string form;
    for (std::size_t i = 0; i + 1 < namesAndValues.size(); i += 2)
        form += (form.empty() ? "" : "&") + namesAndValues[i] + '=' + Encoded(namesAndValues[i + 1]);
    return form;
}

void CheckThatFormHolds(const std::string& app, const std::vector<std::string>& namesAndValues)
{
    std::size_t size = app.size();
    for (std::size_t i = 0; i + 1 < namesAndValues.size(); i += 2)
        size += std::string_view("&=").size() + namesAndValues[i].size() + EncodedSize(namesAndValues[i + 1]);
    if (size > kFormRoom)
        throw Failure("the names and values given have " + std::to_string(size) +
                      " bytes in a form; a request holds at most " + std::to_string(kFormRoom));
}

} // namespace quorvex::console
