#include "search/SearchService.h"

#include "common/AdminService.h"
#include "common/HttpAnswers.h"
#include "common/JsonBody.h"
#include "common/QueryText.h"

#include <charconv>
#include <string_view>
#include <utility>

namespace quorvex::services::search
{

namespace
{

Json::Value AnswerWith(const char* key, const Json::Value& nothing)
{
    Json::Value answer(Json::objectValue);
    answer[key] = nothing;
    return answer;
}

int ParseStatus(std::string_view text)
{
    int status = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, status);
    if (error != std::errc() || rest != end)
    {
        throw HttpError(Status::BadRequest, "st is missing or not a number of 32 bits");
    }
    return status;
}

} // namespace

SearchService::SearchService(Accounts& accounts, Sessions& sessions, UserValues& values, OnlineUsers& users)
    : accounts_(accounts), sessions_(sessions), values_(values), users_(users)
{
}

void SearchService::AddRoutes(ResultRoutes& routes)
{
    using Request = const httplib::Request&;
    using Response = httplib::Response&;
    using Reader = const httplib::ContentReader&;
    using Answer = Json::Value&;
    routes.Get("/search/status.php", Json::objectValue, [this](Request in, Response, Answer) { ReportStatus(in); });
    routes.Post("/search/update.php", Json::objectValue,
                [this](Request in, Response, Answer, Reader read) { Update(in, read); });
    routes.Post("/search/search.php", AnswerWith("users", Json::arrayValue),
                [this](Request in, Response, Answer answer, Reader read) { Find(in, answer, read); });
    routes.Post("/search/count.php", AnswerWith("total", 0),
                [this](Request in, Response, Answer answer, Reader read) { Count(in, answer, read); });
}

// Spares tests and set-ups the wait.
void SearchService::AddAdminRoutes(HttpServer& server)
{
    AdminService::AddRoute(server, "/admin/presence/expire", [this](const Json::Value& body) {
        return AnswerWith("expired", users_.EndPresence(AdminService::NamedAccount(accounts_, body)));
    });
}

void SearchService::ReportStatus(const httplib::Request& request)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const std::string app = RequireAppName(LastQueryValue(request, "app"));
    users_.Report(account, app, ParseStatus(QueryValue(request, "st")));
}

void SearchService::Update(const httplib::Request& request, const httplib::ContentReader& read)
{
    const std::int64_t account = sessions_.RequireAccount(request);
    const Form form = ParseForm(ReadTextBody(read));
    if (form.skip)
    {
        throw HttpError(Status::BadRequest, "skip cannot be the name of a value");
    }
    values_.Update(account, form.app ? std::optional(RequireAppName(form.app)) : std::nullopt, form.fields);
}

void SearchService::Find(const httplib::Request& request, Json::Value& answer, const httplib::ContentReader& read)
{
    sessions_.RequireAccount(request);
    Form form = ParseForm(ReadTextBody(read));
    const std::string app = RequireAppName(form.app);
    for (const std::int64_t account : users_.Find(app, ParseConditions(std::move(form.fields)), form.skip.value_or(0)))
    {
        answer["users"].append(std::to_string(account));
    }
}

// A count has no pages, but takes the form of the search that it is about.
void SearchService::Count(const httplib::Request& request, Json::Value& answer, const httplib::ContentReader& read)
{
    sessions_.RequireAccount(request);
    Form form = ParseForm(ReadTextBody(read));
    const std::string app = RequireAppName(form.app);
    answer["total"] = Json::Int64{users_.Count(app, ParseConditions(std::move(form.fields)))};
}

} // namespace quorvex::services::search
