#include "ShareFileStorage/SFSJsonHelper.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using quorvex::CSFSJsonHelper;
using quorvex::EmoticonInfo;
using quorvex::LargeFileInfo;
using Messages = std::vector<std::string>;

namespace
{

/// What every caller presets.
constexpr int kPreset = 505;

/// Everything that a parser can give.
struct Reply
{
    int code = kPreset;
    const char* errorinfo = nullptr;
    const char* failure = nullptr;
    const char* uid = nullptr;
    const char* sid = nullptr;
    const char* fkey = nullptr;
    const char* ticket = nullptr;
    unsigned int fsize = 42;
    double totalSpace = -1;
    double totalSize = -1;
    double freeSpace = -1;
    std::vector<EmoticonInfo> emoticons;
    std::vector<LargeFileInfo> files;
};

using Parse = std::function<int(CSFSJsonHelper&, const std::string& body, Reply&)>;

int ParseResult(CSFSJsonHelper& helper, const std::string& body, Reply& r)
{
    return helper.ParseResult(body, r.code, r.errorinfo, r.failure);
}

int ParseLogin(CSFSJsonHelper& helper, const std::string& body, Reply& r)
{
    return helper.ParseLoginResponse(body, r.code, r.uid, r.sid, r.errorinfo, r.failure);
}

int ParseUpload(CSFSJsonHelper& helper, const std::string& body, Reply& r)
{
    return helper.ParseUploadResponse(body, r.code, r.fkey, r.fsize, r.errorinfo, r.failure);
}

int ParseEmoticons(CSFSJsonHelper& helper, const std::string& body, Reply& r)
{
    return helper.ParseEmoticonList(body, r.code, r.emoticons, r.errorinfo, r.failure);
}

int ParseFiles(CSFSJsonHelper& helper, const std::string& body, Reply& r)
{
    return helper.ParseLargeFileList(body, r.code, r.files, r.errorinfo, r.failure);
}

int ParseDepot(CSFSJsonHelper& helper, const std::string& body, Reply& r)
{
    return helper.ParseDepotInfo(body, r.code, r.uid, r.totalSpace, r.totalSize, r.freeSpace, r.errorinfo, r.failure);
}

int ParseApi(CSFSJsonHelper& helper, const std::string& body, Reply& r)
{
    return helper.ParseApiResponse(body, r.code, r.fkey, r.ticket, r.errorinfo, r.failure);
}

/// The keys of a JSON object and their values as they stand there.
using Members = std::vector<std::pair<std::string, std::string>>;

std::string Object(const Members& members)
{
    std::string text = "{";
    for (const auto& [key, value] : members)
    {
        text += (text.size() > 1 ? "," : "") + ("\"" + key + "\":" + value);
    }
    return text + "}";
}

Members Without(Members members, std::string_view key)
{
    std::erase_if(members, [&](const auto& member) { return member.first == key; });
    return members;
}

Members With(Members members, std::string_view key, const std::string& value)
{
    for (auto& member : members)
    {
        if (member.first == key)
        {
            member.second = value;
        }
    }
    return members;
}

/// A key that a parser demands, what it says without it, and whether it tests the value's type before it reads it.
struct Demand
{
    std::string key;
    std::string failure;
    bool isText = false;
};

struct Parser
{
    const char* name;
    Parse parse;
    Members good;
    std::vector<Demand> demands; ///< in the order in which they are looked at; the server's code is the first

    const std::string& CodeKey() const { return demands.front().key; }
};

void PrintTo(const Parser& parser, std::ostream* out)
{
    *out << parser.name;
}

const Members emoticon{{"fkey", "\"k1\""}, {"fname", "\"n1\""}, {"fsize", "5"}};
const Members largeFile{{"fkey", "\"k1\""}, {"fname", "\"n1\""}, {"fsize", "5"},
                        {"fmd5", "\"m1\""}, {"fsha1", "\"s1\""}, {"createtime", "\"2010-01-02 03:04:05\""},
                        {"finish", "1"},    {"leftminute", "-7"}};
const Demand resultDemand{"result", "get result error"};
const Demand errorinfoText{"errorinfo", "get errorinfo error", true};

const std::vector<Parser>& Parsers()
{
    static const std::vector<Parser> all{
        {"Result", ParseResult, {{"errorinfo", "\"fine\""}, {"result", "200"}}, {resultDemand, errorinfoText}},
        {"Login",
         ParseLogin,
         {{"errorinfo", "\"fine\""}, {"sid", "\"s1\""}, {"uid", "\"u1\""}, {"result", "200"}},
         {resultDemand,
          {"uid", "get uid error", true},
          {"sid", "get sid error", true},
          {"errorinfo", "get errorinfo error"}}},
        {"Upload",
         ParseUpload,
         {{"errorinfo", "\"fine\""}, {"fsize", "5"}, {"fkey", "\"k1\""}, {"result", "200"}},
         {resultDemand, {"fkey", "get fkey error", true}, {"fsize", "get fsize error"}, errorinfoText}},
        {"EmoticonList",
         ParseEmoticons,
         {{"files", "[" + Object(emoticon) + "]"}, {"errorinfo", "\"fine\""}, {"result", "200"}},
         {resultDemand, errorinfoText, {"files", "get files error, it is not an array.", true}}},
        {"LargeFileList",
         ParseFiles,
         {{"files", "[" + Object(largeFile) + "]"}, {"errorinfo", "\"fine\""}, {"result", "200"}},
         {resultDemand, errorinfoText, {"files", "get files error, it is not an array.", true}}},
        {"DepotInfo",
         ParseDepot,
         {{"errorinfo", "\"fine\""},
          {"freespace", "3"},
          {"totalsize", "2.5"},
          {"totalspace", "1e12"},
          {"uid", "\"u1\""},
          {"result", "200"}},
         {resultDemand,
          {"uid", "get uid error", true},
          {"totalspace", "get totalspace error"},
          {"totalsize", "get totalsize error"},
          {"freespace", "get freespace error"},
          errorinfoText}},
        {"Api",
         ParseApi,
         {{"msg", "\"fine\""}, {"fsize", "5"}, {"ticket", "\"t1\""}, {"fkey", "\"k1\""}, {"code", "200"}},
         {{"code", "get json code error"},
          {"fkey", "get fkey error"},
          {"ticket", "get ticket error"},
          {"fsize", "get fsize error"},
          {"msg", "get errorinfo error"}}},
    };
    return all;
}

/// What all parsers have in common.
class SFSJsonParser : public testing::TestWithParam<Parser>
{
protected:
    /// A parser of its own each time: texts live as long as it does.
    void ExpectFailure(const std::string& body, const std::string& failure, int code)
    {
        SCOPED_TRACE(body);
        log.clear();
        CSFSJsonHelper helper;
        Reply reply;
        EXPECT_EQ(GetParam().parse(helper, body, reply), 1);
        EXPECT_EQ(reply.code, code);
        ASSERT_NE(reply.failure, nullptr);
        EXPECT_EQ(reply.failure, failure);
        EXPECT_EQ(log.messages("ERROR"), Messages{failure});
    }

    /// Where the value's type shows only when it is read, what is said of it is nobody's promise.
    void ExpectUnreadable(const std::string& body)
    {
        SCOPED_TRACE(body);
        log.clear();
        CSFSJsonHelper helper;
        Reply reply;
        EXPECT_EQ(GetParam().parse(helper, body, reply), 1);
        ASSERT_NE(reply.failure, nullptr);
        EXPECT_STRNE(reply.failure, "");
        EXPECT_EQ(log.messages("ERROR"), Messages{reply.failure});
    }

    support::LogCapture log;
};

struct SFSJsonHelper : testing::Test
{
    /// What a good reply logs last.
    std::string LastDebugLine() const
    {
        const Messages lines = log.messages("DEBUG");
        return lines.empty() ? "" : lines.back();
    }

    support::LogCapture log;
    CSFSJsonHelper helper;
    Reply reply;
};

std::string ListReply(const std::string& elements)
{
    return R"({"result":200,"errorinfo":"","files":[)" + elements + "]}";
}

bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

} // namespace

TEST_P(SFSJsonParser, ReadsAGoodReply)
{
    CSFSJsonHelper helper;
    Reply reply;
    EXPECT_EQ(GetParam().parse(helper, Object(GetParam().good), reply), 0);
    EXPECT_EQ(reply.code, 200);
    EXPECT_STREQ(reply.errorinfo, "fine");
    EXPECT_EQ(log.messages("ERROR"), Messages{});
    const Messages lines = log.messages("DEBUG");
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(lines.back().starts_with("json result: result=200")) << lines.back();
    EXPECT_TRUE(Contains(lines.back(), " errorinfo=\"fine")) << lines.back();
}

TEST_P(SFSJsonParser, DemandsItsKeys)
{
    for (const Demand& demand : GetParam().demands)
    {
        const int code = demand.key == GetParam().CodeKey() ? 505 : 200;
        ExpectFailure(Object(Without(GetParam().good, demand.key)), demand.failure, code);
        ExpectFailure(Object(With(GetParam().good, demand.key, "null")), demand.failure, code);
    }
}

TEST_P(SFSJsonParser, LooksAtItsKeysInTheirOrder)
{
    Members members = GetParam().good;
    for (auto demand = GetParam().demands.rbegin(); demand != GetParam().demands.rend(); ++demand)
    {
        members = Without(members, demand->key);
        ExpectFailure(Object(members), demand->failure, demand->key == GetParam().CodeKey() ? 505 : 200);
    }
}

TEST_P(SFSJsonParser, WantsTexts)
{
    for (const Demand& demand : GetParam().demands)
    {
        if (!demand.isText)
        {
            continue;
        }
        for (const char* wrong : {"7", "true", "{}", "1.5"})
        {
            ExpectFailure(Object(With(GetParam().good, demand.key, wrong)), demand.failure, 200);
        }
    }
}

TEST_P(SFSJsonParser, CannotReadOtherTypes)
{
    for (const Demand& demand : GetParam().demands)
    {
        if (demand.isText)
        {
            continue;
        }
        for (const char* wrong : {"{}", "[]", "[5]"})
        {
            ExpectUnreadable(Object(With(GetParam().good, demand.key, wrong)));
        }
    }
    for (const char* wrong : {"\"200\"", "\"\"", "2147483648", "-2147483649", "1e30"})
    {
        ExpectUnreadable(Object(With(GetParam().good, GetParam().CodeKey(), wrong)));
    }
}

TEST_P(SFSJsonParser, KeepsTheCodeWhenTheBodyIsNoJson)
{
    for (const char* body : {"", " ", "<html>", "{", R"({"result":200)", R"({"result" 200})", "{]"})
    {
        ExpectFailure(body, "parse json error", kPreset);
    }
    CSFSJsonHelper helper;
    Reply reply;
    reply.code = 17;
    EXPECT_EQ(GetParam().parse(helper, "<html>", reply), 1);
    EXPECT_EQ(reply.code, 17);
}

TEST_P(SFSJsonParser, SetsTheCodeWhenThereIsNoResult)
{
    const std::string& key = GetParam().CodeKey();
    for (const std::string& body : {std::string("{}"), "{\"" + key + "\":null}", "{\"" + key + "s\":200}",
                                    std::string(R"({"Result":200,"Code":200})")})
    {
        ExpectFailure(body, GetParam().demands.front().failure, 505);
    }
    CSFSJsonHelper helper;
    Reply reply;
    reply.code = 17;
    EXPECT_EQ(GetParam().parse(helper, "{}", reply), 1);
    EXPECT_EQ(reply.code, 505);
}

TEST_P(SFSJsonParser, CannotReadWhatIsNoObject)
{
    for (const char* body : {"[]", "[200]", "5", "\"text\"", "true"})
    {
        ExpectUnreadable(body);
    }
    ExpectUnreadable(std::string(5000, '['));
    ExpectUnreadable("{\"" + GetParam().CodeKey() + "\":" + std::string(5000, '[') + std::string(5000, ']') + "}");
}

TEST_P(SFSJsonParser, HandsOutTheServersCode)
{
    for (const auto& [text, code] : {std::pair{"403", 403}, std::pair{"0", 0}, std::pair{"-7", -7},
                                     std::pair{"2147483647", 2147483647}, std::pair{"-2147483648", INT_MIN}})
    {
        CSFSJsonHelper helper;
        Reply reply;
        EXPECT_EQ(GetParam().parse(helper, Object(With(GetParam().good, GetParam().CodeKey(), text)), reply), 0)
            << text;
        EXPECT_EQ(reply.code, code);
    }
}

TEST_P(SFSJsonParser, ReadsOneReplyAfterTheOther)
{
    CSFSJsonHelper helper;
    Reply reply;
    EXPECT_EQ(GetParam().parse(helper, "{", reply), 1);
    EXPECT_EQ(GetParam().parse(helper, Object(GetParam().good), reply), 0);
    EXPECT_EQ(reply.code, 200);
    EXPECT_EQ(GetParam().parse(helper, "{}", reply), 1);
    EXPECT_EQ(reply.code, 505);
}

INSTANTIATE_TEST_SUITE_P(All, SFSJsonParser, testing::ValuesIn(Parsers()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(SFSJsonHelper, LoginReply)
{
    EXPECT_EQ(ParseLogin(helper, R"({"result":200,"uid":"7","sid":"s1","errorinfo":"x"})", reply), 0);
    EXPECT_STREQ(reply.uid, "7");
    EXPECT_STREQ(reply.sid, "s1");
    EXPECT_EQ(log.messages("TRACE"), Messages{"CSFSJsonHelper::ParseLoginResponse nRespCode=200"});
}

TEST_F(SFSJsonHelper, LoginReplyWithoutUidIsNoRefusal)
{
    EXPECT_EQ(ParseLogin(helper, R"({"result":403,"errorinfo":"who?"})", reply), 1);
    EXPECT_EQ(reply.code, 403);
    EXPECT_STREQ(reply.failure, "get uid error");
    EXPECT_STREQ(reply.uid, "");
    EXPECT_EQ(log.messages("TRACE"), Messages{"CSFSJsonHelper::ParseLoginResponse nRespCode=403"});
}

TEST_F(SFSJsonHelper, UploadReply)
{
    EXPECT_EQ(ParseUpload(helper, R"({"result":409,"fkey":"k1","fsize":4294967295,"errorinfo":"there"})", reply), 0);
    EXPECT_EQ(reply.code, 409);
    EXPECT_STREQ(reply.fkey, "k1");
    EXPECT_EQ(reply.fsize, 4294967295U);
    EXPECT_TRUE(Contains(LastDebugLine(), ", fkey=k1")) << LastDebugLine();
    EXPECT_TRUE(Contains(LastDebugLine(), ", fsize=4294967295")) << LastDebugLine();
}

TEST_F(SFSJsonHelper, ApiReply)
{
    EXPECT_EQ(ParseApi(helper, R"({"code":200,"fkey":"k1","ticket":"t1","fsize":4294967295,"msg":"fine"})", reply), 0);
    EXPECT_EQ(reply.code, 200);
    EXPECT_STREQ(reply.fkey, "k1");
    EXPECT_STREQ(reply.ticket, "t1");
    EXPECT_STREQ(reply.errorinfo, "fine");
    EXPECT_TRUE(LastDebugLine().starts_with("json result: result=200")) << LastDebugLine();
    EXPECT_TRUE(Contains(LastDebugLine(), ",  errorinfo=\"fine")) << LastDebugLine();
}

TEST_F(SFSJsonHelper, ApiReplyTakesNoOtherKeys)
{
    EXPECT_EQ(ParseApi(helper, R"({"result":200,"fkey":"k1","ticket":"t1","fsize":5,"errorinfo":""})", reply), 1);
    EXPECT_STREQ(reply.failure, "get json code error");
    EXPECT_EQ(ParseApi(helper, R"({"code":200,"fkey":"k1","ticket":"t1","fsize":5,"errorinfo":""})", reply), 1);
    EXPECT_STREQ(reply.failure, "get errorinfo error");
}

TEST_F(SFSJsonHelper, ApiReplyWithAWrongSize)
{
    for (const char* wrong : {"\"5\"", "-1", "4294967296"})
    {
        EXPECT_EQ(ParseApi(helper,
                           std::string(R"({"code":200,"fkey":"k","ticket":"t","msg":"","fsize":)") + wrong + "}",
                           reply),
                  1)
            << wrong;
    }
}

TEST_F(SFSJsonHelper, UploadReplyWithoutSizeHasNone)
{
    EXPECT_EQ(ParseUpload(helper, R"({"result":200,"fkey":"k1","errorinfo":""})", reply), 1);
    EXPECT_EQ(reply.fsize, 0U);
}

TEST_F(SFSJsonHelper, UploadReplyWithAWrongSize)
{
    for (const char* wrong : {"\"5\"", "-1", "4294967296"})
    {
        EXPECT_EQ(ParseUpload(helper, std::string(R"({"result":200,"fkey":"k","errorinfo":"","fsize":)") + wrong + "}",
                              reply),
                  1)
            << wrong;
    }
}

TEST_F(SFSJsonHelper, LoginReasonIsReadAsText)
{
    for (const char* wrong : {"5", "true", "{}"})
    {
        EXPECT_EQ(
            ParseLogin(helper, std::string(R"({"result":200,"uid":"7","sid":"s","errorinfo":)") + wrong + "}", reply),
            1)
            << wrong;
    }
}

TEST_F(SFSJsonHelper, DepotInfo)
{
    EXPECT_EQ(ParseDepot(helper,
                         R"({"result":200,"uid":"7","totalspace":1e12,"totalsize":0.25,"freespace":-3,"errorinfo":""})",
                         reply),
              0);
    EXPECT_STREQ(reply.uid, "7");
    EXPECT_EQ(reply.totalSpace, 1e12);
    EXPECT_EQ(reply.totalSize, 0.25);
    EXPECT_EQ(reply.freeSpace, -3);
    for (const char* part : {", totalspace=", ", totalsize=0.25", ", freespace=-3"})
    {
        EXPECT_TRUE(Contains(LastDebugLine(), part)) << LastDebugLine();
    }
}

TEST_F(SFSJsonHelper, DepotInfoWantsNumbers)
{
    for (const char* key : {"totalspace", "totalsize", "freespace"})
    {
        const Members good{{"result", "200"},  {"uid", "\"\""},    {"totalspace", "1"},
                           {"totalsize", "1"}, {"freespace", "1"}, {"errorinfo", "\"\""}};
        EXPECT_EQ(ParseDepot(helper, Object(With(good, key, "\"5\"")), reply), 1) << key;
    }
}

TEST_F(SFSJsonHelper, EmoticonList)
{
    EXPECT_EQ(
        ParseEmoticons(helper,
                       ListReply(R"({"fkey":"k1","fname":"n1","fsize":1},{"fsize":4294967295,"fname":"","fkey":""})"),
                       reply),
        0);
    ASSERT_EQ(reply.emoticons.size(), 2U);
    EXPECT_STREQ(reply.emoticons[0].fkey, L"k1");
    EXPECT_STREQ(reply.emoticons[0].fname, L"n1");
    EXPECT_EQ(reply.emoticons[0].fsize, 1U);
    EXPECT_STREQ(reply.emoticons[1].fkey, L"");
    EXPECT_EQ(reply.emoticons[1].fsize, 4294967295U);

    const Messages lines = log.messages("DEBUG");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[0].starts_with("json result: fkey=k1")) << lines[0];
    EXPECT_TRUE(Contains(lines[0], ", fname=n1")) << lines[0];
    EXPECT_TRUE(Contains(lines[0], ", fsize=1")) << lines[0];
    EXPECT_TRUE(Contains(lines[2], ", vecEmoticonList.size()=2")) << lines[2];
}

TEST_F(SFSJsonHelper, LargeFileList)
{
    EXPECT_EQ(ParseFiles(helper, ListReply(Object(largeFile)), reply), 0);
    ASSERT_EQ(reply.files.size(), 1U);
    const LargeFileInfo& file = reply.files[0];
    EXPECT_STREQ(file.fkey, L"k1");
    EXPECT_STREQ(file.fname, L"n1");
    EXPECT_EQ(file.fsize, 5U);
    EXPECT_STREQ(file.fmd5, L"m1");
    EXPECT_STREQ(file.fsha1, L"s1");
    EXPECT_STREQ(file.createtime, L"2010-01-02 03:04:05");
    EXPECT_EQ(file.finish, 1);
    EXPECT_EQ(file.leftminute, -7);

    const Messages lines = log.messages("DEBUG");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(lines[0].starts_with("json result: fkey=k1")) << lines[0];
    std::size_t at = 0;
    for (const char* part : {", fname=n1", ", fsize=5", ", fmd5=m1", ", fsha1=s1", ", createtime=2010-01-02 03:04:05",
                             ", finish=1", ", leftminute=-7"})
    {
        at = lines[0].find(part, at);
        ASSERT_NE(at, std::string::npos) << part << " in " << lines[0];
    }
    EXPECT_TRUE(Contains(lines[1], ", vecLargeFileList.size()=1")) << lines[1];
}

TEST_F(SFSJsonHelper, EmptyListsAreLists)
{
    EXPECT_EQ(ParseEmoticons(helper, ListReply(""), reply), 0);
    EXPECT_TRUE(Contains(LastDebugLine(), ", vecEmoticonList.size()=0")) << LastDebugLine();
    EXPECT_EQ(ParseFiles(helper, ListReply(""), reply), 0);
    EXPECT_TRUE(Contains(LastDebugLine(), ", vecLargeFileList.size()=0")) << LastDebugLine();
    EXPECT_TRUE(reply.emoticons.empty());
    EXPECT_TRUE(reply.files.empty());
}

TEST_F(SFSJsonHelper, RecordsAreAppended)
{
    EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(emoticon)), reply), 0);
    EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(emoticon)), reply), 0);
    EXPECT_EQ(reply.emoticons.size(), 2U);
    EXPECT_EQ(ParseFiles(helper, ListReply(Object(largeFile)), reply), 0);
    EXPECT_EQ(ParseFiles(helper, ListReply(Object(largeFile)), reply), 0);
    EXPECT_EQ(reply.files.size(), 2U);
}

TEST_F(SFSJsonHelper, AListStopsAtAnEmoticonWithoutItsKeys)
{
    for (const auto& [key, value] : emoticon)
    {
        for (const std::string& bad : {Object(Without(emoticon, key)), Object(With(emoticon, key, "null"))})
        {
            SCOPED_TRACE(bad);
            log.clear();
            Reply half;
            EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(emoticon) + "," + bad + "," + Object(emoticon)), half),
                      1);
            EXPECT_EQ(half.emoticons.size(), 1U);
            const std::string failure = "get emotion_file[\"" + key + "\"] error";
            EXPECT_EQ(half.failure, failure);
            EXPECT_EQ(log.messages("ERROR"), Messages{failure});
        }
    }
}

TEST_F(SFSJsonHelper, AListStopsAtAFileWithoutItsKeys)
{
    for (const auto& [key, value] : largeFile)
    {
        for (const std::string& bad : {Object(Without(largeFile, key)), Object(With(largeFile, key, "null"))})
        {
            SCOPED_TRACE(bad);
            log.clear();
            Reply half;
            EXPECT_EQ(ParseFiles(helper, ListReply(Object(largeFile) + "," + bad + "," + Object(largeFile)), half), 1);
            EXPECT_EQ(half.files.size(), 1U);
            const std::string failure = "get file[\"" + key + "\"] error";
            EXPECT_EQ(half.failure, failure);
            EXPECT_EQ(log.messages("ERROR"), Messages{failure});
        }
    }
}

TEST_F(SFSJsonHelper, AnElementsKeysAreLookedAtInTheirOrder)
{
    Members members = largeFile;
    for (auto member = largeFile.rbegin(); member != largeFile.rend(); ++member)
    {
        members = Without(members, member->first);
        EXPECT_EQ(ParseFiles(helper, ListReply(Object(members)), reply), 1);
        EXPECT_EQ(reply.failure, "get file[\"" + member->first + "\"] error");
    }
    members = emoticon;
    for (auto member = emoticon.rbegin(); member != emoticon.rend(); ++member)
    {
        members = Without(members, member->first);
        EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(members)), reply), 1);
        EXPECT_EQ(reply.failure, "get emotion_file[\"" + member->first + "\"] error");
    }
    EXPECT_TRUE(reply.files.empty());
    EXPECT_TRUE(reply.emoticons.empty());
}

TEST_F(SFSJsonHelper, AListStopsAtAValueOfTheWrongType)
{
    for (const auto& [key, value] : largeFile)
    {
        const bool isText = value.front() == '"';
        for (const char* wrong : {isText ? "7" : "\"7\"", "{}", "[]"})
        {
            SCOPED_TRACE(key + "=" + wrong);
            log.clear();
            Reply half;
            const std::string bad = Object(With(largeFile, key, wrong));
            EXPECT_EQ(ParseFiles(helper, ListReply(Object(largeFile) + "," + bad), half), 1);
            EXPECT_EQ(half.files.size(), 1U);
            EXPECT_EQ(log.messages("ERROR").size(), 1U);
        }
    }
    for (const char* wrong : {"-1", "4294967296"})
    {
        EXPECT_EQ(ParseFiles(helper, ListReply(Object(With(largeFile, "fsize", wrong))), reply), 1) << wrong;
        EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(With(emoticon, "fsize", wrong))), reply), 1) << wrong;
    }
    for (const char* key : {"finish", "leftminute"})
    {
        EXPECT_EQ(ParseFiles(helper, ListReply(Object(With(largeFile, key, "2147483648"))), reply), 1) << key;
    }
}

TEST_F(SFSJsonHelper, AListStopsAtWhatIsNoRecord)
{
    for (const char* element : {"5", "\"x\"", "[]", "true", "null", "{}"})
    {
        SCOPED_TRACE(element);
        Reply half;
        EXPECT_EQ(ParseFiles(helper, ListReply(Object(largeFile) + "," + element), half), 1);
        EXPECT_EQ(half.files.size(), 1U);
        EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(emoticon) + "," + element), half), 1);
        EXPECT_EQ(half.emoticons.size(), 1U);
    }
}

TEST_F(SFSJsonHelper, OverlongTextsRunOnWithinTheRecordOnly)
{
    const std::string longText = "\"" + std::string(5000, 'x') + "\"";
    const auto whole = [](const auto& field) { return std::wstring(std::begin(field), std::end(field)); };

    Members members = emoticon;
    for (const char* key : {"fkey", "fname"})
    {
        members = With(members, key, longText);
    }
    EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(members) + "," + Object(emoticon)), reply), 0);
    ASSERT_EQ(reply.emoticons.size(), 2U);
    EXPECT_EQ(whole(reply.emoticons[0].fkey), std::wstring(65, L'x'));
    EXPECT_EQ(whole(reply.emoticons[0].fname), std::wstring(65, L'x'));
    EXPECT_EQ(reply.emoticons[0].fsize, 5U);
    EXPECT_STREQ(reply.emoticons[1].fkey, L"k1");

    members = largeFile;
    for (const char* key : {"fkey", "fname", "fmd5", "fsha1", "createtime"})
    {
        members = With(members, key, longText);
    }
    EXPECT_EQ(ParseFiles(helper, ListReply(Object(members) + "," + Object(largeFile)), reply), 0);
    ASSERT_EQ(reply.files.size(), 2U);
    const LargeFileInfo& file = reply.files[0];
    EXPECT_EQ(whole(file.fkey), std::wstring(65, L'x'));
    EXPECT_EQ(whole(file.fname), std::wstring(65, L'x'));
    EXPECT_EQ(file.fsize, 5U);
    EXPECT_EQ(whole(file.fmd5), std::wstring(33, L'x'));
    EXPECT_EQ(whole(file.fsha1), std::wstring(41, L'x'));
    EXPECT_EQ(whole(file.createtime), std::wstring(20, L'x'));
    EXPECT_EQ(file.finish, 1);
    EXPECT_EQ(file.leftminute, -7);
    EXPECT_STREQ(reply.files[1].fkey, L"k1");
}

TEST_F(SFSJsonHelper, ATextThatRunsOnIsOverwrittenByTheFieldsBehind)
{
    EXPECT_EQ(
        ParseFiles(helper, ListReply(Object(With(largeFile, "fkey", "\"" + std::string(100, 'x') + "\""))), reply), 0);
    ASSERT_EQ(reply.files.size(), 1U);
    EXPECT_EQ(std::wstring(reply.files[0].fkey, 65), std::wstring(65, L'x'));
    EXPECT_STREQ(reply.files[0].fname, L"n1");
    EXPECT_EQ(reply.files[0].fsize, 5U);
}

TEST_F(SFSJsonHelper, TextsThatFillTheirFields)
{
    Members members = With(largeFile, "fkey", "\"" + std::string(64, 'k') + "\"");
    members = With(members, "fmd5", "\"" + std::string(32, 'm') + "\"");
    members = With(members, "fsha1", "\"" + std::string(40, 's') + "\"");
    EXPECT_EQ(ParseFiles(helper, ListReply(Object(members)), reply), 0);
    ASSERT_EQ(reply.files.size(), 1U);
    EXPECT_EQ(std::wstring(reply.files[0].fkey), std::wstring(64, L'k'));
    EXPECT_EQ(std::wstring(reply.files[0].fmd5), std::wstring(32, L'm'));
    EXPECT_EQ(std::wstring(reply.files[0].fsha1), std::wstring(40, L's'));
}

TEST_F(SFSJsonHelper, TextsAreInTheAnsiCodePage)
{
    EXPECT_EQ(ParseEmoticons(helper, ListReply(Object(With(emoticon, "fname", "\"\xE9\""))), reply), 0);
    ASSERT_EQ(reply.emoticons.size(), 1U);
    EXPECT_STREQ(reply.emoticons[0].fname, L"\u00E9");
}
