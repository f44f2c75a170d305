#include "SearchFixture.h"

namespace quorvex::services::test
{

namespace
{

using Ids = std::vector<std::string>;

// Many users at once, online in "im" since the database's beginning, each with a sex of 0 or 1 and an age below 100.
constexpr const char* ManyUsers = R"(
    INSERT INTO account (id, name, salt, password_hash, iterations)
        WITH RECURSIVE number (n) AS (SELECT 1000 UNION ALL SELECT n + 1 FROM number WHERE n < 100999)
        SELECT n, 'user' || n, x'', x'', 1 FROM number;
    INSERT INTO search_presence (app, account_id, status, seen_at)
        SELECT CAST('im' AS BLOB), id, 1, 1700000000 FROM account WHERE id >= 1000;
    INSERT INTO search_value (account_id, app, name, value, number)
        SELECT id, x'', CAST('sex' AS BLOB), CAST(id % 2 AS BLOB), id % 2 FROM account WHERE id >= 1000;
    INSERT INTO search_value (account_id, app, name, value, number)
        SELECT id, CAST('im' AS BLOB), CAST('age' AS BLOB), CAST(id % 100 AS BLOB), id % 100
        FROM account WHERE id >= 1000;
)";
constexpr int ManyUsersCount = 100'000;

class SearchPagingTest : public SearchFixture
{
protected:
    void AddManyUsers()
    {
        application_.reset();
        Database(options_.dataFolder / "services.db").Migrate("many users", {ManyUsers});
        Restart();
    }

    // Goes through all pages as a client does, which skips what it has.
    static Ids FindAll(SearchClient& client, const std::string& conditions)
    {
        Ids all;
        for (;;)
        {
            const Ids page = client.Find("app=im&skip=" + std::to_string(all.size()) + conditions);
            if (page.empty())
            {
                return all;
            }
            all.insert(all.end(), page.begin(), page.end());
        }
    }
};

} // namespace

TEST_F(SearchPagingTest, SkipsFromTheStartOfTheIds)
{
    SearchClient alice = LoggedInTo("alice");
    const Ids ids = IdsOf({"alice", "bob", "carol", "dave"});
    // The order is that of the ids, not that of the reports.
    for (const char* name : {"dave", "carol", "bob"})
    {
        LoggedInTo(name).Online();
    }
    alice.Online();
    EXPECT_EQ(alice.Find("app=im"), ids);
    EXPECT_EQ(alice.Find("app=im&skip=0"), ids);
    EXPECT_EQ(alice.Find("app=im&skip=3"), IdsOf({"dave"}));
    EXPECT_EQ(alice.Find("app=im&skip=4"), Ids{});
    EXPECT_EQ(alice.Find("app=im&skip=2147483647"), Ids{});
    EXPECT_EQ(alice.Count("app=im"), 4);
    EXPECT_EQ(alice.Count("app=im&skip=3"), 4);
    EXPECT_EQ(alice.Post("search.php", "app=im&skip=-1")["result"].asInt(), 400);
}

TEST_F(SearchPagingTest, AHundredThousandUsersComeInPages)
{
    AddManyUsers();
    SearchClient alice = LoggedInTo("alice");
    const Ids first = alice.Find("app=im");
    ASSERT_EQ(first.size(), 100U);
    EXPECT_EQ(first.front(), "1000");
    EXPECT_EQ(first.back(), "1099");
    EXPECT_EQ(alice.Find("app=im&skip=100").front(), "1100");
    EXPECT_EQ(alice.Find("app=im&skip=99950").size(), 50U);
    EXPECT_EQ(alice.Find("app=im&skip=100000"), Ids{});
    EXPECT_EQ(alice.Count("app=im"), ManyUsersCount);
    EXPECT_EQ(alice.Count("app=im&sex=1"), ManyUsersCount / 2);
}

TEST_F(SearchPagingTest, CountsAgreeWithLists)
{
    AddManyUsers();
    SearchClient alice = LoggedInTo("alice");
    alice.Online();
    alice.Update("sex=1");
    alice.Update("app=im&age=25");
    const std::string conditions = "&sex=1&age=24%2D26";
    const Ids all = FindAll(alice, conditions);
    ASSERT_EQ(all.size(), 1001U);
    EXPECT_EQ(alice.Count("app=im" + conditions), 1001);
    EXPECT_EQ(all[0], IdOf("alice"));
    for (std::size_t i = 1; i < all.size(); ++i)
    {
        EXPECT_EQ(all[i], std::to_string(1000 + (i - 1) * 100 + 25));
    }
}

} // namespace quorvex::services::test
