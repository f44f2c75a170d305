#include "NoThrow.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

using quorvex::NoThrow;

TEST(NoThrow, PassesTheResultOn)
{
    const support::LogCapture log;
    EXPECT_EQ(NoThrow(L"Operation()", [] { return -120; }), -120);
    EXPECT_TRUE(log.lines().empty());
}

TEST(NoThrow, MemoryExhaustionBecomesOneErrorLineAndOne)
{
    const support::LogCapture log;
    EXPECT_EQ(NoThrow(L"Operation()", []() -> int { throw std::bad_alloc(); }), 1);
    EXPECT_EQ(log.messages("ERROR"), std::vector<std::string>{"Operation() ended by an exception: std::bad_alloc"});
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST(NoThrow, WhateverElseIsThrownToo)
{
    const support::LogCapture log;
    EXPECT_EQ(NoThrow(L"Operation()", []() -> int { throw 5; }), 1);
    EXPECT_EQ(log.messages("ERROR"), std::vector<std::string>{"Operation() ended by an unknown exception"});
}

TEST(NoThrow, NeedsNoLog)
{
    const support::LogCapture log(0);
    EXPECT_EQ(NoThrow(L"Operation()", []() -> int { throw std::bad_alloc(); }), 1);
    EXPECT_EQ(NoThrow(L"Operation()", []() -> int { throw 5; }), 1);
    EXPECT_TRUE(log.lines().empty());
}
