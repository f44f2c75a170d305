#include "common/FileName.h"

#include "common/HttpAnswers.h"
#include "common/Text.h"

#include <algorithm>

namespace quorvex::services
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

} // namespace quorvex::services
