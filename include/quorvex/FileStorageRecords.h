#ifndef QUORVEX_FILESTORAGERECORDS_H
#define QUORVEX_FILESTORAGERECORDS_H

/// @file
/// The records in which the shared file storage hands listings to its caller. They are plain values of a fixed
/// layout. Texts end with a zero; one that is longer than its array, which no server in its senses sends, runs on into
/// the fields behind it and may lose its zero to their numbers: read no more than the array.

namespace quorvex
{

/// One emoticon.
struct EmoticonInfo
{
    wchar_t fkey[65];   ///< file key
    wchar_t fname[65];  ///< file name
    unsigned int fsize; ///< bytes
};

/// One file of the large-file depot.
struct LargeFileInfo
{
    wchar_t fkey[65];       ///< file key
    wchar_t fname[65];      ///< file name
    unsigned int fsize;     ///< bytes; a listing with a file of 4 GiB or more cannot be read
    wchar_t fmd5[33];       ///< MD5, 32 lowercase hexadecimal characters
    wchar_t fsha1[41];      ///< SHA-1, 40 lowercase hexadecimal characters
    wchar_t createtime[20]; ///< when it was created, as the server writes it
    int finish;             ///< whether the upload is finished
    int leftminute;         ///< minutes until the server removes it
};

} // namespace quorvex

#endif
