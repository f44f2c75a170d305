#include "storage/CreateForm.h"

#include "common/Digests.h"
#include "common/FileName.h"
#include "common/HttpAnswers.h"
#include "common/Text.h"
#include "storage/ClientText.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

namespace quorvex::services::storage
{

namespace
{

std::string Field(std::string_view fields, std::string_view name)
{
    while (!fields.empty())
    {
        const std::string_view field = fields.substr(0, fields.find('&'));
        if (field.starts_with(name) && field.substr(name.size()).starts_with('='))
        {
            return std::string(field.substr(name.size() + 1));
        }
        fields.remove_prefix(std::min(field.size() + 1, fields.size()));
    }
    throw HttpError(Status::BadRequest, std::string(name) + " is missing");
}

// A file of 2 GiB and more comes as a negative number.
std::uint64_t ParseSize(std::string_view text)
{
    constexpr std::uint64_t mostNegative = 1ULL << 31U;
    const bool isNegative = text.starts_with('-');
    const auto value = ParseUnsigned(text.substr(isNegative ? 1 : 0));
    if (!value || (isNegative && *value > mostNegative))
    {
        throw HttpError(Status::BadRequest, "sz is not a size");
    }
    if (*value > std::numeric_limits<std::uint32_t>::max())
    {
        throw HttpError(Status::PayloadTooLarge, "the file is larger than a file may be");
    }
    const auto bits = static_cast<std::uint32_t>(*value);
    return isNegative ? 0U - bits : bits;
}

} // namespace

Depot::Announcement ParseCreateForm(std::string_view form)
{
    constexpr std::string_view nameField = "n=";
    const std::size_t nameEnd = form.rfind("&s=");
    if (!form.starts_with(nameField) || nameEnd == std::string_view::npos)
    {
        throw HttpError(Status::BadRequest, "n or s is missing");
    }
    Depot::Announcement file;
    file.name = TextFromClient(form.substr(nameField.size(), nameEnd - nameField.size()));
    RequireName(file.name);
    const std::string_view fields = form.substr(nameEnd + 1);
    file.content = {RequireMd5(Field(fields, "m")), ParseSize(Field(fields, "sz"))};
    file.sha1 = RequireSha1(Field(fields, "sh"));
    return file;
}

} // namespace quorvex::services::storage
