#pragma once

#include <quorvex/NetDiskRecords.h>

#include <vector>

namespace quorvex::netdisk
{

/// A record with its texts in UTF-8. Each text is cut to its array less one byte, never within a character.
_FileInfoUTF8 ToUtf8(const _FileInfo& file);
_FolderInfoUTF8 ToUtf8(const _FolderInfo& folder);
_RItemInfoUTF8 ToUtf8(const _RItemInfo& item);

template <class Record, class Utf8Record>
void AppendUtf8(const std::vector<Record>& records, std::vector<Utf8Record>& utf8Records)
{
    utf8Records.reserve(utf8Records.size() + records.size());
    for (const Record& record : records)
    {
        utf8Records.push_back(ToUtf8(record));
    }
}

} // namespace quorvex::netdisk
