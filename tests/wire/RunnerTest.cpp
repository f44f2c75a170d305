// What finds differences is tested for finding them.

#include "wire/Arguments.h"
#include "wire/CaseFile.h"
#include "wire/Comparison.h"

#include <quorvex/NetDiskRecords.h>

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <string>

using namespace wire;

namespace
{

const Variables variables{{"host", "127.0.0.1"}, {"port", "80"}, {"dir", "C:\\t"}};
const HeadTemplates heads{{"get", "GET $1 HTTP/1.1\\r\\nHost: ${host}\\r\\n\\r\\n"},
                          {"post", "POST $1\\r\\nContent-Length: ${length}\\r\\n\\r\\n"}};
const std::string boundaryA(40, 'A');
const std::string boundaryB(40, 'b');

bool matches(const char* raw, const std::string& bytes)
{
    return Pattern(raw, variables).match(bytes).matched;
}

TEST(Patterns, ResolveEscapesAndPlaceholders)
{
    EXPECT_EQ(expand(R"(a\r\n\t\\\"\$\x00\xFF)", variables), std::string("a\r\n\t\\\"$\0\xFF", 9));
    EXPECT_EQ(expand(R"(\u00e4\u4e2d\U0001F600)", variables), "\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80");
    EXPECT_EQ(expand("${host}:${port} {\"a\":1} ${3*ab}${2*\\x7d}", variables), "127.0.0.1:80 {\"a\":1} ababab}}");
    EXPECT_EQ(expand("${pattern:70000}", variables).size(), 70000u);
}

TEST(Patterns, RefuseWhatTheyDoNotKnow)
{
    for (const char* raw : {"\\q", "\\", "\\xG0", "\\u12", "${nobody}", "${host", "${x*a}"})
        EXPECT_THROW(expand(raw, variables), CaseError) << raw;
    EXPECT_THROW(expand("${boundary}", variables), CaseError);
}

TEST(Patterns, MatchTheWholeText)
{
    EXPECT_TRUE(matches("ab", "ab"));
    EXPECT_FALSE(matches("ab", "abc"));
    EXPECT_FALSE(matches("ab", "a"));
    EXPECT_TRUE(matches("a${any}c", "a b\nc"));
    EXPECT_FALSE(matches("a${any}c", "a b\ncd"));
    EXPECT_TRUE(matches("${number}!", "123!"));
    EXPECT_FALSE(matches("${number}!", "!"));
    EXPECT_FALSE(matches("${number}!", "-1!"));
}

TEST(Patterns, HoldOneBoundaryThroughout)
{
    const char* const raw = "--${boundary}\\r\\n--${boundary}--";
    EXPECT_TRUE(matches(raw, "--" + boundaryA + "\r\n--" + boundaryA + "--"));
    EXPECT_FALSE(matches(raw, "--" + boundaryA + "\r\n--" + boundaryB + "--"));
    EXPECT_FALSE(matches(raw, "--" + boundaryA.substr(1) + "-\r\n--" + boundaryA.substr(1) + "---"));
    EXPECT_FALSE(matches(raw, "--short\r\n--short--"));
}

TEST(Patterns, KnowTheSystemErrorLine)
{
    const std::string line = "GetLastError()=12029 : Text\r\n.\\src\\HttpHelper.cpp:7";
    EXPECT_TRUE(matches("${system-error}", line));
    EXPECT_TRUE(matches("${system-error:12029}", line));
    EXPECT_FALSE(matches("${system-error:12030}", line));
    EXPECT_FALSE(matches("${system-error}", "GetLastError()=12029 : Text"));
}

TEST(Patterns, CountWhatFollowsTheHead)
{
    Pattern pattern("Content-Length: ${length}\\r\\n\\r\\nab${boundary}", variables);
    pattern.resolveLength();
    EXPECT_TRUE(pattern.match("Content-Length: 42\r\n\r\nab" + boundaryA).matched);
}

/// What is found to differ in a vector of three records.
std::string recordsDifference(std::string_view kind, const std::string& expected)
{
    return makeRecords(kind, {"a", "b", "b"})->difference(&expected, variables);
}

TEST(RecordVectors, HoldWhatTheyAreGiven)
{
    EXPECT_EQ(recordsDifference("files", R"({fkey="a"} 2*{fkey="b"})"), "");
    EXPECT_EQ(recordsDifference("files-utf8", R"({fkey="a"} {fkey="b", size=0, name=""} {fkey="b"})"), "");
    EXPECT_EQ(recordsDifference("folders", R"({fo_id="a"} 2*{fo_id="b"})"), "");
    EXPECT_EQ(recordsDifference("folders-utf8", R"({fo_id="a"} 2*{fo_id="b"})"), "");
    EXPECT_EQ(recordsDifference("pcodes", R"({pcode="a"} 2*{pcode="b"})"), "");
    EXPECT_EQ(recordsDifference("items", R"({rs_id="a"} 2*{rs_id="b"})"), "");
    EXPECT_EQ(recordsDifference("items-utf8", R"({rs_id="a"} 2*{rs_id="b"})"), "");
    EXPECT_EQ(recordsDifference("large-files", R"({fkey="a"} 2*{fkey="b", createtime=""})"), "");
}

TEST(RecordVectors, ShowWhatDiffers)
{
    EXPECT_EQ(recordsDifference("files", R"({fkey="a"})"), "has 3 records instead of 1");
    EXPECT_EQ(recordsDifference("files", ""), "has 3 records instead of 0");
    EXPECT_EQ(recordsDifference("files", R"({fkey="a"} {fkey="b", ctime=-1} {fkey="b"})"),
              R"(record 2 is {fkey="b"} instead of {fkey="b", ctime=-1})");
    EXPECT_EQ(recordsDifference("items-utf8", R"(2*{rs_id="a"} {rs_id="b"})"),
              R"(record 2 is {rs_id="b"} instead of {rs_id="a"})");
}

TEST(RecordVectors, MustBeAsBeforeUnlessSomethingIsExpected)
{
    const auto forms = parseArguments(R"((files f{"a"}, items i))", variables);
    Arguments arguments(forms);
    EXPECT_TRUE(arguments.differences({}, variables).empty());
    auto& files = arguments.records<quorvex::netdisk::_FileInfo>(0);
    files[0].size = 7;
    EXPECT_EQ(arguments.differences({}, variables).size(), 1u);
    EXPECT_TRUE(arguments.differences({{"f", R"({fkey="a", size=7})"}}, variables).empty());
    arguments.records<quorvex::netdisk::_RItemInfo>(1).emplace_back();
    EXPECT_EQ(arguments.differences({{"f", R"({fkey="a", size=7})"}}, variables).size(), 1u);
    EXPECT_TRUE(arguments.holds<quorvex::netdisk::_FileInfo>(0));
    EXPECT_FALSE(arguments.holds<quorvex::netdisk::_FileInfoUTF8>(0));
    EXPECT_THROW(arguments.records<quorvex::netdisk::_PcodeInfo>(0), CaseError);
}

TEST(RecordVectors, RefuseWhatTheyDoNotKnow)
{
    for (const char* expected : {R"({nobody="a"})", "{size}", R"({fkey="${34*x}"})", R"({fkey="a"} 2)", "{fkey=\"a\""})
        EXPECT_THROW(recordsDifference("files", expected), CaseError) << expected;
    EXPECT_THROW(makeRecords("nothing", {}), CaseError);
    EXPECT_THROW(parseArguments("(files f{)", variables), CaseError);
}

TEST(ArgumentLists, AreRead)
{
    const auto forms =
        parseArguments(R"x((null, "a\u4e2d)\"", 0x10, data "b", out n=-1, wide k[5], bytes d[3]))x", variables);
    ASSERT_EQ(forms.size(), 7u);
    EXPECT_EQ(forms[1].text, "a\xE4\xB8\xAD)\"");
    EXPECT_EQ(forms[2].number, 16);
    EXPECT_EQ(forms[3].text, "b");
    EXPECT_EQ(forms[4].number, -1);
    EXPECT_EQ(forms[5].name, "k");
    EXPECT_EQ(forms[6].number, 3);
    for (const char* raw : {"", "(", "(\"a)", "(1", "(1) 2", "(x)", "(wide k)"})
        EXPECT_THROW(parseArguments(raw, variables), CaseError) << raw;
}

TEST(ArgumentLists, TellWhatWasWritten)
{
    Arguments arguments(parseArguments("(wide k[5], bytes d[3], out n=7)", variables));
    arguments.out<unsigned long>(2);
    EXPECT_TRUE(arguments.differences({}, variables).empty());

    std::wmemcpy(arguments.wide(0), L"abc", 4);
    std::memcpy(arguments.buffer(1), "xy", 2);
    arguments.out<unsigned long>(2) = 4294967295u;
    EXPECT_EQ(arguments.differences({}, variables).size(), 3u);
    EXPECT_TRUE(arguments.differences({{"k", "\"abc\""}, {"d", "\"xy\""}, {"n", "4294967295"}}, variables).empty());
    EXPECT_EQ(arguments.differences({{"k", "\"ab\""}, {"d", "\"x\""}, {"n", "1"}}, variables).size(), 3u);
    EXPECT_THROW(arguments.differences({{"other", "1"}}, variables), CaseError);
}

TEST(ArgumentLists, TellWhichFractionsWereWritten)
{
    Arguments arguments(parseArguments("(out d, out e)", variables));
    arguments.out<double>(0);
    arguments.out<double>(1);
    EXPECT_TRUE(arguments.differences({}, variables).empty());
    arguments.out<double>(0) = 2.5;
    arguments.out<double>(1) = -1e300;
    EXPECT_TRUE(arguments.differences({{"d", "2.5"}, {"e", "-1e+300"}}, variables).empty());
    EXPECT_EQ(arguments.differences({{"d", "2"}, {"e", "0"}}, variables).size(), 2u);
    EXPECT_EQ(arguments.differences({}, variables).size(), 2u);
}

TEST(ArgumentLists, HoldNarrowTexts)
{
    const Arguments arguments(parseArguments(R"x((texts{"a", 2*"b\xFF"}, texts, "c\xFF", null))x", variables));
    EXPECT_EQ(arguments.texts(0), (std::vector<std::string>{"a", "b\xFF", "b\xFF"}));
    EXPECT_TRUE(arguments.texts(1).empty());
    EXPECT_STREQ(arguments.bytes(2), "c\xFF");
    EXPECT_EQ(arguments.bytes(3), nullptr);
    EXPECT_THROW(arguments.texts(2), CaseError);
}

TEST(ArgumentLists, TellWhichIdsWereWritten)
{
    Arguments arguments(parseArguments("(ids u[4])", variables));
    EXPECT_TRUE(arguments.differences({}, variables).empty());
    arguments.ids(0)[0] = 4294967295u;
    arguments.ids(0)[1] = arguments.ids(0)[2] = 42;
    EXPECT_TRUE(arguments.differences({{"u", "4294967295 2*42"}}, variables).empty());
    EXPECT_EQ(arguments.differences({}, variables).size(), 1u);
    EXPECT_EQ(arguments.differences({{"u", "4294967295 42"}}, variables).size(), 1u);
    EXPECT_EQ(arguments.differences({{"u", "4294967295 3*42"}}, variables).size(), 1u);
    EXPECT_EQ(arguments.differences({{"u", "4294967295 43 42"}}, variables).size(), 1u);
    EXPECT_THROW(arguments.differences({{"u", "x"}}, variables), CaseError);
    arguments.ids(0)[4] = 1;
    EXPECT_EQ(arguments.differences({{"u", "4294967295 2*42"}}, variables).size(), 1u);
}

TEST(ArgumentLists, TellWhatWasWrittenOutside)
{
    Arguments arguments(parseArguments("(wide k[3])", variables));
    std::wmemcpy(arguments.wide(0), L"abc", 4);
    EXPECT_EQ(arguments.differences({{"k", "\"abc\""}}, variables).size(), 1u);
}

TEST(CaseFiles, AreRead)
{
    const CaseFile file = parseCase("# why\n"
                                    "client netdisk(\"http://${host}\", null)\n"
                                    "file a.txt con\\ntent\n"
                                    "fail WinHttpOpen 2 5\n"
                                    "levels ERROR DEBUG\n"
                                    "call FileDelete(\"k\")\n"
                                    "result -100\n"
                                    "out key \"abc\"\n"
                                    "exchange\n"
                                    ">head get /x\n"
                                    "<reply 200 abc\n"
                                    "exchange\n"
                                    "> POST /y\n"
                                    ">\n"
                                    ">- body\n"
                                    "< HTTP/1.1 200 OK\n"
                                    "<\n"
                                    "<chunk ${17*x}\n"
                                    "<piece\n"
                                    "<- end\n"
                                    "<reset\n"
                                    "log ERROR Not connect to server.\n"
                                    "exact ERROR INFO\n"
                                    "after b.txt x\n"
                                    "absent c.txt\n",
                                    heads, variables);
    ASSERT_EQ(file.steps.size(), 5u);
    EXPECT_EQ(std::get<CallStep>(file.steps[4]).result, "-100");
    EXPECT_EQ(std::get<CallStep>(file.steps[4]).outs.at("key"), "\"abc\"");
    EXPECT_EQ(std::get<LevelsStep>(file.steps[3]).levels, 10u);
    ASSERT_EQ(file.requests.size(), 2u);
    EXPECT_EQ(file.requests[0].pattern.text(), "GET /x HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    EXPECT_EQ(file.requests[1].pattern.text(), "POST /y\r\n\r\nbody");
    EXPECT_EQ(file.replies[0].pieces.front(),
              "HTTP/1.1 200 Answer\r\nContent-Length: 3\r\nConnection: close\r\n\r\nabc");
    ASSERT_EQ(file.replies[1].pieces.size(), 2u);
    EXPECT_EQ(file.replies[1].pieces[0], "HTTP/1.1 200 OK\r\n\r\n11\r\n" + std::string(17, 'x') + "\r\n");
    EXPECT_EQ(file.replies[1].ending, support::Exchange::Ending::Reset);
    EXPECT_EQ(file.log.size(), 1u);
    EXPECT_EQ(file.exactLevels.size(), 2u);
}

TEST(CaseFiles, NameTheLineOfAMistake)
{
    for (const char* content :
         {"call X()\nnonsense 1\n", "\n> no exchange\n", "\nresult 0\n", "\nexchange x\\q\n>- \\q\n"})
    {
        try
        {
            parseCase(content, heads, variables);
            ADD_FAILURE() << content;
        }
        catch (const CaseError& error)
        {
            EXPECT_TRUE(std::string(error.what()).starts_with("line ")) << error.what();
        }
    }
}

TEST(Comparisons, FindDifferentRequests)
{
    const CaseFile file = parseCase(
        "exchange\n>head post /x\n>- ${boundary}\nexchange\n>head post /x\n>- ${boundary}\n", heads, variables);
    const std::string head = "POST /x\r\nContent-Length: 40\r\n\r\n";
    EXPECT_EQ(compareRequests(file.requests, {head + boundaryA, head + boundaryB}), "");
    EXPECT_NE(compareRequests(file.requests, {head + boundaryA, head + boundaryA}), "");
    EXPECT_NE(compareRequests(file.requests, {head + boundaryA}), "");
    EXPECT_NE(compareRequests(file.requests, {head + boundaryA + "x", head + boundaryB}), "");
    EXPECT_NE(compareRequests(file.requests, {"POST /z\r\nContent-Length: 40\r\n\r\n" + boundaryA, head + boundaryB}),
              "");
}

TEST(Comparisons, MarkTheFirstDifferentLine)
{
    const std::string text = sideBySide("a\r\nb\r\nc", "a\r\nB\r\nc");
    EXPECT_NE(text.find("=> b\\r\\n"), std::string::npos) << text;
    EXPECT_NE(text.find("=> B\\r\\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("=> a"), std::string::npos) << text;
}

support::LogLine line(const char* level, const char* message)
{
    return {level, message, ".\\src\\A.cpp", 1, ""};
}

TEST(Comparisons, FindMissingAndUnlistedLogLines)
{
    const CaseFile file = parseCase("log ERROR one\nlog TRACE two\nlog ERROR three\n", heads, variables);
    EXPECT_EQ(
        compareLog(file, {line("ERROR", "one"), line("DEBUG", "x"), line("TRACE", "two"), line("ERROR", "three")}), "");
    EXPECT_NE(compareLog(file, {line("ERROR", "one"), line("ERROR", "three")}), "");
    EXPECT_NE(compareLog(file, {line("ERROR", "three"), line("TRACE", "two"), line("ERROR", "one")}), "");
    EXPECT_NE(
        compareLog(file, {line("ERROR", "one"), line("TRACE", "two"), line("ERROR", "three"), line("ERROR", "x")}), "");
    support::LogLine defective = line("DEBUG", "x");
    defective.defect = "no tail";
    EXPECT_NE(compareLog(file, {line("ERROR", "one"), line("TRACE", "two"), line("ERROR", "three"), defective}), "");
}

} // namespace
