#pragma once

#include <quorvex/NetDisk.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include <json/value.h>

namespace quorvex::console
{

/// The server's answers in a shape of their own: texts in UTF-8, free of the records' limits and layout.

struct FileEntry
{
    std::string key; ///< in a share code, the file's id there
    std::string name;
    std::uint64_t size = 0;
    bool complete = false;
    std::uint64_t downloads = 0;
    std::int64_t created = 0;
    std::string md5;
};

struct FolderEntry
{
    std::string id;
    std::string name;
};

struct Folder
{
    std::vector<FolderEntry> folders;
    std::vector<FileEntry> files;
};

struct ShareEntry
{
    std::string pcode;
    std::int64_t created = 0;
    std::int64_t deadline = 0;
    std::uint64_t downloads = 0;
};

struct BinEntry
{
    std::string id;
    std::string type; ///< "file", "folder", or the server's number for something else
    std::string name;
    std::string from; ///< path of the folder that it was in
    std::int64_t removed = 0;
};

/// Text of a record's field, which may fill the field to its last place without an end.
template <std::size_t Size>
std::wstring FieldText(const wchar_t (&field)[Size])
{
    return {field, wcsnlen(field, Size)};
}

template <std::size_t Size>
std::string FieldText(const char (&field)[Size])
{
    return {field, strnlen(field, Size)};
}

/// The other way, cut to what the field holds.
template <std::size_t Size>
void SetField(wchar_t (&field)[Size], const std::wstring& text)
{
    field[text.copy(field, Size - 1)] = L'\0';
}

FileEntry EntryOf(const netdisk::_FileInfo& record);
FileEntry EntryOf(const netdisk::_FileInfoUTF8& record);
FolderEntry EntryOf(const netdisk::_FolderInfo& record);
FolderEntry EntryOf(const netdisk::_FolderInfoUTF8& record);
ShareEntry EntryOf(const netdisk::_PcodeInfo& record);
BinEntry EntryOf(const netdisk::_RItemInfo& record);
BinEntry EntryOf(const netdisk::_RItemInfoUTF8& record);

Json::Value ToJson(const FileEntry& entry);
Json::Value ToJson(const FolderEntry& entry);
Json::Value ToJson(const ShareEntry& entry);
Json::Value ToJson(const BinEntry& entry);

/// An array also when there is no entry.
template <class Entry>
Json::Value ToJson(const std::vector<Entry>& entries)
{
    Json::Value array(Json::arrayValue);
    for (const Entry& entry : entries)
        array.append(ToJson(entry));
    return array;
}

/// @name Questions to the server
/// @param inUtf8 asks for records in UTF-8, in which names have less room
/// @throws Failure
/// @{
Folder ListFolder(const netdisk::CNetDisk& disk, const std::string& id, bool inUtf8 = false);
std::vector<ShareEntry> ListShares(const netdisk::CNetDisk& disk, unsigned long type);
std::vector<FileEntry> ListShared(const netdisk::CNetDisk& disk, const std::string& pcode);
std::vector<BinEntry> ListBin(const netdisk::CNetDisk& disk, bool inUtf8 = false);
/// @}

} // namespace quorvex::console
