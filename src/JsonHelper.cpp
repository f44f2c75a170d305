#include "JsonHelper.h"

#include "CommonUtil.h"

#include <json/reader.h>

#include <cmath>
#include <limits>
#include <memory>

namespace quorvex
{

bool ParseJson(const std::string& body, Json::Value& root)
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    return reader->parse(body.data(), body.data() + body.size(), &root, nullptr);
}

const Json::Value& Require(const Json::Value& root, const char* key, const wchar_t* message)
{
    const Json::Value& value = root[key];
    if (value.isNull())
    {
        LOG_ERROR(message);
        throw MissingKey();
    }
    return value;
}

std::int64_t ReadInt64(const Json::Value& value)
{
    static constexpr double kBeyond = 9223372036854775808.0;

    // The registers of 32-bit x86 hold more digits than a double does; what has been in memory is rounded.
    const volatile double rounded = value.asDouble();
    const double number = rounded;
    if (std::isnan(number))
    {
        return 0;
    }
    if (number >= kBeyond)
    {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (number < -kBeyond)
    {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(number);
}

int RefusedBy(int code, const char* errorinfo)
{
    LOG_ERROR(L"Response code=" << code << L", errorinfo=" << errorinfo);
    return code;
}

const Json::Value& RequirePresent(const Json::Value& value, const char* failure)
{
    if (value.isNull())
    {
        throw ReplyFailure{failure};
    }
    return value;
}

const char* RequireString(const Json::Value& value, const char* failure)
{
    if (!value.isString())
    {
        throw ReplyFailure{failure};
    }
    return value.asCString();
}

} // namespace quorvex
