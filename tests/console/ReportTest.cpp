#include "Output.h"

#include <gtest/gtest.h>

namespace quorvex::console
{
namespace
{

TEST(Report, PutsValuesBelowEachOtherForPeople)
{
    Report report;
    report.Add("key", "0a1b");
    report.Add("size", Json::UInt64{1536}, "1.5 KiB (1536 bytes)");
    EXPECT_EQ(report.ForPeople(), "key   0a1b\nsize  1.5 KiB (1536 bytes)\n");
}

TEST(Report, DoesNotSteerTheTerminal)
{
    Report report;
    report.Add("key", "\x1B[2J0a1b\xC2\x9B");
    EXPECT_EQ(report.ForPeople(), "key  \xEF\xBF\xBD[2J0a1b\xEF\xBF\xBD\n");
    EXPECT_EQ(report.Data()["key"].asString(), "\x1B[2J0a1b\xC2\x9B");
}

TEST(Report, IsOneLineOfJsonForMachines)
{
    Report report;
    report.Add("name", "caf\xC3\xA9 \"x\"\n");
    report.Add("size", Json::UInt64{4294967295u}, "4.0 GiB");
    report.Add("md5", Json::Value(), "none");
    EXPECT_EQ(report.ForMachines(), "{\"md5\":null,\"name\":\"caf\xC3\xA9 \\\"x\\\"\\n\",\"ok\":true,"
                                    "\"size\":4294967295}\n");
}

TEST(Report, TellsTheSameAsATextAndAsData)
{
    Report report;
    report.AddText("NAME\na\n");
    report.AddData("files", Json::Value(Json::arrayValue));
    report.AddText("1 file\n");
    EXPECT_EQ(report.ForPeople(), "NAME\na\n1 file\n");
    EXPECT_EQ(report.ForMachines(), "{\"files\":[],\"ok\":true}\n");
    report.Add("id", "0");
    EXPECT_EQ(report.ForPeople(), "id  0\nNAME\na\n1 file\n");
}

TEST(Report, TellsAFailureTogetherWithWhatWasDone)
{
    Report report;
    report.AddData("files", Json::Value(Json::arrayValue));
    report.SetFailure(Failure("cannot log in", {403, "UserLogin"}));
    EXPECT_EQ(report.ForMachines(),
              "{\"code\":403,\"files\":[],\"meaning\":\"the server does not accept the session\","
              "\"message\":\"cannot log in: the server does not accept the session (result 403)\","
              "\"ok\":false,\"operation\":\"UserLogin\"}\n");
}

TEST(Report, LeavesOpenWhatAFailureOfTheConsoleDoesNotHave)
{
    const Json::Value members = Failure("no such file").Members();
    EXPECT_TRUE(members["code"].isNull());
    EXPECT_TRUE(members["operation"].isNull());
    EXPECT_EQ(members["meaning"].asString(), "no such file");
    EXPECT_EQ(members["message"].asString(), "no such file");
}

TEST(Report, CanBeEmpty)
{
    EXPECT_EQ(Report().ForPeople(), "");
    EXPECT_EQ(Report().ForMachines(), "{\"ok\":true}\n");
}

} // namespace
} // namespace quorvex::console
