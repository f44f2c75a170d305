// Every system call of every operation is made to fail once: no failure may leak a handle, write outside of a
// caller's room, throw, or pass for a success that it is not.

#include "support/HandleLedger.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"

#include <quorvex/NetDisk.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace quorvex::netdisk;

/// A caller's buffer whose end is watched.
template <typename Character, std::size_t Room>
struct Guarded
{
    Character room[Room]{};
    std::array<Character, 64> guard{};

    bool isIntact() const
    {
        return std::ranges::all_of(guard, [](Character c) { return c == Character{}; });
    }
};

struct Outputs
{
    Guarded<wchar_t, 40> key;
    Guarded<wchar_t, 20> name;
    Guarded<wchar_t, 20> second;
    Guarded<wchar_t, 33> md5;
    Guarded<char, 5> block;

    bool areIntact() const
    {
        return key.isIntact() && name.isIntact() && second.isIntact() && md5.isIntact() && block.isIntact();
    }
};

struct Operation
{
    const char* name;
    const char* body; ///< of the good answer
    std::function<int(CNetDisk&, const wchar_t* folder, Outputs&)> call;
};

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

constexpr const char* folderListing =
    "{\"files\":[{\"fkey\":\"k\"},{\"fkey\":\"l\"}],\"folders\":[{\"fo_id\":\"d\"},{\"fo_id\":\"e\"}]}";
constexpr const char* binListing = "{\"data\":[{\"rs_id\":\"r\"},{\"rs_id\":\"s\"}]}";

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> all{
        {"UserLoginSession", "{\"uap_uid\":7}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.UserLogin(L"S"); }},
        {"UserLoginPassword", "{\"uap_uid\":7,\"uap_sid\":\"s\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.UserLogin(L"u", L"p"); }},
        {"PassportLoginTicket", "{\"uap_uid\":7,\"uap_sid\":\"s\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.PassportLoginTicket(L"b", L"t"); }},
        {"UserLogout", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.UserLogout(); }},
        {"FileUpload", "{\"fkey\":\"K\",\"fsize\":5,\"cflag\":1}",
         [](CNetDisk& disk, const wchar_t* folder, Outputs& out) {
             return disk.FileUpload(folder, L"a.txt", out.key.room, 20);
         }},
        {"FileDownload", "hello",
         [](CNetDisk& disk, const wchar_t* folder, Outputs&) { return disk.FileDownload(L"K", folder, nullptr); }},
        {"FileModify", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FileModify(L"K", L"F", L"n"); }},
        {"FileDelete", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FileDelete(L"K"); }},
        {"FileDelete4ever", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FileDelete4ever(L"K"); }},
        {"LargeFileCreate", "{\"fkey\":\"K\",\"fsize\":0,\"cflag\":0}",
         [](CNetDisk& disk, const wchar_t* folder, Outputs& out) {
             int complete = 0;
             return disk.LargeFileCreate(folder, L"a.txt", out.key.room, 20, complete);
         }},
        {"LargeFileUpload", "{\"fkey\":\"K\",\"fsize\":5}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             char data[] = "hello";
             return disk.LargeFileUpload(L"K", data, 5, 0);
         }},
        {"LargeFileFinish", "{\"fkey\":\"K\",\"fsize\":5}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.LargeFileFinish(L"K"); }},
        {"LargeFileGetInfo", "h",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             unsigned long size = 0;
             return disk.LargeFileGetInfo(L"K", out.name.room, 20, size, out.second.room);
         }},
        {"LargeFileDownload", "hello",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             unsigned long size = 5;
             return disk.LargeFileDownload(L"K", 0, out.block.room, size);
         }},
        {"CapacityInfo", "{\"total_space\":100,\"used_space\":7,\"max_file_size\":50}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             unsigned long long total = 0;
             unsigned long long used = 0;
             unsigned long most = 0;
             return disk.CapacityInfo(total, used, most);
         }},
        {"FileGetChecksum", "",
         [](CNetDisk& disk, const wchar_t* folder, Outputs& out) {
             unsigned long size = 0;
             return disk.FileGetChecksum(folder, L"a.txt", size, out.md5.room);
         }},
        {"FolderAdd", "{\"fo_id\":\"F\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) { return disk.FolderAdd(L"n", L"P", out.key.room, 40); }},
        {"FolderModi", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FolderModi(L"F", L"n", L"P"); }},
        {"FolderDel", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FolderDel(L"F"); }},
        {"FolderDel4ever", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.FolderDel4ever(L"F"); }},
        {"FolderList", folderListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_FileInfo> files;
             std::vector<_FolderInfo> folders;
             return disk.FolderList(L"F", files, folders);
         }},
        {"FolderListUtf8", folderListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_FileInfoUTF8> files;
             std::vector<_FolderInfoUTF8> folders;
             return disk.FolderList(L"F", files, folders);
         }},
        {"PcodeCreate", "{\"pcode\":\"c\"}",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             std::vector<_FileInfo> files(2);
             return disk.PcodeCreate(files, 60, out.key.room, 40);
         }},
        {"PcodeDelete", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_PcodeInfo> pcodes(2);
             return disk.PcodeDelete(pcodes);
         }},
        {"PcodeList", "{\"pcodes\":[{\"pcode\":\"c\"},{\"pcode\":\"d\"}]}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_PcodeInfo> pcodes;
             return disk.PcodeList(3, pcodes);
         }},
        {"PcodeInfo", "{\"files\":[{\"fid\":\"i\"},{\"fid\":\"j\"}]}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_FileInfo> files;
             return disk.PcodeInfo(L"c", files);
         }},
        {"PcodeDefer", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.PcodeDefer(L"c", 60); }},
        {"PcodeSave", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.PcodeSave(L"c", L"F"); }},
        {"PcodeDown", "hello",
         [](CNetDisk& disk, const wchar_t* folder, Outputs&) { return disk.PcodeDown(L"c", L"i", folder, nullptr); }},
        {"LargePcodeDown", "hello",
         [](CNetDisk& disk, const wchar_t*, Outputs& out) {
             unsigned long size = 5;
             return disk.LargePcodeDown(L"c", L"i", 0, out.block.room, size);
         }},
        {"RecyclebinList", binListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_RItemInfo> items;
             return disk.RecyclebinList(items);
         }},
        {"RecyclebinListUtf8", binListing,
         [](CNetDisk& disk, const wchar_t*, Outputs&) {
             std::vector<_RItemInfoUTF8> items;
             return disk.RecyclebinList(items);
         }},
        {"RecyclebinRecover", "{}",
         [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.RecyclebinRecover(L"r"); }},
        {"RecyclebinDel", "{}", [](CNetDisk& disk, const wchar_t*, Outputs&) { return disk.RecyclebinDel(L"r"); }},
    };
    return all;
}

/// The answer comes before the body is read, so that a request that breaks off is answered, too.
support::Exchange goodAnswer(std::string_view body)
{
    support::Exchange exchange;
    exchange.bodyBytesBeforeReply = 0;
    exchange.pieces = {
        "HTTP/1.1 200 OK\r\nContent-Range: bytes 0-0/5\r\n"
        "Content-Disposition: attachment;filename=\"d.txt;md5=0\r\nConnection: close\r\nContent-Length: " +
        std::to_string(body.size()) + "\r\n\r\n" + std::string(body)};
    return exchange;
}

/// A failure of these cannot end well.
bool isVital(std::string_view function)
{
    static constexpr std::array<std::string_view, 8> vital{
        "WinHttpOpen",
        "WinHttpCrackUrl",
        "WinHttpConnect",
        "WinHttpOpenRequest",
        "WinHttpAddRequestHeaders",
        "WinHttpSendRequest",
        "WinHttpReceiveResponse",
        "WinHttpReadData",
    };
    return std::ranges::find(vital, function) != vital.end();
}

bool isDocumented(int result)
{
    return result == 0 || result == 1 || (result >= -140 && result <= -100);
}

struct Fault
{
    std::string function;
    unsigned call = 0;
};

struct Outcome
{
    int result = 0;
    unsigned calls = 0; ///< of the function that was to fail
};

class FaultSweep : public testing::TestWithParam<Operation>
{
protected:
    Outcome run(const Fault* fault)
    {
        const Operation& operation = GetParam();
        support::ScriptedServer server;
        server.play(std::vector<support::Exchange>(4, goodAnswer(operation.body)));
        const std::wstring url = L"http://127.0.0.1:" + std::to_wstring(server.port()) + L"/api";

        support::LogCapture log;
        support::SystemCalls calls;
        const support::HandleLedger ledger(calls);
        Outputs outputs;
        Outcome outcome;
        if (fault != nullptr)
            calls.fail(fault->function, fault->call, ERROR_NOT_ENOUGH_MEMORY);
        {
            CNetDisk disk(url.c_str(), nullptr);
            outcome.result = operation.call(disk, m_folder.path().c_str(), outputs);
        }
        server.stop();

        EXPECT_TRUE(outputs.areIntact());
        EXPECT_TRUE(isDocumented(outcome.result)) << outcome.result;
        EXPECT_EQ(ledger.defects(), std::vector<std::string>{});
        // A line that finds no memory for some of its text is written without it.
        if (fault == nullptr || fault->function != "malloc")
        {
            for (const support::LogLine& line : log.lines())
                EXPECT_EQ(line.defect, "") << line.message;
        }
        if (outcome.result != 0)
        {
            EXPECT_FALSE(log.messages("ERROR").empty()) << "a failure without a line";
        }
        if (fault != nullptr)
            outcome.calls = calls.calls(fault->function);
        return outcome;
    }

    /// Fails the first call, then the second ... until the function is not called that often.
    void sweep(const std::string& function)
    {
        for (Fault fault{function, 1};; ++fault.call)
        {
            SCOPED_TRACE(function + ", call " + std::to_string(fault.call));
            const Outcome outcome = run(&fault);
            if (outcome.calls < fault.call)
                return;
            if (isVital(function) && std::string_view(GetParam().name) != "FileGetChecksum")
            {
                EXPECT_NE(outcome.result, 0);
            }
        }
    }

    void SetUp() override { support::writeFile(m_folder.path() / "a.txt", "hello"); }

private:
    support::TempFolder m_folder;
};

TEST_P(FaultSweep, NothingFailsWithoutAFault)
{
    EXPECT_EQ(run(nullptr).result, 0);
}

TEST_P(FaultSweep, EachSystemCall)
{
    std::vector<std::string> functions = support::SystemCalls().functions();
    std::erase(functions, "malloc");
    ASSERT_FALSE(functions.empty());
    for (const std::string& function : functions)
        sweep(function);
}

TEST_P(FaultSweep, EachAllocation)
{
    sweep("malloc");
}

TEST(RecordVectors, AreNullWithoutMemory)
{
    support::SystemCalls calls;
    const auto withoutMemory = [&](auto make) {
        calls.fail("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);
        return make();
    };
    EXPECT_EQ(withoutMemory(&CNetDisk::NewFileInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewFolderInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewPcodeInfoVector), nullptr);
    EXPECT_EQ(withoutMemory(&CNetDisk::NewRItemInfoVector), nullptr);
}

INSTANTIATE_TEST_SUITE_P(NetDisk, FaultSweep, testing::ValuesIn(operations()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

} // namespace
