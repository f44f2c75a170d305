#include "netdisk/Shares.h"

#include "common/Crypto.h"
#include "common/HttpAnswers.h"

#include <algorithm>
#include <utility>

namespace quorvex::services::netdisk
{

namespace
{

// The same for a code that never was and for one that is over: nobody learns which codes there were.
HttpError NoSuchCode()
{
    return {Status::NotFound, "no such share code, or it has expired"};
}

void RequireCount(std::size_t count)
{
    if (count == 0 || count > Shares::MaxCount)
    {
        throw HttpError(Status::BadRequest, "1 to 200 are taken at a time");
    }
}

void RequireDuration(std::int64_t seconds)
{
    if (seconds <= 0)
    {
        throw HttpError(Status::BadRequest, "the time must be one second or more");
    }
}

void AddFile(Transaction& transaction, const std::string& code, const std::string& key)
{
    auto insert = transaction.Prepare("INSERT INTO netdisk_shared_file (pcode, fkey) VALUES (?, ?)");
    insert.bind(1, code);
    insert.bind(2, key);
    insert.exec();
}

} // namespace

Shares::Shares(Database& database, Folders& folders, NetDiskStore& files, Clock clock)
    : database_(database), folders_(folders), files_(files), clock_(std::move(clock))
{
}

std::string Shares::Create(std::int64_t owner, const std::set<std::string>& keys, std::int64_t aliveSeconds)
{
    RequireCount(keys.size());
    RequireDuration(aliveSeconds);
    return database_.Transact([&](Transaction& transaction) {
        std::string code = RandomKey();
        const std::int64_t now = clock_();
        auto insert = transaction.Prepare(
            "INSERT INTO netdisk_share (pcode, account_id, createtime, deadline) VALUES (?, ?, ?, ?)");
        insert.bind(1, code);
        insert.bind(2, owner);
        insert.bind(3, now);
        insert.bind(4, now + aliveSeconds);
        insert.exec();
        for (const std::string& key : keys)
        {
            if (!files_.Require(transaction, owner, key).IsComplete())
            {
                throw HttpError(Status::Conflict, "a file that is not complete cannot be shared");
            }
            AddFile(transaction, code, key);
        }
        return code;
    });
}

void Shares::Delete(std::int64_t owner, const std::set<std::string>& codes)
{
    RequireCount(codes.size());
    database_.Transact([&](Transaction& transaction) {
        auto remove = transaction.Prepare("DELETE FROM netdisk_share WHERE pcode = ? AND account_id = ?");
        for (const std::string& code : codes)
        {
            remove.reset();
            remove.bind(1, code);
            remove.bind(2, owner);
            if (remove.exec() == 0)
            {
                throw NoSuchCode();
            }
        }
    });
}

std::vector<ShareRow> Shares::List(std::int64_t owner, Filter filter)
{
    return database_.Transact([&](Transaction& transaction) {
        auto query = transaction.Prepare(R"(
            SELECT pcode, createtime, deadline, downcount FROM netdisk_share
            WHERE account_id = ?1 AND (?2 = 0 OR (deadline > ?3) = (?2 = 1))
            ORDER BY createtime DESC, pcode)");
        query.bind(1, owner);
        query.bind(2, static_cast<int>(filter));
        query.bind(3, clock_());
        std::vector<ShareRow> rows;
        while (query.executeStep())
        {
            rows.push_back({query.getColumn(0).getString(), query.getColumn(1).getInt64(),
                            query.getColumn(2).getInt64(), static_cast<std::uint64_t>(query.getColumn(3).getInt64())});
        }
        return rows;
    });
}

void Shares::Defer(std::int64_t owner, const std::string& code, std::int64_t seconds)
{
    RequireDuration(seconds);
    database_.Transact([&](Transaction& transaction) {
        auto update = transaction.Prepare(R"(
            UPDATE netdisk_share SET deadline = deadline + ?
            WHERE pcode = ? AND account_id = ? AND deadline > ?)");
        update.bind(1, seconds);
        update.bind(2, code);
        update.bind(3, owner);
        update.bind(4, clock_());
        if (update.exec() == 0)
        {
            throw NoSuchCode();
        }
    });
}

void Shares::Expire(const std::string& code)
{
    database_.Transact([&](Transaction& transaction) {
        auto update = transaction.Prepare("UPDATE netdisk_share SET deadline = ?1 WHERE pcode = ?2 AND deadline > ?1");
        update.bind(1, clock_());
        update.bind(2, code);
        if (update.exec() == 0)
        {
            throw NoSuchCode();
        }
    });
}

std::vector<FileRow> Shares::Files(const std::string& code)
{
    return database_.Transact([&](Transaction& transaction) { return FilesOf(transaction, code); });
}

std::vector<FileRow> Shares::FilesOf(Transaction& transaction, const std::string& code)
{
    auto alive = transaction.Prepare("SELECT 1 FROM netdisk_share WHERE pcode = ? AND deadline > ?");
    alive.bind(1, code);
    alive.bind(2, clock_());
    if (!alive.executeStep())
    {
        throw NoSuchCode();
    }
    auto query = transaction.Prepare(R"(
        SELECT netdisk_file.* FROM netdisk_shared_file JOIN netdisk_file USING (fkey)
        WHERE pcode = ? AND rs_id IS NULL
        ORDER BY name, fkey)");
    query.bind(1, code);
    return NetDiskStore::ReadAll(query);
}

Download Shares::Open(const std::string& code, const std::string& key)
{
    return database_.Transact([&](Transaction& transaction) {
        auto files = FilesOf(transaction, code);
        const auto found =
            std::find_if(files.begin(), files.end(), [&](const FileRow& file) { return file.key == key; });
        if (found == files.end())
        {
            throw HttpError(Status::NotFound, "the share code has no such file");
        }
        return files_.Open(transaction, std::move(*found));
    });
}

void Shares::CountDownload(const std::string& code, const std::string& key)
{
    database_.Transact([&](Transaction& transaction) {
        auto update = transaction.Prepare("UPDATE netdisk_share SET downcount = downcount + 1 WHERE pcode = ?");
        update.bind(1, code);
        update.exec();
        files_.CountDownload(transaction, key);
    });
}

std::vector<std::string> Shares::Save(std::int64_t account, const std::string& code, const std::string& folder)
{
    return database_.Transact([&](Transaction& transaction) {
        const auto place = folders_.Locate(transaction, account, folder);
        const auto files = FilesOf(transaction, code);
        if (files.empty())
        {
            throw HttpError(Status::NotFound, "none of the share code's files is within reach");
        }
        std::vector<std::string> keys;
        keys.reserve(files.size());
        for (const FileRow& file : files)
        {
            keys.push_back(files_.Copy(transaction, account, file, place));
        }
        return keys;
    });
}

} // namespace quorvex::services::netdisk
