#include "fault/SweepReport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>

namespace fault
{
namespace
{

struct Row
{
    unsigned operations = 0;
    unsigned points = 0;
};

/// By kind, then by suite.
std::map<std::string, std::map<std::string, Row>> table;

class Report : public testing::Environment
{
public:
    void TearDown() override
    {
        unsigned points = 0;
        for (const auto& [kind, suites] : table)
        {
            std::printf("| Failing %s | Operations | Points |\n| --- | --- | --- |\n", kind.c_str());
            for (const auto& [suite, row] : suites)
            {
                std::printf("| %s | %u | %u |\n", suite.c_str(), row.operations, row.points);
                points += row.points;
            }
        }
        std::printf("%u points swept\n", points);
    }
};

const testing::Environment* const report = testing::AddGlobalTestEnvironment(new Report);

} // namespace

void reportSweep(const std::string& suite, const std::string& kind, unsigned points)
{
    Row& row = table[kind][suite.substr(0, suite.find('/'))];
    ++row.operations;
    row.points += points;
}

} // namespace fault
