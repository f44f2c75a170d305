#include "common/ResultRoutes.h"

#include "common/HttpAnswers.h"

#include <utility>

namespace quorvex::services
{

namespace
{

void SetResult(Json::Value& answer, const ResultRoutes::Keys& keys, int result, const std::string& text)
{
    answer[keys.result] = result;
    answer[keys.text] = text;
}

// Returns the HTTP status.
template <class Fill>
int FillIn(Json::Value& answer, const ResultRoutes::Keys& keys, ResultRoutes::ExpiredSession expiredSession, Fill fill)
{
    const Json::Value empty = answer;
    SetResult(answer, keys, Status::Ok, "");
    try
    {
        fill(answer);
    }
    catch (const HttpError& error)
    {
        answer = empty;
        SetResult(answer, keys, error.GetStatus(), error.what());
        const bool isShown =
            error.GetStatus() == Status::Forbidden && expiredSession == ResultRoutes::ExpiredSession::InStatusToo;
        return isShown ? Status::Forbidden : Status::Ok;
    }
    return Status::Ok;
}

} // namespace

void ResultRoutes::Get(const std::string& path, Json::Value emptyAnswer, GetHandler handler)
{
    server_.Get(path, [empty = std::move(emptyAnswer), handler = std::move(handler),
                       keys = keys_](const httplib::Request& request, httplib::Response& response) {
        Json::Value answer = empty;
        const int status = FillIn(answer, keys, ExpiredSession::InResult,
                                  [&](Json::Value& filled) { handler(request, response, filled); });
        AnswerJson(request, response, answer, status);
    });
}

void ResultRoutes::Post(const std::string& path, Json::Value emptyAnswer, PostHandler handler,
                        ExpiredSession expiredSession)
{
    server_.Post(path,
                 [empty = std::move(emptyAnswer), handler = std::move(handler), keys = keys_, expiredSession](
                     const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read) {
                     Json::Value answer = empty;
                     const int status = FillIn(answer, keys, expiredSession,
                                               [&](Json::Value& filled) { handler(request, response, filled, read); });
                     AnswerJson(request, response, answer, status);
                 });
}

} // namespace quorvex::services
