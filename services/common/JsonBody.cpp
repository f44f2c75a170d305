#include "common/JsonBody.h"

#include "common/HttpAnswers.h"
#include "common/Text.h"

#include <algorithm>
#include <memory>

#include <json/reader.h>

namespace quorvex::services
{

namespace
{

constexpr std::size_t MaxBodySize = 64UL * 1024;
constexpr int MaxNesting = 16;

} // namespace

std::string ReadTextBody(const httplib::ContentReader& read)
{
    std::string text;
    bool isTooLarge = false;
    const bool isWhole = read([&](const char* data, std::size_t size) {
        isTooLarge = isTooLarge || text.size() + size > MaxBodySize;
        if (!isTooLarge)
        {
            text.append(data, size);
        }
        return !isTooLarge;
    });
    if (isTooLarge)
    {
        throw HttpError(Status::PayloadTooLarge, "the request body is too large");
    }
    if (!isWhole)
    {
        throw HttpError(Status::BadRequest, "the request body is not complete");
    }
    return text;
}

Json::Value ReadJsonBody(const httplib::ContentReader& read)
{
    const std::string text = ReadTextBody(read);
    Json::CharReaderBuilder builder;
    builder["stackLimit"] = MaxNesting;
    builder["failIfExtra"] = true;
    builder["rejectDupKeys"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    try
    {
        if (IsValidUtf8(text) && reader->parse(text.data(), text.data() + text.size(), &value, nullptr) &&
            value.isObject())
        {
            return value;
        }
    }
    catch (const Json::Exception&)
    {
        // Nested too deeply: no client means that.
    }
    throw HttpError(Status::BadRequest, "the request body is not a JSON object");
}

std::string RequiredText(const Json::Value& body, const char* key)
{
    if (!body.isMember(key) || !body[key].isString())
    {
        throw HttpError(Status::BadRequest, std::string(key) + " is missing or not a text");
    }
    return body[key].asString();
}

std::string OptionalText(const Json::Value& body, const char* key)
{
    return body.isMember(key) ? RequiredText(body, key) : std::string();
}

std::set<std::string> RequiredTexts(const Json::Value& body, const char* key)
{
    const Json::Value& values = body[key];
    if (!values.isArray() ||
        !std::all_of(values.begin(), values.end(), [](const Json::Value& value) { return value.isString(); }))
    {
        throw HttpError(Status::BadRequest, std::string(key) + " is missing or not an array of texts");
    }
    std::set<std::string> texts;
    for (const Json::Value& value : values)
    {
        texts.insert(value.asString());
    }
    return texts;
}

std::int64_t RequiredSeconds(const Json::Value& body, const char* key)
{
    const Json::Value& value = body[key];
    if (!value.isUInt())
    {
        throw HttpError(Status::BadRequest, std::string(key) + " is missing or not a number of seconds");
    }
    return value.asUInt();
}

} // namespace quorvex::services
