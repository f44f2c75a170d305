#include "ResumeRecord.h"

#include "Output.h"
#include "Paths.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>

#include <json/reader.h>

namespace quorvex::console
{
namespace
{

constexpr int kVersion = 1;

std::optional<Json::Value> ParseObject(std::string_view text)
{
    const Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    try
    {
        if (reader->parse(text.data(), text.data() + text.size(), &value, nullptr) && value.isObject())
            return value;
    }
    catch (const Json::Exception&)
    {
        // Too deep a nesting is thrown, other damage is returned; both say that this is no record.
    }
    return std::nullopt;
}

bool HasAllMembers(const Json::Value& value)
{
    for (const char* const name : {"server", "name", "md5", "key"})
        if (!value[name].isString())
            return false;
    const Json::Value& ticket = value["ticket"];
    return (ticket.isNull() || ticket.isString()) && value["version"] == kVersion && value["size"].isUInt64() &&
           value["modified"].isInt64() && value["confirmed"].isUInt64();
}

} // namespace

std::string ToText(const ResumeRecord& record)
{
    Json::Value value;
    value["version"] = kVersion;
    value["server"] = record.identity.server;
    value["name"] = record.identity.name;
    value["size"] = Json::UInt64{record.identity.size};
    value["modified"] = Json::Int64{record.identity.modified};
    value["md5"] = record.identity.md5;
    value["key"] = record.ids.key;
    if (!record.ids.ticket.empty())
        value["ticket"] = record.ids.ticket;
    value["confirmed"] = Json::UInt64{record.confirmed};
    return JsonLine(value);
}

std::optional<ResumeRecord> ParseResumeRecord(std::string_view text)
{
    const auto value = ParseObject(text);
    if (!value || !HasAllMembers(*value))
        return std::nullopt;
    ResumeRecord record;
    record.identity.server = (*value)["server"].asString();
    record.identity.name = (*value)["name"].asString();
    record.identity.size = (*value)["size"].asUInt64();
    record.identity.modified = (*value)["modified"].asInt64();
    record.identity.md5 = (*value)["md5"].asString();
    record.ids = {(*value)["key"].asString(), (*value)["ticket"].asString()};
    record.confirmed = (*value)["confirmed"].asUInt64();
    if (record.ids.key.empty() || record.confirmed > record.identity.size)
        return std::nullopt;
    return record;
}

std::optional<ResumeRecord> ResumeFile::Load(const UploadIdentity& identity) const
{
    std::ifstream file(m_path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    auto record = ParseResumeRecord(text);
    if (record && record->identity != identity)
        return std::nullopt;
    return record;
}

bool ResumeFile::Save(const ResumeRecord& record) const
{
    const std::filesystem::path fresh = WithEnding(m_path, L"-new");
    std::ofstream file(fresh, std::ios::binary);
    file << ToText(record);
    file.close();
    std::error_code error;
    if (file)
        std::filesystem::rename(fresh, m_path, error);
    return file && !error;
}

void ResumeFile::Remove() const
{
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

} // namespace quorvex::console
