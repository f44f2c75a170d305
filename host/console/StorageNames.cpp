#include "StorageNames.h"

#include "Failure.h"
#include "Text.h"

#include <algorithm>

#include <windows.h>

namespace quorvex::console
{
namespace
{

constexpr std::size_t kLongestName = 64;

bool IsAscii(const std::wstring& text)
{
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x80; });
}

} // namespace

std::string ComplaintAboutName(const std::string& name)
{
    const std::wstring wide = Wide(name);
    const auto isForbidden = [](wchar_t c) { return c < L' ' || c == 0x7F || c == L'/' || c == L'\\' || c == L'"'; };
    if (!wide.empty() && wide.size() <= kLongestName && std::none_of(wide.begin(), wide.end(), isForbidden))
        return {};
    return "a name has 1 to " + std::to_string(kLongestName) +
           " characters, and no slash, backslash, quotation mark or control character among them";
}

std::wstring NameAsSent(const std::wstring& name)
{
    std::string bytes(name.size() * 4, '\0');
    const int size = WideCharToMultiByte(CP_OEMCP, 0, name.data(), static_cast<int>(name.size()), bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    std::wstring sent(static_cast<std::size_t>(size), L'\0');
    const int length = MultiByteToWideChar(CP_OEMCP, 0, bytes.data(), size, sent.data(), static_cast<int>(sent.size()));
    sent.resize(static_cast<std::size_t>(length));
    return sent;
}

void CheckThatNameIsSent(const std::wstring& name, const std::string& advice)
{
    const std::wstring sent = NameAsSent(name);
    if (sent != name)
        throw Failure("the name " + ToUtf8(name) + " cannot be sent: the system's OEM code page, " +
                      std::to_string(GetOEMCP()) + ", would make " + ToUtf8(sent) + " of it; " + advice);
}

std::string WhyNamedOtherwise(const std::wstring& name)
{
    const std::wstring sent = NameAsSent(name);
    if (sent != name)
        return "the picture is on the server as " + ToUtf8(sent) +
               ", because names are sent in the system's OEM code "
               "page, " +
               std::to_string(GetOEMCP()) + ", which cannot express this one; give the file another name";
    if (!IsAscii(name))
        return "the picture is on the server, but the server's answer is read in the system's ANSI code page, " +
               std::to_string(GetACP()) + ", in which only plain English letters are sure to come back unchanged";
    return "the picture is on the server under that other name";
}

} // namespace quorvex::console
