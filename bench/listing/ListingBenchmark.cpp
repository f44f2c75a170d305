// A folder listing read into records against the JSON library's parse of the same reply: what the records cost beyond
// the document that they are read from.

#include "Netdisk/NetDiskJsonHelper.h"
#include "Pairs.h"

#include <ferrolink/log.h>

#include <json/reader.h>
#include <json/value.h>

#include <cstddef>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace quorvex::bench;
using namespace quorvex::netdisk;

constexpr std::size_t kFiles = 10000;
constexpr int kRuns = 11;

void Check(bool worked)
{
    if (!worked)
    {
        throw std::runtime_error("the listing was not read as it was written");
    }
}

/// @param nameStart what every name begins with
std::string Listing(const std::string& nameStart)
{
    std::ostringstream reply;
    reply << "{\"files\":[" << std::setfill('0');
    for (std::size_t i = 0; i < kFiles; ++i)
    {
        reply << (i == 0 ? "" : ",") << std::hex << "{\"fkey\":\"" << std::setw(32) << i * 2654435761U
              << "\",\"md5\":\"" << std::setw(32) << i * 40503U << std::dec << "\",\"name\":\"" << nameStart
              << std::setw(5) << i << ".txt\",\"size\":" << i * 4099 << ",\"cflag\":1,\"downcount\":" << i % 100
              << ",\"ctime\":" << 1262304000000 + i << "}";
    }
    reply << "],\"folders\":[]}";
    return reply.str();
}

void Parse(const std::string& reply)
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    Check(reader->parse(reply.data(), reply.data() + reply.size(), &root, nullptr));
}

void ReadRecords(const std::string& reply)
{
    std::vector<_FileInfo> files;
    std::vector<_FolderInfo> folders;
    Check(CNetDiskJsonHelper().FolderListing(reply, files, folders) == 0);
    Check(files.size() == kFiles && files.back().ctime == 1262304000000 + static_cast<long long>(kFiles) - 1);
}

Pair Compare(const std::string& names, const std::string& nameStart)
{
    const std::string reply = Listing(nameStart);
    std::ostringstream name;
    name << kFiles << " files, " << names << ", " << std::fixed << std::setprecision(1)
         << static_cast<double>(reply.size()) / 1e6 << " MB";
    return {.name = name.str(),
            .first = [reply] { Parse(reply); },
            .second = [reply] { ReadRecords(reply); },
            .repetitions = 5};
}

} // namespace

int main()
{
    try
    {
        frl_log_set_level(0);
        CompareAndPrint({"Listing", "parse alone", "parse and records", "records / parse"},
                        {Target::Bound::AtMost, 1.5},
                        {Compare("ASCII names", "Quarterly report "),
                         Compare("names of three-byte characters", "\u5b63\u5ea6\u62a5\u544a")},
                        kRuns);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << "quorvex-listing-bench: " << error.what() << '\n';
        return 1;
    }
}
