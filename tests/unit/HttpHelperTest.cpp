#include "Netdisk/NetDiskHttpHelper.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using quorvex::netdisk::CNetDiskHttpHelper;

TEST(HttpHelper, WithoutAConnectionNothingIsRequested)
{
    CNetDiskHttpHelper helper(L"");
    ASSERT_FALSE(helper.IsConnected());
    const support::LogCapture log;

    std::string response = "the last one";
    EXPECT_EQ(helper.RequestGet(L"path", response), -100);
    EXPECT_EQ(response, "");

    response = "the last one";
    EXPECT_EQ(helper.RequestPost(L"path", "{}", response), -100);
    EXPECT_EQ(response, "");

    EXPECT_EQ(log.messages("ERROR"), (std::vector<std::string>{"Not connect to server.", "Not connect to server."}));
}
