// The records' layout is part of the interface: hosts that were built years ago read them.

#include <quorvex/FileStorageRecords.h>

#include <cstddef>

namespace quorvex
{

#define LAYOUT(record, field, offset) static_assert(offsetof(record, field) == (offset))

static_assert(sizeof(wchar_t) == 2);

LAYOUT(EmoticonInfo, fkey, 0);
LAYOUT(EmoticonInfo, fname, 130);
LAYOUT(EmoticonInfo, fsize, 260);
static_assert(sizeof(EmoticonInfo) == 264);

LAYOUT(LargeFileInfo, fkey, 0);
LAYOUT(LargeFileInfo, fname, 130);
LAYOUT(LargeFileInfo, fsize, 260);
LAYOUT(LargeFileInfo, fmd5, 264);
LAYOUT(LargeFileInfo, fsha1, 330);
LAYOUT(LargeFileInfo, createtime, 412);
LAYOUT(LargeFileInfo, finish, 452);
LAYOUT(LargeFileInfo, leftminute, 456);
static_assert(sizeof(LargeFileInfo) == 460);

#undef LAYOUT

} // namespace quorvex
