#pragma once

#include "support/PageGuards.h"
#include "support/TempFolder.h"

#include <quorvex/FileStorage.h>
#include <quorvex/FileStorage2.h>
#include <quorvex/FileStorage3.h>
#include <quorvex/NetDisk.h>
#include <quorvex/OnlineUserSearch.h>

#include <filesystem>
#include <string>

namespace hostile
{

/// How much an upload has that does not fit into the buffers of a connection.
inline constexpr std::size_t LargeUpload = std::size_t{4} * 1024 * 1024;

/// The five clients of one server, the folders that they work in, and the room for what they hand out. All room ends
/// at a protected page.
struct Stage
{
    explicit Stage(unsigned short port);

    /// Empties the room for the next operation.
    void clear();

    support::TempFolder folder;
    std::wstring in;  ///< a folder for downloads
    std::wstring out; ///< a folder with "a.txt" of five bytes and "large.bin" of LargeUpload bytes

    support::AtPageEnd<wchar_t> key{34};
    support::AtPageEnd<wchar_t> longKey{65};
    support::AtPageEnd<wchar_t> ticket{65};
    support::AtPageEnd<wchar_t> name{20};
    support::AtPageEnd<wchar_t> second{20};
    support::AtPageEnd<wchar_t> third{20};
    support::AtPageEnd<char> block{5};
    support::AtPageEnd<unsigned> ids{2};
    support::AtPageEnd<char> largeBlock{LargeUpload};

    quorvex::netdisk::CNetDisk disk;
    quorvex::CFileStorage storage;
    quorvex::CFileStorage2 storage2;
    quorvex::CFileStorage3 storage3;
    quorvex::COnlineUserSearch search;
};

} // namespace hostile
