#pragma once

#include <quorvex/FileStorageRecords.h>

#include <cstdint>
#include <string>

#include <json/value.h>

namespace quorvex::console
{

/// A file in the depot, as the server lists it.
struct DepotEntry
{
    std::string key;
    std::string name;
    std::uint64_t size = 0;
    std::string md5;
    std::string created; ///< in the server's words
    bool finished = false;
    std::int64_t minutesLeft = 0;
};

DepotEntry EntryOf(const LargeFileInfo& record);
Json::Value ToJson(const DepotEntry& entry);

} // namespace quorvex::console
