// A server that means no good: whatever it sends, an operation ends with a result that is documented, and no byte is
// written where none belongs, no handle or block stays behind, no file appears outside of the folder given, memory
// stays bounded, and the next answer finds the same client in working order.

#include "hostile/Player.h"
#include "hostile/Subjects.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>
#include <set>
#include <string>

namespace hostile
{

void PrintTo(const Subject& subject, std::ostream* out)
{
    *out << subject.name;
}

namespace
{

class Hostile : public ::testing::TestWithParam<Subject>
{
};

TEST_P(Hostile, Replies)
{
    Player player;
    std::size_t played = 0;
    for (const Attack& attack : GetParam().attacks())
    {
        player.play(attack);
        ++played;
    }
    RecordProperty("replies", std::to_string(played));
    std::printf("%zu replies\n", played);
}

INSTANTIATE_TEST_SUITE_P(Of, Hostile, ::testing::ValuesIn(allSubjects()),
                         [](const auto& subject) { return subject.param.name; });

TEST(HostileCorpus, HasAThousandDistinctReplies)
{
    std::set<std::string> distinct;
    std::set<const Operation*> attacked;
    std::size_t played = 0;
    for (const Subject& subject : allSubjects())
    {
        const std::vector<Attack> attacks = subject.attacks();
        EXPECT_FALSE(attacks.empty()) << subject.name;
        played += attacks.size();
        for (const Attack& attack : attacks)
        {
            distinct.insert(attack.operation->name + " " + attack.reply.identity());
            attacked.insert(attack.operation);
        }
    }
    EXPECT_GE(distinct.size(), 1000u);
    EXPECT_EQ(attacked.size(), operations().size());
    RecordProperty("replies", std::to_string(distinct.size()));
    std::printf("%zu replies, %zu of them distinct, against %zu operations\n", played, distinct.size(),
                attacked.size());
}

} // namespace
} // namespace hostile
