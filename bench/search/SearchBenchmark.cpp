// A list of user ids read into the caller's array against the JSON library's parse of the same reply, and status
// reports against the same WinHTTP calls in a bare loop.

#include "BareClient.h"
#include "LoopbackServer.h"
#include "OnlineUserSearch/OLUSJsonHelper.h"
#include "Pairs.h"

#include <ferrolink/log.h>

#include <quorvex/OnlineUserSearch.h>

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace quorvex;
using namespace quorvex::bench;

constexpr std::size_t kIds = 100000;
constexpr int kReports = 500;
constexpr int kRuns = 11;

void Check(bool worked, const char* what)
{
    if (!worked)
    {
        throw std::runtime_error(what);
    }
}

std::string IdList(unsigned int firstId)
{
    std::string reply = R"({"result":200,"errorinfo":"","users":[)";
    for (std::size_t i = 0; i < kIds; ++i)
    {
        reply += (i == 0 ? "\"" : ",\"") + std::to_string(firstId + i) + "\"";
    }
    return reply + "]}";
}

void Parse(const std::string& reply)
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    Check(reader->parse(reply.data(), reply.data() + reply.size(), &root, nullptr), "the reply was not parsed");
}

void ReadIds(const std::string& reply, std::vector<unsigned int>& caller)
{
    std::vector<unsigned int> ids;
    int result = 0;
    const char* errorinfo = nullptr;
    Check(OLUSJsonHelper().ParseUserIdList(reply, result, errorinfo, ids) == 0, "the ids were not read");
    const std::size_t count = std::min(ids.size(), caller.size());
    std::copy_n(ids.begin(), count, caller.begin());
    Check(count == kIds && caller.back() - caller.front() == kIds - 1, "the ids were not read as they were written");
}

Pair Ids(const char* name, unsigned int firstId, std::vector<unsigned int>& caller)
{
    const std::string reply = IdList(firstId);
    return {.name = name,
            .first = [reply] { Parse(reply); },
            .second = [reply, &caller] { ReadIds(reply, caller); },
            .repetitions = 3};
}

void BenchIds()
{
    std::vector<unsigned int> caller(kIds);
    CompareAndPrint(
        {"Reply", "parse alone", "parse and ids", "ids / parse"}, {Target::Bound::AtMost, 1.3},
        {Ids("100000 ids of 5 and 6 digits", 10000, caller), Ids("100000 ids of 10 digits", 4000000000U, caller)},
        kRuns);
}

void BenchReports()
{
    const LoopbackServer server;
    const std::wstring url = L"http://127.0.0.1:" + std::to_wstring(server.Port());
    const COnlineUserSearch module(url.c_str());
    const BareClient bare(server.Port());
    const Pair reports{
        .name = "UserReportStatus, 500 requests",
        .first = [&module] { Check(module.UserReportStatus("im", 2) == 0, "a status was not reported"); },
        .second = [&bare] { bare.Get(L"/status.php?st=2&app=im"); },
        .repetitions = kReports};
    CompareAndPrint({"operation", "module", "bare loop", "module's share of the bare loop's speed"},
                    {Target::Bound::AtLeast, 0.97}, {reports}, kRuns);
}

} // namespace

int main()
{
    try
    {
        frl_log_set_level(0);
        BenchIds();
        std::cout << '\n';
        BenchReports();
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << "quorvex-search-bench: " << error.what() << '\n';
        return 1;
    }
}
