#include "NetDiskUtf8Records.h"

#include "../CommonUtil.h"

#include <cstddef>

namespace quorvex::netdisk
{

namespace
{

template <std::size_t Size>
void CopyField(const wchar_t (&wide)[Size], char (&utf8)[Size])
{
    CopyToUtf8(FieldText(wide), utf8, Size);
}

} // namespace

_FileInfoUTF8 ToUtf8(const _FileInfo& file)
{
    _FileInfoUTF8 utf8 = {};
    CopyField(file.fkey, utf8.fkey);
    CopyField(file.name, utf8.name);
    utf8.size = file.size;
    utf8.cflag = file.cflag;
    utf8.downcount = file.downcount;
    utf8.ctime = file.ctime;
    CopyField(file.md5, utf8.md5);
    return utf8;
}

_FolderInfoUTF8 ToUtf8(const _FolderInfo& folder)
{
    _FolderInfoUTF8 utf8 = {};
    CopyField(folder.fo_id, utf8.fo_id);
    CopyField(folder.name, utf8.name);
    return utf8;
}

_RItemInfoUTF8 ToUtf8(const _RItemInfo& item)
{
    _RItemInfoUTF8 utf8 = {};
    CopyField(item.rs_id, utf8.rs_id);
    utf8.rtime = item.rtime;
    utf8.type = item.type;
    CopyField(item.name, utf8.name);
    CopyField(item.fo_before, utf8.fo_before);
    return utf8;
}

} // namespace quorvex::netdisk
