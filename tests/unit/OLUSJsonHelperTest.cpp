#include "OnlineUserSearch/OLUSJsonHelper.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

using Ids = std::vector<unsigned int>;
using Messages = std::vector<std::string>;

namespace
{

/// A helper and the log that it writes.
struct OLUSJsonHelper : ::testing::Test
{
    support::LogCapture log;
    quorvex::OLUSJsonHelper helper;
    int result = 505;
    const char* errorinfo = nullptr;

    Messages Errors() const { return log.messages("ERROR"); }
    Messages Traces() const { return log.messages("TRACE"); }
    Messages Debugs() const { return log.messages("DEBUG"); }
};

/// What is wrong with a reply, and what is said of it.
struct Failure
{
    const char* body;
    const char* text;
};

constexpr Failure kEveryReply[] = {
    {"", "parse json error"},
    {"{", "parse json error"},
    {"<html>", "parse json error"},
    {"[]", "parse json error"},
    {"[200]", "parse json error"},
    {"5", "parse json error"},
    {"\"text\"", "parse json error"},
    {"null", "get result error"},
    {"{}", "get result error"},
    {R"({"result":null,"errorinfo":"","uid":"","sid":"","users":[],"total":1})", "get result error"},
    {R"({"errorinfo":"","uid":"","sid":"","users":[],"total":1})", "get result error"},
    {R"({"result":"200","errorinfo":"","uid":"","sid":"","users":[],"total":1})", "parse json error"},
    {R"({"result":{},"errorinfo":"","uid":"","sid":"","users":[],"total":1})", "parse json error"},
    {R"({"result":[],"errorinfo":"","uid":"","sid":"","users":[],"total":1})", "parse json error"},
    {R"({"result":4294967296,"errorinfo":"","uid":"","sid":"","users":[],"total":1})", "parse json error"},
    {R"({"result":1e10,"errorinfo":"","uid":"","sid":"","users":[],"total":1})", "parse json error"},
    {R"({"result":200,"uid":"","sid":"","users":[],"total":1})", "get errorinfo error"},
    {R"({"result":200,"errorinfo":null,"uid":"","sid":"","users":[],"total":1})", "get errorinfo error"},
    {R"({"result":200,"errorinfo":5,"uid":"","sid":"","users":[],"total":1})", "get errorinfo error"},
    {R"({"result":200,"errorinfo":{},"uid":"","sid":"","users":[],"total":1})", "get errorinfo error"},
    {R"({"result":200,"errorinfo":[""],"uid":"","sid":"","users":[],"total":1})", "get errorinfo error"},
};

} // namespace

TEST_F(OLUSJsonHelper, EachParserRefusesWhatIsNoReply)
{
    const std::string deep = "{\"result\":" + std::string(5000, '[');
    std::vector<Failure> failures(std::begin(kEveryReply), std::end(kEveryReply));
    failures.push_back({deep.c_str(), "parse json error"});

    const char* uid = nullptr;
    const char* sid = nullptr;
    Ids ids;
    int total = 0;
    for (const Failure& failure : failures)
    {
        SCOPED_TRACE(std::string(failure.body).substr(0, 100));
        log.clear();
        EXPECT_EQ(helper.ParseResult(failure.body, result, errorinfo), 1);
        EXPECT_STREQ(errorinfo, failure.text);
        EXPECT_EQ(helper.ParseLoginResponse(failure.body, result, uid, sid, errorinfo), 1);
        EXPECT_STREQ(errorinfo, failure.text);
        EXPECT_EQ(helper.ParseUserIdList(failure.body, result, errorinfo, ids), 1);
        EXPECT_STREQ(errorinfo, failure.text);
        EXPECT_EQ(helper.ParseTotalCount(failure.body, result, errorinfo, total), 1);
        EXPECT_STREQ(errorinfo, failure.text);
        EXPECT_EQ(Errors(), Messages(4, failure.text));
        EXPECT_EQ(Debugs(), Messages{});
    }
    EXPECT_EQ(ids, Ids{});
}

TEST_F(OLUSJsonHelper, AReplyWithoutResultHas505)
{
    result = 42;
    EXPECT_EQ(helper.ParseResult(R"({"errorinfo":"x"})", result, errorinfo), 1);
    EXPECT_EQ(result, 505);
}

TEST_F(OLUSJsonHelper, ResultIsGivenAlsoWhenTheRestIsWrong)
{
    EXPECT_EQ(helper.ParseResult(R"({"result":17})", result, errorinfo), 1);
    EXPECT_EQ(result, 17);
}

TEST_F(OLUSJsonHelper, Result)
{
    EXPECT_EQ(helper.ParseResult(R"({"errorinfo":"fine","result":200,"other":[]})", result, errorinfo), 0);
    EXPECT_EQ(result, 200);
    EXPECT_STREQ(errorinfo, "fine");
    ASSERT_EQ(Traces().size(), 1U);
    EXPECT_NE(Traces()[0].find(R"({"errorinfo":"fine","result":200,"other":[]})"), std::string::npos);
    EXPECT_EQ(Debugs(), Messages{R"(json result: result=200, errorinfo="fine")"});
    EXPECT_EQ(Errors(), Messages{});
}

TEST_F(OLUSJsonHelper, ResultOfAnyNumber)
{
    const auto resultOf = [&](const char* number) {
        EXPECT_EQ(helper.ParseResult(std::string(R"({"errorinfo":"","result":)") + number + "}", result, errorinfo), 0)
            << number;
        return result;
    };
    EXPECT_EQ(resultOf("0"), 0);
    EXPECT_EQ(resultOf("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(resultOf("2147483647"), 2147483647);
    EXPECT_EQ(resultOf("200.9"), 200);
    EXPECT_EQ(resultOf("true"), 1);
    EXPECT_EQ(resultOf("false"), 0);
}

TEST_F(OLUSJsonHelper, TextsLiveAsLongAsTheHelper)
{
    {
        const std::string reply = R"({"result":17,"errorinfo":"a text that is too long to be kept without memory"})";
        ASSERT_EQ(helper.ParseResult(reply, result, errorinfo), 0);
    }
    EXPECT_STREQ(errorinfo, "a text that is too long to be kept without memory");
}

TEST_F(OLUSJsonHelper, NoKeyOfTheReplyBeforeIsLeft)
{
    Ids ids;
    EXPECT_EQ(helper.ParseUserIdList(R"({"result":200,"errorinfo":"","users":["1"]})", result, errorinfo, ids), 0);
    EXPECT_EQ(helper.ParseUserIdList(R"({"result":200,"errorinfo":""})", result, errorinfo, ids), 1);
    EXPECT_EQ(helper.ParseUserIdList("<html>", result, errorinfo, ids), 1);
    EXPECT_EQ(ids, Ids{1});
}

TEST_F(OLUSJsonHelper, LoginResponse)
{
    const char* uid = nullptr;
    const char* sid = nullptr;
    EXPECT_EQ(helper.ParseLoginResponse(R"({"result":401,"errorinfo":"no","uid":"u1","sid":"s1"})", result, uid, sid,
                                        errorinfo),
              0);
    EXPECT_EQ(result, 401);
    EXPECT_STREQ(uid, "u1");
    EXPECT_STREQ(sid, "s1");
    EXPECT_STREQ(errorinfo, "no");
    EXPECT_EQ(Debugs(), Messages{R"(json result: result=401, uid=u1, sid=s1, errorinfo="no")"});
}

TEST_F(OLUSJsonHelper, LoginResponseInItsOrderOfChecks)
{
    const char* uid = nullptr;
    const char* sid = nullptr;
    const auto failure = [&](const char* body) {
        EXPECT_EQ(helper.ParseLoginResponse(body, result, uid, sid, errorinfo), 1) << body;
        return std::string(errorinfo);
    };
    EXPECT_EQ(failure(R"({"result":{}})"), "parse json error");
    EXPECT_EQ(failure(R"({"result":200})"), "get uid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":null,"sid":"","errorinfo":""})"), "get uid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":7,"sid":"","errorinfo":""})"), "get uid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":["7"],"sid":"","errorinfo":""})"), "get uid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":"7"})"), "get sid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":"7","sid":null,"errorinfo":""})"), "get sid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":"7","sid":true,"errorinfo":""})"), "get sid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":"7","sid":{},"errorinfo":""})"), "get sid error");
    EXPECT_EQ(failure(R"({"result":200,"uid":"7","sid":"s"})"), "get errorinfo error");
}

TEST_F(OLUSJsonHelper, UserIdList)
{
    Ids ids;
    const std::string reply = R"({"result":200,"errorinfo":"e","users":["17","42","x9"]})";
    EXPECT_EQ(helper.ParseUserIdList(reply, result, errorinfo, ids), 0);
    EXPECT_EQ(result, 200);
    EXPECT_STREQ(errorinfo, "e");
    EXPECT_EQ(ids, (Ids{17, 42, 0}));
    ASSERT_EQ(Traces().size(), 1U);
    EXPECT_TRUE(Traces()[0].starts_with("OLUSJsonHelper::ParseUserIdList(" + reply)) << Traces()[0];
    EXPECT_EQ(Debugs(), Messages{R"(json result: result=200, vecUserId.size()=3, errorinfo="e")"});
}

TEST_F(OLUSJsonHelper, UserIdsAreAppended)
{
    Ids ids{1, 2};
    EXPECT_EQ(helper.ParseUserIdList(R"({"result":200,"errorinfo":"","users":["3"]})", result, errorinfo, ids), 0);
    EXPECT_EQ(ids, (Ids{1, 2, 3}));
}

TEST_F(OLUSJsonHelper, UserIdsThatAreNoTextsAreLeftOut)
{
    Ids ids;
    EXPECT_EQ(
        helper.ParseUserIdList(R"({"result":200,"errorinfo":"","users":[17,null,"1",4.5,{"id":"2"},["3"],true,"4"]})",
                               result, errorinfo, ids),
        0);
    EXPECT_EQ(ids, (Ids{1, 4}));
    EXPECT_EQ(Errors(), Messages{});
}

TEST_F(OLUSJsonHelper, UserIdsAreReadAsFarAsTheyAreDecimal)
{
    Ids ids;
    EXPECT_EQ(helper.ParseUserIdList(
                  R"({"result":200,"errorinfo":"","users":
                      ["","12abc","0x10","010"," 42","\t7","+5","1 2","3.9","1e3","\u0038","9\u00001",
                       "4294967295","4294967296","99999999999999999999","-1"]})",
                  result, errorinfo, ids),
              0);
    EXPECT_EQ(ids, (Ids{0, 12, 0, 10, 42, 7, 5, 1, 3, 1, 8, 9, 4294967295U, 4294967295U, 4294967295U, 4294967295U}));
}

TEST_F(OLUSJsonHelper, UsersMustBeAnArray)
{
    Ids ids;
    for (const char* users : {"", R"(,"users":null)", R"(,"users":{})", R"(,"users":{"0":"17"})", R"(,"users":"17")",
                              R"(,"users":17)", R"(,"users":true)"})
    {
        const std::string reply = std::string(R"({"result":500,"errorinfo":"x")") + users + "}";
        EXPECT_EQ(helper.ParseUserIdList(reply, result, errorinfo, ids), 1) << users;
        EXPECT_STREQ(errorinfo, "get users error, it is not an array.") << users;
        EXPECT_EQ(result, 500) << users;
    }
    EXPECT_EQ(ids, Ids{});
    EXPECT_EQ(Errors(), Messages(7, "get users error, it is not an array."));
    EXPECT_EQ(Debugs(), Messages{});
}

TEST_F(OLUSJsonHelper, ErrorinfoIsLookedAtBeforeTheUsers)
{
    Ids ids;
    EXPECT_EQ(helper.ParseUserIdList(R"({"result":200})", result, errorinfo, ids), 1);
    EXPECT_STREQ(errorinfo, "get errorinfo error");
}

TEST_F(OLUSJsonHelper, UserIdListOfManyUsers)
{
    constexpr std::size_t kUsers = 100000;
    std::string reply = R"({"result":200,"errorinfo":"","users":[)";
    for (std::size_t i = 0; i < kUsers; ++i)
    {
        reply += (i == 0 ? "\"" : ",\"") + std::to_string(4000000000U + i) + "\"";
    }
    reply += "]}";
    Ids ids;
    ASSERT_EQ(helper.ParseUserIdList(reply, result, errorinfo, ids), 0);
    ASSERT_EQ(ids.size(), kUsers);
    for (std::size_t i = 0; i < kUsers; ++i)
    {
        ASSERT_EQ(ids[i], 4000000000U + i);
    }
}

TEST_F(OLUSJsonHelper, TotalCount)
{
    int total = 5;
    const std::string reply = R"({"result":200,"errorinfo":"e","total":-7})";
    EXPECT_EQ(helper.ParseTotalCount(reply, result, errorinfo, total), 0);
    EXPECT_EQ(result, 200);
    EXPECT_STREQ(errorinfo, "e");
    EXPECT_EQ(total, -7);
    ASSERT_EQ(Traces().size(), 1U);
    EXPECT_TRUE(Traces()[0].starts_with("OLUSJsonHelper::ParseTotalCount(" + reply)) << Traces()[0];
    EXPECT_EQ(Debugs(), Messages{R"(json result: result=200, total=-7, errorinfo="e")"});
}

TEST_F(OLUSJsonHelper, TotalMustBeThere)
{
    for (const char* body : {R"({"result":200,"errorinfo":""})", R"({"result":200,"errorinfo":"","total":null})"})
    {
        int total = 5;
        EXPECT_EQ(helper.ParseTotalCount(body, result, errorinfo, total), 1) << body;
        EXPECT_STREQ(errorinfo, "get total error") << body;
        EXPECT_EQ(total, 0) << body;
    }
    EXPECT_EQ(Errors(), Messages(2, "get total error"));
}

TEST_F(OLUSJsonHelper, TotalMustBeANumber)
{
    int total = 5;
    for (const char* value : {"\"3\"", "{}", "[]", "4294967296", "-2147483649"})
    {
        EXPECT_EQ(helper.ParseTotalCount(std::string(R"({"result":200,"errorinfo":"","total":)") + value + "}", result,
                                         errorinfo, total),
                  1)
            << value;
        EXPECT_STREQ(errorinfo, "parse json error") << value;
    }
    EXPECT_EQ(helper.ParseTotalCount(R"({"result":200,"errorinfo":"","total":3.9})", result, errorinfo, total), 0);
    EXPECT_EQ(total, 3);
}
