#include "SearchFixture.h"

#include "common/HttpAnswers.h"
#include "search/Form.h"

namespace quorvex::services::test
{

namespace
{

using search::Form;
using search::ParseForm;

class SearchFormTest : public SearchFixture
{
};

bool IsRefused(const std::string& body)
{
    try
    {
        ParseForm(body);
        return false;
    }
    catch (const HttpError& error)
    {
        return error.GetStatus() == Status::BadRequest;
    }
}

// A form as a client writes it into a buffer that holds this many bytes of it.
std::string CutForm(const std::string& value, std::size_t size)
{
    return ("app=im&v=" + Escape(value)).substr(0, size);
}

} // namespace

TEST(FormTest, TellsApplicationSkipAndFieldsApart)
{
    const Form form = ParseForm("a=1&skip=40&app=im&b=x%3Dy%26z&a=");
    EXPECT_EQ(form.app, "im");
    EXPECT_EQ(form.skip, 40);
    ASSERT_EQ(form.fields.size(), 3U);
    EXPECT_EQ(form.fields[0].name, "a");
    EXPECT_EQ(form.fields[0].value, "1");
    EXPECT_EQ(form.fields[1].value, "x=y&z");
    EXPECT_EQ(form.fields[2].name, "a");
    EXPECT_EQ(form.fields[2].value, "");
}

TEST(FormTest, AnEmptyOneHasNothing)
{
    const Form form = ParseForm("");
    EXPECT_FALSE(form.app);
    EXPECT_FALSE(form.skip);
    EXPECT_TRUE(form.fields.empty());
}

TEST(FormTest, APlusSignIsOne)
{
    const Form form = ParseForm("app=c++&a+b=1+1=2");
    EXPECT_EQ(form.app, "c++");
    EXPECT_EQ(form.fields.at(0).name, "a+b");
    EXPECT_EQ(form.fields.at(0).value, "1+1=2");
}

TEST(FormTest, NamesMayBeEscapedOrNot)
{
    const Form form = ParseForm("my%20name=1&100%=2&%6Eick=3");
    EXPECT_EQ(form.fields.at(0).name, "my name");
    EXPECT_EQ(form.fields.at(1).name, "100%");
    EXPECT_EQ(form.fields.at(2).name, "nick");
}

TEST(FormTest, HalfFieldsAreRefused)
{
    for (const char* body : {"app", "app=im&", "app=im&nam", "&app=im", "app=im&&a=1", "&", "=", "=1", "app=im&=1",
                             "a=%", "a=%4", "a=%4&b=1", "a=%zz", "a=%%41", "a=1%", "a=%4g", "a=%-1", "a=% 1"})
    {
        EXPECT_TRUE(IsRefused(body)) << body;
    }
    EXPECT_TRUE(IsRefused(std::string("a\0b=1", 5)));
    EXPECT_TRUE(IsRefused("a%00=1"));
    EXPECT_TRUE(IsRefused("a\n=1"));
    EXPECT_TRUE(IsRefused("a%26b=1"));
    EXPECT_TRUE(IsRefused(std::string(65, 'n') + "=1"));
    EXPECT_FALSE(IsRefused(std::string(64, 'n') + "=1"));
}

TEST(FormTest, SkipIsOneNumberThatClientsCanWrite)
{
    EXPECT_EQ(ParseForm("skip=0").skip, 0);
    EXPECT_EQ(ParseForm("skip=2147483647").skip, 2'147'483'647);
    for (const char* body : {"skip=", "skip=-1", "skip=+1", "skip=1x", "skip=1%", "skip=2147483648",
                             "skip=99999999999999999999", "skip=1&skip=1", "app=a&app=a"})
    {
        EXPECT_TRUE(IsRefused(body)) << body;
    }
}

TEST_F(SearchFormTest, OneThatAClientCutInAnEscapeChangesNothing)
{
    constexpr std::size_t size = 8191;
    SearchClient alice = OnlineWith("alice", "&v=before");
    const std::string value(4000, ' ');
    std::size_t refused = 0;
    for (std::size_t cut = size - 3; cut < size; ++cut)
    {
        const std::string form = CutForm(value, cut);
        const int result = alice.Post("update.php", form)["result"].asInt();
        const bool isWhole = (cut - std::string("app=im&v=").size()) % 3 == 0;
        EXPECT_EQ(result, isWhole ? 200 : 400) << cut;
        refused += result == 400 ? 1 : 0;
        if (isWhole)
        {
            EXPECT_EQ(alice.Count(form), 1);
            alice.Update("app=im&v=before");
        }
        EXPECT_EQ(alice.Count("app=im&v=before"), 1);
    }
    EXPECT_EQ(refused, 2U);
}

TEST_F(SearchFormTest, ACutSearchIsAnsweredWithItsOwnKey)
{
    SearchClient alice = OnlineWith("alice", "&v=1");
    const Json::Value found = alice.Post("search.php", "app=im&skip=0&v=1%");
    EXPECT_EQ(found["result"].asInt(), 400);
    EXPECT_EQ(found["users"], Json::Value(Json::arrayValue));
    const Json::Value counted = alice.Post("count.php", "app=im&v=1%3");
    EXPECT_EQ(counted["result"].asInt(), 400);
    EXPECT_EQ(counted["total"], Json::Value(0));
}

TEST_F(SearchFormTest, TheApplicationHasToBeNamed)
{
    SearchClient alice = LoggedInTo("alice");
    for (const std::string& form : {std::string(), std::string("app="), std::string("skip=0"), std::string("sex=1"),
                                    "app=" + std::string(65, 'x'), std::string("app=a%26b"), std::string("app=%01")})
    {
        EXPECT_EQ(alice.Post("search.php", form)["result"].asInt(), 400) << form;
        EXPECT_EQ(alice.Post("count.php", form)["result"].asInt(), 400) << form;
    }
    EXPECT_EQ(alice.Post("update.php", "app=&a=1")["result"].asInt(), 400);
    EXPECT_EQ(alice.Post("update.php", "app=" + std::string(65, 'x'))["result"].asInt(), 400);
}

TEST_F(SearchFormTest, SkipIsNoNameForAValue)
{
    SearchClient alice = OnlineWith("alice", "");
    EXPECT_EQ(alice.Post("update.php", "app=im&skip=1&a=1")["result"].asInt(), 400);
    EXPECT_EQ(alice.Count("app=im&a=1"), 0);
}

TEST_F(SearchFormTest, ARefusedUpdateSetsNothing)
{
    SearchClient alice = OnlineWith("alice", "&a=1");
    EXPECT_EQ(alice.Post("update.php", "app=im&a=2&b=2&c")["result"].asInt(), 400);
    EXPECT_EQ(alice.Count("app=im&a=1"), 1);
    EXPECT_EQ(alice.Count("app=im&b=2"), 0);
}

TEST_F(SearchFormTest, LargeOnesAreTakenUpToALimit)
{
    SearchClient alice = OnlineWith("alice", "");
    const std::string large = "app=im&v=" + std::string(60'000, 'x');
    alice.Update(large);
    EXPECT_EQ(alice.Count(large), 1);
    const std::string tooLarge = "app=im&v=" + std::string(70'000, 'x');
    EXPECT_EQ(alice.Post("update.php", tooLarge)["result"].asInt(), 413);
    EXPECT_EQ(alice.Post("search.php", tooLarge)["result"].asInt(), 413);
    EXPECT_EQ(alice.Post("count.php", tooLarge)["result"].asInt(), 413);
    EXPECT_EQ(alice.Count(large), 1);
}

TEST_F(SearchFormTest, AUserHasAThousandValuesAndNoMore)
{
    SearchClient alice = OnlineWith("alice", "");
    std::string form = "app=im";
    for (int i = 0; i < 1000; ++i)
    {
        form += "&n" + std::to_string(i) + "=1";
    }
    alice.Update(form);
    EXPECT_EQ(alice.Post("update.php", "app=game&n0=2&more=1")["result"].asInt(), 413);
    EXPECT_EQ(alice.Post("update.php", "n0=2")["result"].asInt(), 413);
    alice.Update("app=im&n0=2");
    EXPECT_EQ(alice.Count("app=im&n0=2&n999=1"), 1);

    SearchClient bob = OnlineWith("bob", "&n0=2");
    EXPECT_EQ(bob.Count("app=im&n0=2"), 2);
}

} // namespace quorvex::services::test
