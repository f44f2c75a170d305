#include "DepotListing.h"

#include "Listings.h"
#include "Paths.h"
#include "Text.h"

namespace quorvex::console
{

DepotEntry EntryOf(const LargeFileInfo& record)
{
    DepotEntry entry;
    entry.key = ToUtf8(FieldText(record.fkey));
    entry.name = ToUtf8(RepairedName(FieldText(record.fname)));
    entry.size = record.fsize;
    entry.md5 = ToUtf8(FieldText(record.fmd5));
    entry.created = ToUtf8(FieldText(record.createtime));
    entry.finished = record.finish != 0;
    entry.minutesLeft = record.leftminute;
    return entry;
}

Json::Value ToJson(const DepotEntry& entry)
{
    Json::Value object;
    object["key"] = entry.key;
    object["name"] = entry.name;
    object["size"] = Json::UInt64{entry.size};
    object["md5"] = entry.md5;
    object["created"] = entry.created;
    object["finished"] = entry.finished;
    object["minutes_left"] = Json::Int64{entry.minutesLeft};
    return object;
}

} // namespace quorvex::console
