// The records' layout is part of the interface: hosts that were built years ago read them.

#include <quorvex/NetDiskRecords.h>

#include <cstddef>

namespace quorvex::netdisk
{

#define LAYOUT(record, field, offset) static_assert(offsetof(record, field) == (offset))

static_assert(sizeof(wchar_t) == 2);

LAYOUT(_FileInfo, fkey, 0);
LAYOUT(_FileInfo, name, 66);
LAYOUT(_FileInfo, size, 196);
LAYOUT(_FileInfo, cflag, 200);
LAYOUT(_FileInfo, downcount, 204);
LAYOUT(_FileInfo, ctime, 208);
LAYOUT(_FileInfo, md5, 216);
static_assert(sizeof(_FileInfo) == 288);

LAYOUT(_FileInfoUTF8, fkey, 0);
LAYOUT(_FileInfoUTF8, name, 33);
LAYOUT(_FileInfoUTF8, size, 100);
LAYOUT(_FileInfoUTF8, cflag, 104);
LAYOUT(_FileInfoUTF8, downcount, 108);
LAYOUT(_FileInfoUTF8, ctime, 112);
LAYOUT(_FileInfoUTF8, md5, 120);
static_assert(sizeof(_FileInfoUTF8) == 160);

LAYOUT(_FolderInfo, fo_id, 0);
LAYOUT(_FolderInfo, name, 66);
static_assert(sizeof(_FolderInfo) == 196);

LAYOUT(_FolderInfoUTF8, fo_id, 0);
LAYOUT(_FolderInfoUTF8, name, 33);
static_assert(sizeof(_FolderInfoUTF8) == 98);

LAYOUT(_PcodeInfo, pcode, 0);
LAYOUT(_PcodeInfo, createtime, 72);
LAYOUT(_PcodeInfo, deadline, 80);
LAYOUT(_PcodeInfo, downcount, 88);
static_assert(sizeof(_PcodeInfo) == 96);

LAYOUT(_RItemInfo, rs_id, 0);
LAYOUT(_RItemInfo, rtime, 72);
LAYOUT(_RItemInfo, type, 80);
LAYOUT(_RItemInfo, name, 84);
LAYOUT(_RItemInfo, fo_before, 214);
static_assert(sizeof(_RItemInfo) == 8408);

LAYOUT(_RItemInfoUTF8, rs_id, 0);
LAYOUT(_RItemInfoUTF8, rtime, 40);
LAYOUT(_RItemInfoUTF8, type, 48);
LAYOUT(_RItemInfoUTF8, name, 52);
LAYOUT(_RItemInfoUTF8, fo_before, 117);
static_assert(sizeof(_RItemInfoUTF8) == 4216);

#undef LAYOUT

} // namespace quorvex::netdisk
