#include "SearchFixture.h"

#include "search/Condition.h"

namespace quorvex::services::test
{

namespace
{

using Ids = std::vector<std::string>;
using search::ParseNumber;

class SearchConditionTest : public SearchFixture
{
};

std::optional<search::Range> RangeIn(const std::string& value)
{
    return search::ParseConditions({{"name", value}}).at(0).range;
}

} // namespace

TEST_F(SearchConditionTest, EqualityIsOfTheWholeValue)
{
    SearchClient alice = OnlineWith("alice", "&city=Oslo");
    OnlineWith("bob", "&city=oslo");
    OnlineWith("carol", "&city=Oslo%20");
    OnlineWith("dave", "&town=Oslo");
    EXPECT_EQ(alice.Find("app=im&city=Oslo"), IdsOf({"alice"}));
    EXPECT_EQ(alice.Find("app=im&city=oslo"), IdsOf({"bob"}));
    EXPECT_EQ(alice.Find("app=im&city=Oslo%20"), IdsOf({"carol"}));
    EXPECT_EQ(alice.Find("app=im&city=Osl"), Ids{});
    EXPECT_EQ(alice.Find("app=im&City=Oslo"), Ids{});
    EXPECT_EQ(alice.Count("app=im&city=Osl"), 0);
}

TEST_F(SearchConditionTest, ARangeHasBothItsEnds)
{
    SearchClient alice = OnlineWith("alice", "&age=19");
    OnlineWith("bob", "&age=20");
    OnlineWith("carol", "&age=025");
    OnlineWith("dave", "&age=30");
    OnlineWith("erin", "&age=31");
    OnlineWith("frank", "&age=25years");
    OnlineWith("grace", "&age=");
    OnlineWith("heidi", "");
    EXPECT_EQ(alice.Find("app=im&age=20%2D30"), IdsOf({"bob", "carol", "dave"}));
    EXPECT_EQ(alice.Find("app=im&age=20-30"), IdsOf({"bob", "carol", "dave"}));
    EXPECT_EQ(alice.Count("app=im&age=20-30"), 3);
    EXPECT_EQ(alice.Find("app=im&age=19-19"), IdsOf({"alice"}));
    EXPECT_EQ(alice.Find("app=im&age=30-20"), Ids{});
    EXPECT_EQ(alice.Find("app=im&age=25"), Ids{});
    EXPECT_EQ(alice.Find("app=im&age=0-999999999999999999").size(), 5U);
}

TEST_F(SearchConditionTest, NumbersCanBeNegative)
{
    SearchClient alice = OnlineWith("alice", "&level=-5");
    OnlineWith("bob", "&level=0");
    OnlineWith("carol", "&level=5");
    EXPECT_EQ(alice.Find("app=im&level=-5-0"), IdsOf({"alice", "bob"}));
    EXPECT_EQ(alice.Find("app=im&level=-9--1"), IdsOf({"alice"}));
    EXPECT_EQ(alice.Find("app=im&level=-5"), IdsOf({"alice"}));
}

TEST_F(SearchConditionTest, ATextThatLooksLikeARangeIsFoundByItself)
{
    SearchClient alice = OnlineWith("alice", "&phone=555-1234&half=20-");
    OnlineWith("bob", "&phone=600");
    EXPECT_EQ(alice.Find("app=im&phone=555-1234"), IdsOf({"alice", "bob"}));
    EXPECT_EQ(alice.Find("app=im&phone=555-1235"), IdsOf({"bob"}));
    EXPECT_EQ(alice.Find("app=im&half=20-"), IdsOf({"alice"}));
}

TEST_F(SearchConditionTest, AllConditionsHaveToBeMet)
{
    SearchClient alice = OnlineWith("alice", "&sex=1&age=25&city=Oslo");
    OnlineWith("bob", "&sex=1&age=35&city=Oslo");
    OnlineWith("carol", "&sex=2&age=25&city=Oslo");
    OnlineWith("dave", "&sex=1&age=25");
    EXPECT_EQ(alice.Find("app=im&skip=0&sex=1&age=20%2D30"), IdsOf({"alice", "dave"}));
    EXPECT_EQ(alice.Find("app=im&skip=0&sex=1&age=20%2D30&city=Oslo"), IdsOf({"alice"}));
    EXPECT_EQ(alice.Count("app=im&sex=1&age=20%2D30"), 2);
    EXPECT_EQ(alice.Find("app=im&age=10-30&age=20-40"), IdsOf({"alice", "carol", "dave"}));
    EXPECT_EQ(alice.Find("app=im&sex=1&sex=2"), Ids{});
}

TEST_F(SearchConditionTest, ValuesAreOfAnApplicationOrOfTheProfile)
{
    SearchClient alice = LoggedInTo("alice");
    alice.Online("im");
    alice.Online("game");
    alice.Update("city=Oslo&nick=ally");
    alice.Update("app=im&nick=alice");
    alice.Update("app=game&level=7");

    EXPECT_EQ(alice.Count("app=im&city=Oslo&nick=alice"), 1);
    EXPECT_EQ(alice.Count("app=im&nick=ally"), 1);
    EXPECT_EQ(alice.Count("app=im&level=7"), 0);
    EXPECT_EQ(alice.Count("app=game&city=Oslo&level=1-9"), 1);
    EXPECT_EQ(alice.Count("app=game&nick=alice"), 0);
    EXPECT_EQ(alice.Count("app=chat&city=Oslo"), 0);
}

TEST_F(SearchConditionTest, AUserWithTwoFittingValuesIsFoundOnce)
{
    SearchClient alice = LoggedInTo("alice");
    alice.Online();
    alice.Update("age=25");
    alice.Update("app=im&age=26");
    EXPECT_EQ(alice.Find("app=im&age=20-30"), IdsOf({"alice"}));
    EXPECT_EQ(alice.Count("app=im&age=20-30"), 1);
}

TEST_F(SearchConditionTest, AnUpdateReplacesWhatItNamesAndKeepsTheRest)
{
    SearchClient alice = OnlineWith("alice", "&a=1&b=2");
    alice.Update("app=im&b=text");
    alice.Update("app=im");
    alice.Update("");
    EXPECT_EQ(alice.Count("app=im&a=1&b=text"), 1);
    EXPECT_EQ(alice.Count("app=im&b=2"), 0);
    EXPECT_EQ(alice.Count("app=im&b=1-9"), 0);
    alice.Update("app=im&b=3&b=4");
    EXPECT_EQ(alice.Count("app=im&b=4"), 1);
    alice.Update("app=im&a=");
    EXPECT_EQ(alice.Count("app=im&a=1"), 0);
    EXPECT_EQ(alice.Count("app=im&a="), 1);
    EXPECT_EQ(alice.Count("app=im&never="), 0);
}

TEST_F(SearchConditionTest, ValuesStayWhileTheirUserIsOffline)
{
    SearchClient alice = OnlineWith("alice", "&city=Oslo");
    SearchClient bob = LoggedInTo("bob");
    alice.Logout();
    EXPECT_EQ(bob.Find("app=im&city=Oslo"), Ids{});
    Restart();
    SearchClient again = LoggedInTo("alice");
    again.Online();
    EXPECT_EQ(again.Find("app=im&city=Oslo"), IdsOf({"alice"}));
}

TEST_F(SearchConditionTest, ValuesAreKeptByteForByte)
{
    SearchClient alice = LoggedInTo("alice");
    SearchClient bob = LoggedInTo("bob");
    alice.Online();
    bob.Online();
    const std::string all = AllBytes();
    const std::vector<std::string> values = {all,
                                             "\xE5\x8C\x97\xE4\xBA\xAC \xF0\x9F\x98\x80",
                                             "\xB1\xB1\xBE\xA9",
                                             "e\xCC\x81",
                                             "\xC3\xA9",
                                             std::string("a\0b", 3),
                                             "a+b",
                                             "a b",
                                             "' OR 1=1 --",
                                             "%41",
                                             "&=;?#\"\\"};
    for (const std::string& value : values)
    {
        alice.Update("app=im&v=" + Escape(value));
        bob.Update("app=im&v=" + Escape(value + "x"));
        EXPECT_EQ(alice.Find("app=im&v=" + Escape(value)), IdsOf({"alice"})) << Escape(value);
        EXPECT_EQ(alice.Count("app=im&v=" + Escape(value + "x")), 1) << Escape(value);
    }
}

TEST_F(SearchConditionTest, EveryByteDiffersFromEveryOther)
{
    SearchClient alice = LoggedInTo("alice");
    alice.Online();
    std::string form = "app=im";
    for (const char byte : AllBytes())
    {
        form += "&n" + std::to_string(static_cast<unsigned char>(byte)) + "=" + Escape(std::string(1, byte));
    }
    alice.Update(form);
    for (int byte = 1; byte <= 255; ++byte)
    {
        const std::string name = "app=im&n" + std::to_string(byte) + "=";
        const char value = static_cast<char>(static_cast<unsigned char>(byte));
        const char next = static_cast<char>(static_cast<unsigned char>(byte % 255 + 1));
        EXPECT_EQ(alice.Count(name + Escape(std::string(1, value))), 1) << byte;
        EXPECT_EQ(alice.Count(name + Escape(std::string(1, next))), 0) << byte;
    }
}

TEST_F(SearchConditionTest, TheMostConditionsAreAnsweredAndMoreAreRefused)
{
    SearchClient alice = LoggedInTo("alice");
    alice.Online();
    std::string conditions;
    std::string values;
    for (int i = 0; i < 32; ++i)
    {
        values += "&n" + std::to_string(i) + "=" + std::to_string(i);
        conditions += "&n" + std::to_string(i) + "=0-99";
    }
    alice.Update("app=im" + values);
    EXPECT_EQ(alice.Find("app=im&skip=0" + conditions), IdsOf({"alice"}));
    EXPECT_EQ(alice.Count("app=im" + conditions), 1);
    EXPECT_EQ(alice.Post("search.php", "app=im" + conditions + "&x=1")["result"].asInt(), 400);
    EXPECT_EQ(alice.Post("count.php", "app=im" + conditions + "&x=1")["result"].asInt(), 400);
}

TEST(ConditionTest, NumbersAreWholeAndOfAtMost18Digits)
{
    EXPECT_EQ(ParseNumber("0"), 0);
    EXPECT_EQ(ParseNumber("-0"), 0);
    EXPECT_EQ(ParseNumber("007"), 7);
    EXPECT_EQ(ParseNumber("-12"), -12);
    EXPECT_EQ(ParseNumber("999999999999999999"), 999'999'999'999'999'999);
    EXPECT_EQ(ParseNumber("-999999999999999999"), -999'999'999'999'999'999);
    for (const char* text : {"", "-", "--1", "+1", " 1", "1 ", "1.5", "1e3", "0x1", "1000000000000000000"})
    {
        EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
    }
}

TEST(ConditionTest, ARangeHasTwoNumbers)
{
    const auto plain = RangeIn("20-30");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->low, 20);
    EXPECT_EQ(plain->high, 30);
    const auto negative = RangeIn("-30--20");
    ASSERT_TRUE(negative);
    EXPECT_EQ(negative->low, -30);
    EXPECT_EQ(negative->high, -20);
    for (const char* text : {"", "-", "--", "20", "-20", "20-", "20--", "a-b", "1-2-3", "20 - 30", "20-30 "})
    {
        EXPECT_FALSE(RangeIn(text)) << text;
    }
}

} // namespace quorvex::services::test
