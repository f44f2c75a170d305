#include "common/AccountRoutes.h"

#include "common/HttpAnswers.h"
#include "common/JsonBody.h"

#include <utility>

namespace quorvex::services
{

void AccountRoutes::Post(const std::string& path, PostHandler handler)
{
    server_.Post(path, [&sessions = sessions_, handler = std::move(handler)](const httplib::Request& request,
                                                                             httplib::Response& response,
                                                                             const httplib::ContentReader& read) {
        const std::int64_t account = sessions.RequireAccount(request);
        AnswerJson(request, response, handler(account, ReadJsonBody(read)));
    });
}

void AccountRoutes::Get(const std::string& path, GetHandler handler)
{
    server_.Get(path, [&sessions = sessions_, handler = std::move(handler)](const httplib::Request& request,
                                                                            httplib::Response& response) {
        const std::int64_t account = sessions.RequireAccount(request);
        AnswerJson(request, response, handler(account, request));
    });
}

} // namespace quorvex::services
