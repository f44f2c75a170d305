#include "JsonHelper.h"

#include "CommonUtil.h"

#include <json/reader.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>

namespace quorvex
{

namespace
{

/// A value takes some fifty times the room of the two bytes that it may be in the text.
constexpr std::ptrdiff_t kMostValues = 2 * 1024 * 1024;

/// Counts what stands before each value; in texts, too, which does no harm.
bool HasTooManyValues(const std::string& body)
{
    const auto isBeforeValue = [](char character) { return character == ',' || character == '[' || character == '{'; };
    return std::ranges::count_if(body, isBeforeValue) > kMostValues;
}

} // namespace

bool ParseJson(const std::string& body, Json::Value& root)
{
    if (HasTooManyValues(body))
    {
        return false;
    }
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
        throw UnusableReply();
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
