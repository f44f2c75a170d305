#include "storage/Requests.h"

#include "common/HttpAnswers.h"
#include "common/QueryText.h"
#include "common/Text.h"
#include "storage/ClientText.h"

#include <algorithm>
#include <limits>

namespace quorvex::services::storage
{

std::string KeyOf(const httplib::Request& request)
{
    return TextFromClient(LastQueryValue(request, "k"));
}

std::int64_t OwnerOf(const httplib::Request& request, std::int64_t account)
{
    const std::string text = QueryValue(request, "uid");
    return text.empty() ? account : AccountNamed(text);
}

std::int64_t AccountNamed(const std::string& text)
{
    const auto account = ParseUnsigned(text);
    if (!account || *account == 0 || *account > std::numeric_limits<std::int64_t>::max())
    {
        throw HttpError(Status::NotFound, "no such user");
    }
    return static_cast<std::int64_t>(*account);
}

PathName PathNameBelow(const httplib::Request& request, std::string_view path)
{
    const std::string_view target = request.target;
    const std::string_view name = target.substr(std::min(path.size(), target.size()));
    const std::size_t slash = name.find('/');
    if (!target.starts_with(path) || slash == std::string_view::npos)
    {
        throw HttpError(Status::NotFound, "no such file");
    }
    const std::string owner = Unescape(name.substr(0, slash));
    return {owner == "0" ? std::nullopt : std::optional(AccountNamed(owner)),
            TextFromClient(Unescape(name.substr(slash + 1)))};
}

Json::Value EmptyUploadAnswer()
{
    Json::Value answer(Json::objectValue);
    answer["fkey"] = "";
    answer["fsize"] = 0;
    return answer;
}

Json::Value EmptyListAnswer()
{
    Json::Value answer(Json::objectValue);
    answer["files"] = Json::Value(Json::arrayValue);
    return answer;
}

} // namespace quorvex::services::storage
