#include "Netdisk/NetDiskJsonHelper.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using namespace quorvex::netdisk;
using Messages = std::vector<std::string>;

namespace
{

/// A helper and the log that it writes.
struct NetDiskJsonHelper : ::testing::Test
{
    support::LogCapture log;
    CNetDiskJsonHelper helper;

    Messages Errors() const { return log.messages("ERROR"); }
};

std::string Repeated(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

} // namespace

TEST_F(NetDiskJsonHelper, ErrorReplyLogsTheMessage)
{
    helper.ErrorReply(404, R"({"msg":"no such file"})");
    EXPECT_EQ(Errors(), Messages{"no such file"});
}

TEST_F(NetDiskJsonHelper, ErrorReplyWithoutMessageLogsTheBody)
{
    helper.ErrorReply(500, R"({"other":1})");
    helper.ErrorReply(-107, "<html>");
    helper.ErrorReply(500, R"({"msg":5})");
    helper.ErrorReply(500, R"(["msg"])");
    EXPECT_EQ(Errors(),
              (Messages{R"(Response code=500, errorinfo={"other":1})", "Response code=-107, errorinfo=<html>",
                        R"(Response code=500, errorinfo={"msg":5})", R"(Response code=500, errorinfo=["msg"])"}));
}

TEST_F(NetDiskJsonHelper, ErrorReplySurvivesDeepNesting)
{
    const std::string body(5000, '[');
    helper.ErrorReply(500, body);
    EXPECT_EQ(Errors(), Messages{"Response code=500, errorinfo=" + body});
}

TEST_F(NetDiskJsonHelper, LoginReply)
{
    int uid = 0;
    const char* sid = nullptr;
    const char* center = nullptr;
    EXPECT_EQ(helper.LoginReply(R"({"uap_uid":-7,"uap_sid":"s1","QVUserCenterLogin":"c1"})", uid, sid, center), 0);
    EXPECT_EQ(uid, -7);
    EXPECT_STREQ(sid, "s1");
    EXPECT_STREQ(center, "c1");
    ASSERT_EQ(log.messages("DEBUG").size(), 1U);
    EXPECT_TRUE(log.messages("DEBUG")[0].starts_with("json result: uap_uid=-7"));
}

TEST_F(NetDiskJsonHelper, LoginReplyWithoutUserCenter)
{
    int uid = 0;
    const char* sid = nullptr;
    const char* center = nullptr;
    EXPECT_EQ(helper.LoginReply(R"({"uap_uid":7,"uap_sid":"s1"})", uid, sid, center), 0);
    EXPECT_STREQ(center, "");
}

TEST_F(NetDiskJsonHelper, LoginReplyWithoutItsKeys)
{
    int uid = 42;
    const char* sid = nullptr;
    const char* center = nullptr;
    EXPECT_EQ(helper.LoginReply(R"({"uap_sid":"s1"})", uid, sid, center), 1);
    EXPECT_EQ(helper.LoginReply(R"({"uap_uid":null,"uap_sid":"s1"})", uid, sid, center), 1);
    EXPECT_EQ(helper.LoginReply(R"({"uap_uid":1})", uid, sid, center), 1);
    EXPECT_EQ(helper.LoginReply("null", uid, sid, center), 1);
    EXPECT_EQ(Errors(), (Messages{"get uap_uid error", "get uap_uid error", "get uap_sid error", "get uap_uid error"}));
    EXPECT_EQ(uid, 42);
    EXPECT_EQ(sid, nullptr);
}

TEST_F(NetDiskJsonHelper, LoginReplyOfTheWrongType)
{
    int uid = 42;
    const char* sid = nullptr;
    const char* center = nullptr;
    for (const char* body :
         {R"({"uap_uid":"7","uap_sid":"s"})", R"({"uap_uid":7,"uap_sid":5})", R"({"uap_uid":4294967295,"uap_sid":"s"})",
          R"({"uap_uid":7,"uap_sid":"s","QVUserCenterLogin":{}})", "[]", "\"text\"", "5", "", "{"})
    {
        log.clear();
        EXPECT_EQ(helper.LoginReply(body, uid, sid, center), 1) << body;
        EXPECT_EQ(Errors(), Messages{"parse json error"}) << body;
    }
    EXPECT_EQ(uid, 42);
}

TEST_F(NetDiskJsonHelper, SessionCheckNamesTheSessionForAMissingUid)
{
    int uid = 42;
    EXPECT_EQ(helper.SessionCheckReply("{}", uid), 1);
    EXPECT_EQ(Errors(), Messages{"get uap_sid error"});
    EXPECT_EQ(uid, 42);
    EXPECT_EQ(helper.SessionCheckReply(R"({"uap_uid":9})", uid), 0);
    EXPECT_EQ(uid, 9);
}

TEST_F(NetDiskJsonHelper, UploadReply)
{
    std::array<wchar_t, 40> key = {};
    int fsize = 0;
    int cflag = 0;
    EXPECT_EQ(helper.UploadReply(R"({"fkey":"k1","fsize":-5,"cflag":1})", key.data(), 20, fsize, cflag), 0);
    EXPECT_STREQ(key.data(), L"k1");
    EXPECT_EQ(fsize, -5);
    EXPECT_EQ(cflag, 1);
}

TEST_F(NetDiskJsonHelper, UploadReplyWithoutItsKeysLeavesTheOutputsAlone)
{
    std::array<wchar_t, 40> key = {L'#'};
    int fsize = 42;
    int cflag = 43;
    EXPECT_EQ(helper.UploadReply(R"({"fsize":1,"cflag":1})", key.data(), 20, fsize, cflag), 1);
    EXPECT_EQ(helper.UploadReply(R"({"fkey":"k","cflag":1})", key.data(), 20, fsize, cflag), 1);
    EXPECT_EQ(helper.UploadReply(R"({"fkey":"k","fsize":1})", key.data(), 20, fsize, cflag), 1);
    EXPECT_EQ(helper.UploadReply(R"({"fkey":"k","fsize":1,"cflag":"1"})", key.data(), 20, fsize, cflag), 1);
    EXPECT_EQ(Errors(), (Messages{"get fkey error", "get fsize error", "get cflag error", "parse json error"}));
    EXPECT_EQ(key[0], L'#');
    EXPECT_EQ(fsize, 42);
    EXPECT_EQ(cflag, 43);
}

TEST_F(NetDiskJsonHelper, UploadReplyFillsTwiceTheStatedSizeAndNoMore)
{
    std::array<wchar_t, 12> key;
    key.fill(L'#');
    int fsize = 0;
    int cflag = 0;
    EXPECT_EQ(helper.UploadReply(R"({"fkey":"0123456789","fsize":1,"cflag":1})", key.data(), 4, fsize, cflag), 0);
    EXPECT_STREQ(key.data(), L"0123456");
    EXPECT_EQ(key[8], L'#');

    key.fill(L'#');
    EXPECT_EQ(helper.UploadReply(R"({"fkey":"0123456789","fsize":1,"cflag":1})", key.data(), 0, fsize, cflag), 0);
    EXPECT_EQ(key[0], L'#');
    EXPECT_EQ(helper.UploadReply(R"({"fkey":"0123456789","fsize":1,"cflag":1})", nullptr, 4, fsize, cflag), 0);
}

TEST_F(NetDiskJsonHelper, BlockReply)
{
    const char* key = nullptr;
    int fsize = 0;
    EXPECT_EQ(helper.BlockReply(R"({"fkey":"k1","fsize":65536})", key, fsize), 0);
    EXPECT_STREQ(key, "k1");
    EXPECT_EQ(fsize, 65536);
    EXPECT_EQ(helper.BlockReply(R"({"fsize":65536})", key, fsize), 1);
    EXPECT_EQ(helper.BlockReply(R"({"fkey":"k1"})", key, fsize), 1);
    EXPECT_EQ(Errors(), (Messages{"get fkey error", "get fsize error"}));
}

TEST_F(NetDiskJsonHelper, FolderCreatedReply)
{
    const char* id = nullptr;
    EXPECT_EQ(helper.FolderCreatedReply(R"({"fo_id":"f1"})", id), 0);
    EXPECT_STREQ(id, "f1");
    EXPECT_EQ(helper.FolderCreatedReply("{}", id), 1);
    EXPECT_EQ(Errors(), Messages{"get fo_id error"});
}

TEST_F(NetDiskJsonHelper, FolderListing)
{
    std::vector<_FileInfo> files;
    std::vector<_FolderInfo> folders;
    EXPECT_EQ(helper.FolderListing(
                  R"({"files":[{"fkey":"k1","name":"\u4e2d.txt","size":4294967295,"cflag":-1,"downcount":3,
                      "ctime":1262304000123,"md5":"d41d8cd98f00b204e9800998ecf8427e"},{}],
                      "folders":[{"fo_id":"f1","name":"n1"},{"fo_id":"f2","name":"n2"}]})",
                  files, folders),
              0);
    ASSERT_EQ(files.size(), 2U);
    EXPECT_STREQ(files[0].fkey, L"k1");
    EXPECT_STREQ(files[0].name, L"\u4E2D.txt");
    EXPECT_EQ(files[0].size, 4294967295U);
    EXPECT_EQ(files[0].cflag, -1);
    EXPECT_EQ(files[0].downcount, 3U);
    EXPECT_EQ(files[0].ctime, 1262304000123);
    EXPECT_STREQ(files[0].md5, L"d41d8cd98f00b204e9800998ecf8427e");

    EXPECT_STREQ(files[1].fkey, L"");
    EXPECT_STREQ(files[1].name, L"");
    EXPECT_EQ(files[1].size, 0U);
    EXPECT_EQ(files[1].cflag, 0);
    EXPECT_EQ(files[1].downcount, 0U);
    EXPECT_EQ(files[1].ctime, 0);
    EXPECT_STREQ(files[1].md5, L"");

    ASSERT_EQ(folders.size(), 2U);
    EXPECT_STREQ(folders[1].fo_id, L"f2");
    EXPECT_STREQ(folders[1].name, L"n2");
}

TEST_F(NetDiskJsonHelper, FolderListingWithoutArraysIsAnEmptyOne)
{
    std::vector<_FileInfo> files(1);
    std::vector<_FolderInfo> folders;
    for (const char* body : {"{}", R"({"files":{}})", R"({"files":"x","folders":5})", R"({"files":null})"})
    {
        EXPECT_EQ(helper.FolderListing(body, files, folders), 0) << body;
    }
    EXPECT_EQ(files.size(), 1U);
    EXPECT_TRUE(folders.empty());
}

TEST_F(NetDiskJsonHelper, RecordsBeforeAWrongTypeStay)
{
    std::vector<_FileInfo> files;
    std::vector<_FolderInfo> folders;
    for (const char* wrong : {R"({"size":"5"})", R"({"size":-1})", R"({"size":4294967296})", R"({"name":5})",
                              R"({"cflag":[]})", R"({"ctime":"x"})", R"({"md5":{}})", "5", "\"x\"", "[]"})
    {
        files.clear();
        log.clear();
        EXPECT_EQ(helper.FolderListing(std::string(R"({"files":[{"fkey":"k1"},)") + wrong + "]}", files, folders), 1)
            << wrong;
        ASSERT_EQ(files.size(), 1U) << wrong;
        EXPECT_EQ(Errors(), Messages{"parse json error"}) << wrong;
    }
}

TEST_F(NetDiskJsonHelper, OverlongTextsRunOnWithinTheRecordOnly)
{
    std::vector<_FileInfo> files;
    std::vector<_FolderInfo> folders;
    const std::string longText(300, 'x');
    EXPECT_EQ(helper.FolderListing(R"({"files":[{"fkey":")" + longText + R"(","md5":")" + longText + R"("}]})", files,
                                   folders),
              0);
    ASSERT_EQ(files.size(), 1U);
    // 65 characters and the zero: the key runs on into the name.
    EXPECT_EQ(std::wstring(files[0].fkey), std::wstring(65, L'x'));
    // The digest stands last: what is left of the record ends it.
    EXPECT_EQ(std::wstring(files[0].md5), std::wstring((sizeof(_FileInfo) - 216) / 2 - 1, L'x'));
}

TEST_F(NetDiskJsonHelper, LaterKeysOverwriteWhatALongOneLeft)
{
    std::vector<_FileInfo> files;
    std::vector<_FolderInfo> folders;
    EXPECT_EQ(helper.FolderListing(R"({"files":[{"fkey":")" + std::string(40, 'x') + R"(","name":"n","size":7}]})",
                                   files, folders),
              0);
    EXPECT_STREQ(files[0].name, L"n");
    EXPECT_EQ(files[0].size, 7U);
    EXPECT_EQ(std::wstring(files[0].fkey, 33), std::wstring(33, L'x'));
}

TEST_F(NetDiskJsonHelper, TextsAreCutBetweenCharacters)
{
    std::vector<_FileInfo> files;
    std::vector<_FolderInfo> folders;
    // 64 characters, then one of two halves: it does not fit into 65.
    const std::string name = std::string(64, 'x') + "\xF0\x9F\x98\x80";
    EXPECT_EQ(helper.FolderListing(R"({"files":[{"fkey":")" + name + R"("}]})", files, folders), 0);
    EXPECT_EQ(std::wstring(files[0].fkey), std::wstring(64, L'x'));
}

TEST_F(NetDiskJsonHelper, PcodeReplies)
{
    const char* pcode = nullptr;
    EXPECT_EQ(helper.PcodeCreatedReply(R"({"pcode":"p1"})", pcode), 0);
    EXPECT_STREQ(pcode, "p1");
    EXPECT_EQ(helper.PcodeCreatedReply("{}", pcode), 1);
    EXPECT_EQ(Errors(), Messages{"get pcode error"});

    std::vector<_PcodeInfo> pcodes;
    EXPECT_EQ(
        helper.PcodeListing(
            R"({"pcodes":[{"pcode":"p1","createtime":1.9,"deadline":-1.9,"downcount":2},{"pcode":"p2"}]})", pcodes),
        0);
    ASSERT_EQ(pcodes.size(), 2U);
    EXPECT_STREQ(pcodes[0].pcode, L"p1");
    EXPECT_EQ(pcodes[0].createtime, 1);
    EXPECT_EQ(pcodes[0].deadline, -1);
    EXPECT_EQ(pcodes[0].downcount, 2U);
    EXPECT_EQ(pcodes[1].deadline, 0);

    std::vector<_FileInfo> files;
    EXPECT_EQ(
        helper.PcodeContents(
            R"({"files":[{"fid":"i1","fkey":"no","name":"n","size":5,"md5":"m","cflag":1,"downcount":9}]})", files),
        0);
    ASSERT_EQ(files.size(), 1U);
    EXPECT_STREQ(files[0].fkey, L"i1");
    EXPECT_EQ(files[0].cflag, 1);
    EXPECT_EQ(files[0].downcount, 0U);
    EXPECT_STREQ(files[0].md5, L"m");
}

TEST_F(NetDiskJsonHelper, Capacity)
{
    std::int64_t total = 1;
    std::int64_t used = 2;
    std::uint32_t maximum = 3;
    EXPECT_EQ(helper.Capacity(R"({"total_space":1099511627776,"used_space":12.7,"max_file_size":4294967295})", total,
                              used, maximum),
              0);
    EXPECT_EQ(total, 1099511627776);
    EXPECT_EQ(used, 12);
    EXPECT_EQ(maximum, 4294967295U);
}

TEST_F(NetDiskJsonHelper, CapacityWithoutItsKeysLeavesTheOutputsAlone)
{
    std::int64_t total = 1;
    std::int64_t used = 2;
    std::uint32_t maximum = 3;
    EXPECT_EQ(helper.Capacity(R"({"used_space":1,"max_file_size":1})", total, used, maximum), 1);
    EXPECT_EQ(helper.Capacity(R"({"total_space":1,"max_file_size":1})", total, used, maximum), 1);
    EXPECT_EQ(helper.Capacity(R"({"total_space":1,"used_space":1})", total, used, maximum), 1);
    EXPECT_EQ(helper.Capacity(R"({"total_space":9,"used_space":9,"max_file_size":-1})", total, used, maximum), 1);
    EXPECT_EQ(Errors(), (Messages{"get total_space error", "get used_space error", "get max_file_size error",
                                  "parse json error"}));
    EXPECT_EQ(total, 1);
    EXPECT_EQ(used, 2);
    EXPECT_EQ(maximum, 3U);
}

TEST_F(NetDiskJsonHelper, RecyclebinListingSkipsWhatIsNoItem)
{
    std::vector<_RItemInfo> items;
    EXPECT_EQ(helper.RecyclebinListing(
                  R"({"data":[5,"x",null,[],{},{"rs_id":null},{"rs_id":"r1","rtime":5,"type":2,"name":"n",
                      "fo_before":"/a/b"},{"rs_id":"r2"}]})",
                  items),
              0);
    ASSERT_EQ(items.size(), 2U);
    EXPECT_STREQ(items[0].rs_id, L"r1");
    EXPECT_EQ(items[0].rtime, 5);
    EXPECT_EQ(items[0].type, 2);
    EXPECT_STREQ(items[0].name, L"n");
    EXPECT_STREQ(items[0].fo_before, L"/a/b");
    EXPECT_STREQ(items[1].rs_id, L"r2");
}

TEST_F(NetDiskJsonHelper, AListingOfMoreThanAGibibyteIsRefused)
{
    const std::size_t tooMany = (std::size_t{1} << 30U) / sizeof(_RItemInfo) + 1;
    const std::string body = R"({"data":[0)" + Repeated(R"(,{"rs_id":"a"})", static_cast<int>(tooMany)) + "]}";
    std::vector<_RItemInfo> items(1);

    EXPECT_EQ(helper.RecyclebinListing(body, items), 1);
    EXPECT_EQ(Errors(), Messages{"too long a listing, size=" + std::to_string(tooMany) +
                                 ", limit=" + std::to_string(tooMany - 1)});
    EXPECT_EQ(items.size(), 1U);
}

TEST_F(NetDiskJsonHelper, WhatIsNoItemTakesNoRoom)
{
    std::vector<_RItemInfo> items;
    EXPECT_EQ(helper.RecyclebinListing(R"({"data":[{"rs_id":"a"})" + Repeated(",0", 1000) + "]}", items), 0);
    EXPECT_EQ(items.size(), 1U);
    EXPECT_LT(items.capacity(), 1000U);
}

TEST_F(NetDiskJsonHelper, RecyclebinFolderMayBeLongAndEndsWithTheRecord)
{
    std::vector<_RItemInfo> items;
    EXPECT_EQ(
        helper.RecyclebinListing(R"({"data":[{"rs_id":"r","fo_before":")" + Repeated("\\u4e2d", 9000) + "\"}]}", items),
        0);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(std::wstring(items[0].fo_before), std::wstring((sizeof(_RItemInfo) - 214) / 2 - 1, L'\u4E2D'));
}
