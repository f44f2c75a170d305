#include "AccountRequest.h"

#include "Failure.h"
#include "HttpExchange.h"
#include "Output.h"

#include <memory>

#include <json/reader.h>

namespace quorvex::console
{
namespace
{

constexpr int kSuccess = 200;

Json::Value ObjectIn(const std::string& text, const std::string& url)
{
    Json::Value object;
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &object, nullptr) || !object.isObject())
        throw Failure("what answers at " + url + " is no account system");
    return object;
}

} // namespace

Json::Value PostLogin(const std::string& url, const Json::Value& body)
{
    try
    {
        const HttpAnswer answer = Exchange(url, JsonLine(body));
        if (answer.status != kSuccess)
            throw Failure("cannot log in to " + url, answer.status);
        return ObjectIn(answer.body, url);
    }
    catch (const HttpError& error)
    {
        throw Failure((error.Stage() == HttpStage::Address ? "cannot use the server address " + url
                                                           : "cannot reach " + url + " (" + error.what() + ')'));
    }
}

} // namespace quorvex::console
