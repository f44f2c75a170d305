#include "Listings.h"

#include "Failure.h"
#include "ModuleVector.h"
#include "Text.h"

namespace quorvex::console
{
namespace
{

std::string TypeText(int type)
{
    if (type == 1)
        return "file";
    return type == 2 ? "folder" : std::to_string(type);
}

template <class Record>
auto EntriesOf(const std::vector<Record>& records)
{
    std::vector<decltype(EntryOf(records.front()))> entries;
    entries.reserve(records.size());
    for (const Record& record : records)
        entries.push_back(EntryOf(record));
    return entries;
}

} // namespace

FileEntry EntryOf(const netdisk::_FileInfo& record)
{
    FileEntry entry;
    entry.key = ToUtf8(FieldText(record.fkey));
    entry.name = ToUtf8(FieldText(record.name));
    entry.size = record.size;
    entry.complete = record.cflag != 0;
    entry.downloads = record.downcount;
    entry.created = record.ctime;
    entry.md5 = ToUtf8(FieldText(record.md5));
    return entry;
}

FolderEntry EntryOf(const netdisk::_FolderInfo& record)
{
    return {ToUtf8(FieldText(record.fo_id)), ToUtf8(FieldText(record.name))};
}

ShareEntry EntryOf(const netdisk::_PcodeInfo& record)
{
    return {ToUtf8(FieldText(record.pcode)), record.createtime, record.deadline, record.downcount};
}

BinEntry EntryOf(const netdisk::_RItemInfo& record)
{
    return {ToUtf8(FieldText(record.rs_id)), TypeText(record.type), ToUtf8(FieldText(record.name)),
            ToUtf8(FieldText(record.fo_before)), record.rtime};
}

Json::Value ToJson(const FileEntry& entry)
{
    Json::Value object;
    object["key"] = entry.key;
    object["name"] = entry.name;
    object["size"] = Json::UInt64{entry.size};
    object["complete"] = entry.complete;
    object["downloads"] = Json::UInt64{entry.downloads};
    object["created"] = Json::Int64{entry.created};
    object["md5"] = entry.md5;
    return object;
}

Json::Value ToJson(const FolderEntry& entry)
{
    Json::Value object;
    object["id"] = entry.id;
    object["name"] = entry.name;
    return object;
}

Json::Value ToJson(const ShareEntry& entry)
{
    Json::Value object;
    object["pcode"] = entry.pcode;
    object["created"] = Json::Int64{entry.created};
    object["deadline"] = Json::Int64{entry.deadline};
    object["downloads"] = Json::UInt64{entry.downloads};
    return object;
}

Json::Value ToJson(const BinEntry& entry)
{
    Json::Value object;
    object["id"] = entry.id;
    object["type"] = entry.type;
    object["name"] = entry.name;
    object["from"] = entry.from;
    object["removed"] = Json::Int64{entry.removed};
    return object;
}

Folder ListFolder(const netdisk::CNetDisk& disk, const std::string& id)
{
    const auto files = NewFiles();
    const auto folders = NewFolders();
    Check(disk.FolderList(Wide(id).c_str(), *files, *folders), "cannot list the folder " + id);
    return {EntriesOf(*folders), EntriesOf(*files)};
}

std::vector<ShareEntry> ListShares(const netdisk::CNetDisk& disk, unsigned long type)
{
    const auto pcodes = NewPcodes();
    Check(disk.PcodeList(type, *pcodes), "cannot list the share codes");
    return EntriesOf(*pcodes);
}

std::vector<FileEntry> ListShared(const netdisk::CNetDisk& disk, const std::string& pcode)
{
    const auto files = NewFiles();
    Check(disk.PcodeInfo(Wide(pcode).c_str(), *files), "cannot list the files of the share code " + pcode);
    return EntriesOf(*files);
}

std::vector<BinEntry> ListBin(const netdisk::CNetDisk& disk)
{
    const auto items = NewItems();
    Check(disk.RecyclebinList(*items), "cannot list the recycle bin");
    return EntriesOf(*items);
}

} // namespace quorvex::console
