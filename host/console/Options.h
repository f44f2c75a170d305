#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::console
{

/// Id of the disk's top.
inline constexpr const char* kTopFolder = "0";

/// What the command line says. Texts are UTF-8; an empty one was not given.
struct Options
{
    std::string server;
    std::string session;
    std::string user;
    std::string password;
    std::string ticket;
    std::string logLevel = "off";
    std::string logFile;
    bool json = false;
    bool quiet = false;

    std::string file;
    std::vector<std::string> files;
    std::string key; ///< of a file; with isFolder, the id of a folder
    std::vector<std::string> keys;
    std::vector<std::string> names; ///< that pictures and the like have on the server
    std::string name;               ///< that a file or folder shall have on the server
    std::string uid;                ///< of a file's owner
    std::string folder;             ///< where a file or folder shall go
    std::string inFolder = kTopFolder;
    std::string out;
    bool isFolder = false;
    bool forever = false;
    bool inUtf8 = false;            ///< asks for the listing's UTF-8 records
    std::vector<std::string> items; ///< ids in the recycle bin
    std::vector<std::string> pcodes;
    std::string pcode;
    std::string fileId; ///< within a share code
    bool listOnly = false;
    std::uint32_t span = 7 * 86400; ///< seconds
    std::string shareType = "all";
    std::uint64_t blockSize = 4u << 20;
    std::uint64_t largeFrom = 8u << 20;
    std::uint64_t offset = 0;
    std::uint64_t length = 4u << 20;

    int generation = 1;   ///< of the file storage
    std::string accounts; ///< address of the account system
    std::string app;
    int status = 0;
    std::vector<std::string> fields; ///< each NAME=VALUE
    std::string form;                ///< of the caller's own making

    std::string storage; ///< addresses of the other services that are looked at
    std::string search;
    std::string shell = "bash";
};

} // namespace quorvex::console
