#ifndef QUORVEX_NETDISKRECORDS_H
#define QUORVEX_NETDISKRECORDS_H

/// @file
/// The records in which the network disk hands listings to its caller. They are plain values of a fixed layout;
/// texts end with a zero, and one that is longer than its array, which no server in its senses sends, runs on into the
/// fields behind it and may lose its zero to their numbers: read no more than the array. Times are as the server sends
/// them.

namespace quorvex
{
namespace netdisk
{

/// One file.
struct _FileInfo
{
    wchar_t fkey[33];       ///< file key
    wchar_t name[65];       ///< file name
    unsigned int size;      ///< bytes
    int cflag;              ///< 0 while the upload is not complete
    unsigned int downcount; ///< number of downloads
    long long ctime;        ///< creation time
    wchar_t md5[33];        ///< MD5, 32 lowercase hexadecimal characters
};

/// One file, its texts in UTF-8.
struct _FileInfoUTF8
{
    char fkey[33];          ///< file key
    char name[65];          ///< file name
    unsigned int size;      ///< bytes
    int cflag;              ///< 0 while the upload is not complete
    unsigned int downcount; ///< number of downloads
    long long ctime;        ///< creation time
    char md5[33];           ///< MD5, 32 lowercase hexadecimal characters
};

/// One folder.
struct _FolderInfo
{
    wchar_t fo_id[33]; ///< folder id
    wchar_t name[65];  ///< folder name
};

/// One folder, its texts in UTF-8.
struct _FolderInfoUTF8
{
    char fo_id[33]; ///< folder id
    char name[65];  ///< folder name
};

/// One share code.
struct _PcodeInfo
{
    wchar_t pcode[33];      ///< share code
    long long createtime;   ///< when it was made
    long long deadline;     ///< when it ends
    unsigned int downcount; ///< number of downloads through it
};

/// One item of the recycle bin.
struct _RItemInfo
{
    wchar_t rs_id[33];       ///< item id
    long long rtime;         ///< time of removal
    int type;                ///< file or folder, as the server codes it
    wchar_t name[65];        ///< name of the file or folder
    wchar_t fo_before[4097]; ///< the folder that it was removed from
};

/// One item of the recycle bin, its texts in UTF-8.
struct _RItemInfoUTF8
{
    char rs_id[33];       ///< item id
    long long rtime;      ///< time of removal
    int type;             ///< file or folder, as the server codes it
    char name[65];        ///< name of the file or folder
    char fo_before[4097]; ///< the folder that it was removed from
};

} // namespace netdisk
} // namespace quorvex

#endif
