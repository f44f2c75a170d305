#include "Table.h"

#include <gtest/gtest.h>

namespace quorvex::console
{
namespace
{

TEST(Table, PutsColumnsBelowTheirTitles)
{
    Table table{"ID", "SIZE>", "NAME"};
    table.Add({"0a1b2c", "1.5 KiB", "a.txt"});
    table.Add({"77", "", "folder/"});
    EXPECT_EQ(table.Text(), "ID         SIZE  NAME\n"
                            "0a1b2c  1.5 KiB  a.txt\n"
                            "77               folder/\n");
}

TEST(Table, CountsColumnsNotBytes)
{
    Table table{"NAME", "FROM"};
    table.Add({"\xE4\xB8\xAD\xE6\x96\x87", "/"});
    table.Add({"\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB", "/"});
    EXPECT_EQ(table.Text(), "NAME  FROM\n"
                            "\xE4\xB8\xAD\xE6\x96\x87  /\n"
                            "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB  /\n");
}

TEST(Table, EndsNoLineWithBlanks)
{
    Table table{"A", "B"};
    table.Add({"1", ""});
    EXPECT_EQ(table.Text(), "A  B\n1\n");
}

TEST(Table, LetsNoNameSteerTheTerminal)
{
    Table table{"NAME"};
    table.Add({"a\x1B[2Jb\nc\x7F\xC2\x9B"});
    EXPECT_EQ(table.Text(), "NAME\na\xEF\xBF\xBD[2Jb\xEF\xBF\xBD"
                            "c\xEF\xBF\xBD\xEF\xBF\xBD\n");
}

TEST(Table, IsEmptyWithoutRows)
{
    EXPECT_EQ(Table({"A", "B"}).Text(), "");
}

} // namespace
} // namespace quorvex::console
