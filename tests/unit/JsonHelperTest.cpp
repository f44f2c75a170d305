#include "JsonHelper.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

using quorvex::ParseJson;
using quorvex::ReadInt64;

TEST(JsonHelper, ParsesObjectsAndRefusesWhatIsNone)
{
    Json::Value root;
    EXPECT_TRUE(ParseJson("{\"a\":1}", root));
    EXPECT_EQ(root["a"].asInt(), 1);
    for (const char* body : {"", "{", "{\"a\":", "<html>", "{\"a\":1", "\xFF\xFE"})
    {
        EXPECT_FALSE(ParseJson(body, root)) << body;
    }
}

TEST(JsonHelper, DeepNestingIsRefusedByTheReader)
{
    Json::Value root;
    EXPECT_ANY_THROW(ParseJson(std::string(100000, '['), root));
}

TEST(JsonHelper, MoreValuesThanTheMemoryIsSafeWithAreRefused)
{
    static constexpr std::size_t kMost = 2 * 1024 * 1024;

    Json::Value root;
    std::string body = "[0";
    while (body.size() < 2 * kMost)
    {
        body += ",0";
    }
    EXPECT_TRUE(ParseJson(body + "]", root));
    EXPECT_EQ(root.size(), kMost);

    root = Json::Value();
    EXPECT_FALSE(ParseJson(body + ",0]", root));
    body[body.size() - 1] = '[';
    EXPECT_FALSE(ParseJson(body + "]]", root));
    body[body.size() - 1] = '{';
    EXPECT_FALSE(ParseJson(body + "}]", root));
    EXPECT_TRUE(root.isNull());
}

TEST(JsonHelper, LargeNumbersAreTruncatedTowardZero)
{
    EXPECT_EQ(ReadInt64(Json::Value(1.9)), 1);
    EXPECT_EQ(ReadInt64(Json::Value(-1.9)), -1);
    EXPECT_EQ(ReadInt64(Json::Value(Json::Int64{4611686018427387904})), 4611686018427387904);
    EXPECT_EQ(ReadInt64(Json::Value()), 0);
}

TEST(JsonHelper, NumbersBeyondTheDoublesPrecisionAreRounded)
{
    EXPECT_EQ(ReadInt64(Json::Value(Json::Int64{9007199254740993})), 9007199254740992);
}

TEST(JsonHelper, NumbersBeyond64BitsBecomeTheNearestThereIs)
{
    EXPECT_EQ(ReadInt64(Json::Value(1e300)), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(ReadInt64(Json::Value(-1e300)), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(ReadInt64(Json::Value(9223372036854775808.0)), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(ReadInt64(Json::Value(std::numeric_limits<double>::quiet_NaN())), 0);
}

TEST(JsonHelper, NumbersOfTheWrongTypeThrow)
{
    EXPECT_ANY_THROW(ReadInt64(Json::Value("12")));
    EXPECT_ANY_THROW(ReadInt64(Json::Value(Json::arrayValue)));
}
