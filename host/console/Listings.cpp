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

template <std::size_t Size>
std::string Utf8(const wchar_t (&field)[Size])
{
    return ToUtf8(FieldText(field));
}

template <std::size_t Size>
std::string Utf8(const char (&field)[Size])
{
    return FieldText(field);
}

template <class Record>
FileEntry FileEntryOf(const Record& record)
{
    FileEntry entry;
    entry.key = Utf8(record.fkey);
    entry.name = Utf8(record.name);
    entry.size = record.size;
    entry.complete = record.cflag != 0;
    entry.downloads = record.downcount;
    entry.created = record.ctime;
    entry.md5 = Utf8(record.md5);
    return entry;
}

template <class Record>
BinEntry BinEntryOf(const Record& record)
{
    return {Utf8(record.rs_id), TypeText(record.type), Utf8(record.name), Utf8(record.fo_before), record.rtime};
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
    return FileEntryOf(record);
}

FileEntry EntryOf(const netdisk::_FileInfoUTF8& record)
{
    return FileEntryOf(record);
}

FolderEntry EntryOf(const netdisk::_FolderInfo& record)
{
    return {Utf8(record.fo_id), Utf8(record.name)};
}

FolderEntry EntryOf(const netdisk::_FolderInfoUTF8& record)
{
    return {Utf8(record.fo_id), Utf8(record.name)};
}

ShareEntry EntryOf(const netdisk::_PcodeInfo& record)
{
    return {Utf8(record.pcode), record.createtime, record.deadline, record.downcount};
}

BinEntry EntryOf(const netdisk::_RItemInfo& record)
{
    return BinEntryOf(record);
}

BinEntry EntryOf(const netdisk::_RItemInfoUTF8& record)
{
    return BinEntryOf(record);
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

Folder ListFolder(const netdisk::CNetDisk& disk, const std::string& id, bool inUtf8)
{
    const std::wstring wideId = Wide(id);
    const std::string what = "cannot list the folder " + id;
    if (inUtf8)
    {
        std::vector<netdisk::_FileInfoUTF8> files;
        std::vector<netdisk::_FolderInfoUTF8> folders;
        Check({disk.FolderList(wideId.c_str(), files, folders), "FolderList"}, what);
        return {EntriesOf(folders), EntriesOf(files)};
    }
    const auto files = NewFiles();
    const auto folders = NewFolders();
    Check({disk.FolderList(wideId.c_str(), *files, *folders), "FolderList"}, what);
    return {EntriesOf(*folders), EntriesOf(*files)};
}

std::vector<ShareEntry> ListShares(const netdisk::CNetDisk& disk, unsigned long type)
{
    const auto pcodes = NewPcodes();
    Check({disk.PcodeList(type, *pcodes), "PcodeList"}, "cannot list the share codes");
    return EntriesOf(*pcodes);
}

std::vector<FileEntry> ListShared(const netdisk::CNetDisk& disk, const std::string& pcode)
{
    const auto files = NewFiles();
    Check({disk.PcodeInfo(Wide(pcode).c_str(), *files), "PcodeInfo"},
          "cannot list the files of the share code " + pcode);
    return EntriesOf(*files);
}

std::vector<BinEntry> ListBin(const netdisk::CNetDisk& disk, bool inUtf8)
{
    const char* const what = "cannot list the recycle bin";
    if (inUtf8)
    {
        std::vector<netdisk::_RItemInfoUTF8> items;
        Check({disk.RecyclebinList(items), "RecyclebinList"}, what);
        return EntriesOf(items);
    }
    const auto items = NewItems();
    Check({disk.RecyclebinList(*items), "RecyclebinList"}, what);
    return EntriesOf(*items);
}

} // namespace quorvex::console
