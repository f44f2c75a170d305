#pragma once

#include "common/Clock.h"
#include "common/Database.h"
#include "netdisk/Folders.h"
#include "netdisk/NetDiskStore.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace quorvex::services::netdisk
{

struct ShareRow
{
    std::string code;
    std::int64_t createtime = 0;
    std::int64_t deadline = 0; // alive before it
    std::uint64_t downcount = 0;
};

// Share codes: whoever knows one reaches its files until the deadline. A code names its owner's files and does not hold
// them: what is in the recycle bin cannot be reached by it, and comes back when it is restored. Operations end the
// request with HttpError when the code is not known, has expired or, where the owner is asked for, is another's.
class Shares
{
public:
    static constexpr std::size_t MaxCount = 200; // keys or codes in one request

    enum class Filter
    {
        All = 0,
        Alive = 1,
        Expired = 2,
    };

    Shares(Database& database, Folders& folders, NetDiskStore& files, Clock clock);

    // For the owner. An expired code can be listed and deleted, not extended.
    std::string Create(std::int64_t owner, const std::set<std::string>& keys, std::int64_t aliveSeconds);
    void Delete(std::int64_t owner, const std::set<std::string>& codes);
    std::vector<ShareRow> List(std::int64_t owner, Filter filter);
    void Defer(std::int64_t owner, const std::string& code, std::int64_t seconds);

    // For whoever holds the code.
    std::vector<FileRow> Files(const std::string& code);
    Download Open(const std::string& code, const std::string& key);
    void CountDownload(const std::string& code, const std::string& key);

    // Ends the code now.
    void Expire(const std::string& code);

    // Copies all files of the code that are within reach into a folder of the account, or none; returns the copies'
    // keys. Ends the request when no file is within reach.
    std::vector<std::string> Save(std::int64_t account, const std::string& code, const std::string& folder);

private:
    std::vector<FileRow> FilesOf(Transaction& transaction, const std::string& code);

    Database& database_;
    Folders& folders_;
    NetDiskStore& files_;
    Clock clock_;
};

} // namespace quorvex::services::netdisk
