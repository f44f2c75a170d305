#pragma once

#include <cstdint>
#include <string>

namespace quorvex::console
{

/// What the command line says. Texts are UTF-8; an empty one was not given.
struct Options
{
    std::string server = "http://127.0.0.1:8080/object";
    std::string session;
    std::string user;
    std::string password;
    std::string ticket;
    std::string logLevel = "off";
    std::string logFile;
    bool json = false;
    bool quiet = false;

    std::string file;
    std::string key;
    std::string name;
    std::string folder;
    std::string out;
    bool forever = false;
    std::uint64_t blockSize = 4u << 20;
    std::uint64_t largeFrom = 8u << 20;
};

} // namespace quorvex::console
