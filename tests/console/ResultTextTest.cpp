#include "ResultText.h"
#include "Failure.h"

#include <ferrolink/http_session.h>
#include <quorvex/Results.h>

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <string>

namespace quorvex::console
{
namespace
{

TEST(ResultText, EveryResultOfTheModuleHasAMeaningOfItsOwn)
{
    std::set<std::string> meanings;
    int results = 0;
    for (int result = Result::RecyclebinItemMissing; result <= Result::NotConnected; ++result)
    {
        // These are not among the module's results.
        if ((result > Result::StatusUnreadable && result < Result::DigestFileFailed) ||
            result == Result::ContentEncodingInvalid - 1)
            continue;
        const std::string meaning = MeaningOf(result);
        EXPECT_NE(meaning, MeaningOf(INT_MIN)) << result;
        meanings.insert(meaning);
        ++results;
    }
    for (const int result : {-11, -5, -4, -3, -2, -1, 0, 1, 2})
    {
        meanings.insert(MeaningOf(result));
        ++results;
    }
    EXPECT_EQ(meanings.size(), static_cast<std::size_t>(results));
}

TEST(ResultText, TheHostHasResultsOfItsOwn)
{
    std::set<std::string> meanings;
    for (const int result : {FRL_HTTP_FAILED, FRL_HTTP_TIMED_OUT, FRL_HTTP_CLOSED})
    {
        EXPECT_NE(MeaningOf(result, Transport::Host), MeaningOf(result, Transport::Module));
        meanings.insert(MeaningOf(result, Transport::Host));
    }
    EXPECT_EQ(meanings.size(), 3u);
    for (const int result : {Result::RangeTooLong, Result::LocalFileFailed, Result::Ok})
        EXPECT_EQ(MeaningOf(result, Transport::Host), MeaningOf(result, Transport::Module));
    EXPECT_EQ(MeaningOf(404, Transport::Host), MeaningOf(404));
}

TEST(ResultText, HttpStatusesHaveAMeaning)
{
    EXPECT_EQ(MeaningOf(404),
              "the server does not know it: no such file, folder, share code or item, or a wrong address");
    EXPECT_EQ(MeaningOf(507), "the account's space is used up");
    for (const int status : {100, 302, 418, 599})
        EXPECT_EQ(MeaningOf(status), "the server answered with HTTP status " + std::to_string(status));
}

TEST(ResultText, OtherResultsHaveAPlainText)
{
    EXPECT_EQ(MeaningOf(99), "the service reported a result of its own");
    EXPECT_EQ(MeaningOf(600), "the service reported a result of its own");
    EXPECT_EQ(MeaningOf(-99), "the module failed");
}

TEST(Failure, IsOneSentenceWithTheResult)
{
    const Failure failure("cannot upload a.txt", Result::LocalFileFailed);
    EXPECT_STREQ(failure.what(), "cannot upload a.txt: the local file could not be opened, read to its end, or closed "
                                 "(result -120)");
    EXPECT_EQ(failure.Code(), -120);
    EXPECT_STREQ(Failure("cannot x", Outcome(500), "try again").what(),
                 "cannot x: the server failed (result 500); try again");
}

TEST(Failure, TellsWhatItsResultMeans)
{
    EXPECT_EQ(Failure("cannot x", Outcome(-2), "", Transport::Host).Meaning(), MeaningOf(-2, Transport::Host));
    EXPECT_EQ(Failure("cannot x", -2).Meaning(), MeaningOf(-2));
    EXPECT_EQ(Failure("a.txt is a folder").Meaning(), "a.txt is a folder");
}

TEST(Failure, NeedsNoResult)
{
    const Failure failure("a.txt is a folder");
    EXPECT_STREQ(failure.what(), "a.txt is a folder");
    EXPECT_EQ(failure.Code(), std::nullopt);
}

TEST(Failure, IsThrownForEveryResultButZero)
{
    EXPECT_NO_THROW(Check(Outcome(0), "cannot"));
    EXPECT_THROW(Check(Outcome(1), "cannot"), Failure);
    EXPECT_THROW(Check(Outcome(-100), "cannot"), Failure);
}

} // namespace
} // namespace quorvex::console
