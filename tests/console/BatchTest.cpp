#include "Batch.h"
#include "Interruption.h"
#include "Text.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include <json/reader.h>

namespace quorvex::console
{
namespace
{

Json::Value Parsed(const Report& report)
{
    const std::string text = report.ForMachines();
    Json::Value value;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, nullptr)) << text;
    return value;
}

class BatchTest : public testing::Test
{
protected:
    // What is told of single failures would stand between the tests' own lines.
    void SetUp() override { m_options.json = true; }
    void TearDown() override { isAskedToStop = false; }

    Report Run(const std::vector<std::string>& things)
    {
        return ForEach("files", things, m_options, [this](const std::string& thing) {
            m_tried.push_back(thing);
            if (thing == "stop")
                isAskedToStop = true;
            if (thing.starts_with("bad"))
                throw Failure("cannot do " + thing, {404, "DoIt"});
            if (thing == "odd")
                throw std::runtime_error("caf\xE9");
            Report report;
            report.Add("name", thing);
            return report;
        });
    }

    Options m_options;
    std::vector<std::string> m_tried;
};

TEST_F(BatchTest, TellsOfASingleThingBesideTheListToo)
{
    const Report report = Run({"a"});
    EXPECT_EQ(report.ForPeople(), "name  a\n");
    EXPECT_EQ(report.ForMachines(),
              "{\"files\":[{\"given\":\"a\",\"name\":\"a\",\"ok\":true}],\"name\":\"a\",\"ok\":true}\n");
}

TEST_F(BatchTest, GoesOnBehindWhatNobodyHasExpected)
{
    const Json::Value result = Parsed(Run({"a", "odd", "b"}));
    EXPECT_EQ(m_tried, (std::vector<std::string>{"a", "odd", "b"}));
    EXPECT_TRUE(result["files"][0]["ok"].asBool());
    EXPECT_FALSE(result["files"][1]["ok"].asBool());
    EXPECT_TRUE(ToWide(result["files"][1]["message"].asString()).has_value());
    EXPECT_TRUE(result["files"][2]["ok"].asBool());
    EXPECT_FALSE(result["ok"].asBool());
}

TEST_F(BatchTest, LeavesTheFailureOfASingleThingToItsCaller)
{
    EXPECT_THROW(Run({"bad"}), Failure);
}

TEST_F(BatchTest, TellsOfSeveralInTheListAlone)
{
    const Report report = Run({"a", "b"});
    EXPECT_EQ(report.ForPeople(), "name  a\nname  b\n");
    EXPECT_FALSE(report.WhyFailed().has_value());
    const Json::Value value = Parsed(report);
    EXPECT_EQ(value.getMemberNames(), (std::vector<std::string>{"files", "ok"}));
    EXPECT_EQ(value["files"].size(), 2u);
}

TEST_F(BatchTest, GoesOnBehindAFailure)
{
    const Report report = Run({"a", "bad", "c", "bad too"});
    EXPECT_EQ(m_tried, (std::vector<std::string>{"a", "bad", "c", "bad too"}));
    const Json::Value value = Parsed(report);
    EXPECT_FALSE(value["ok"].asBool());
    EXPECT_EQ(value["code"].asInt(), 404);
    EXPECT_EQ(value["operation"].asString(), "DoIt");
    EXPECT_EQ(value["message"].asString().rfind("2 of 4 done; cannot do bad:", 0), 0u) << value["message"].asString();
    EXPECT_TRUE(value["files"][2]["ok"].asBool());
    EXPECT_FALSE(value["files"][1]["ok"].asBool());
    EXPECT_EQ(value["files"][1].getMemberNames(),
              (std::vector<std::string>{"code", "given", "meaning", "message", "ok", "operation"}));
    EXPECT_EQ(report.WhyFailed()->Status(), ExitStatus::kFailed);
}

TEST_F(BatchTest, EndsWithAnInterruption)
{
    const Report report = Run({"bad", "stop", "c", "d"});
    EXPECT_EQ(m_tried, (std::vector<std::string>{"bad", "stop"}));
    ASSERT_TRUE(report.WhyFailed().has_value());
    EXPECT_EQ(report.WhyFailed()->Status(), ExitStatus::kInterrupted);
    EXPECT_EQ(std::string(report.WhyFailed()->what()), "1 of 4 done; interrupted before c");
    const Json::Value files = Parsed(report)["files"];
    ASSERT_EQ(files.size(), 4u);
    EXPECT_EQ(files[3]["given"].asString(), "d");
    EXPECT_FALSE(files[3]["ok"].asBool());
}

} // namespace
} // namespace quorvex::console
