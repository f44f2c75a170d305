#include "netdisk/FileName.h"

#include "common/HttpAnswers.h"
#include "common/Text.h"

#include <algorithm>

namespace quorvex::services::netdisk
{

namespace
{

constexpr std::size_t MaxNameSize = 255;

bool IsUnfit(char letter)
{
    return static_cast<unsigned char>(letter) < ' ' || letter == '\x7f' || letter == '/' || letter == '\\';
}

} // namespace

void RequireName(std::string_view name)
{
    const bool isPath = name == "." || name == ".." || std::any_of(name.begin(), name.end(), IsUnfit);
    if (name.empty() || name.size() > MaxNameSize || isPath || !IsValidUtf8(name))
    {
        throw HttpError(Status::BadRequest, "the name is not usable");
    }
}

std::string ContentDisposition(std::string_view name, std::string_view md5)
{
    std::string value = "attachment;filename=\"";
    std::replace_copy_if(
        name.begin(), name.end(), std::back_inserter(value), [](char letter) { return letter == ';' || letter == '"'; },
        '_');
    return value.append(";md5=").append(md5);
}

} // namespace quorvex::services::netdisk
