#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::console
{

/// What an upload is of and where it goes; an interrupted one goes on only when all of this is the same.
struct UploadIdentity
{
    std::string server;
    std::string name;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::string md5;

    bool operator==(const UploadIdentity&) const = default;
};

/// What the server knows an upload in blocks by.
struct UploadIds
{
    std::string key;
    std::string ticket; ///< to be sent with the next block; empty where blocks need none

    bool operator==(const UploadIds&) const = default;
};

/// How far an upload has come. Blocks are sent in order, so one number tells which ones the server has confirmed.
struct ResumeRecord
{
    UploadIdentity identity;
    UploadIds ids;
    std::uint64_t confirmed = 0;

    bool operator==(const ResumeRecord&) const = default;
};

std::string ToText(const ResumeRecord& record);

/// @return nothing when the text is not a whole and sound record
std::optional<ResumeRecord> ParseResumeRecord(std::string_view text);

/// The place where an upload's record is kept between runs.
class ResumeFile
{
public:
    explicit ResumeFile(std::filesystem::path path) : m_path(std::move(path)) {}

    /// @return the record, when there is one and it is of this upload
    std::optional<ResumeRecord> Load(const UploadIdentity& identity) const;

    /// Replaces the record in one step, so that an interruption leaves the old one or the new one.
    /// @return whether it could be written
    bool Save(const ResumeRecord& record) const;

    void Remove() const;

private:
    std::filesystem::path m_path;
};

} // namespace quorvex::console
