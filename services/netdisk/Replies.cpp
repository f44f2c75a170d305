#include "netdisk/Replies.h"

#include "common/Text.h"

namespace quorvex::services::netdisk
{

std::string ListedName(std::string_view name)
{
    constexpr std::size_t units = 64;
    return std::string(CutToUtf16Units(name, units));
}

std::string ListedPath(std::string_view path)
{
    constexpr std::size_t units = 4096;
    return std::string(CutToUtf16Units(path, units));
}

Json::Value TextReply(const char* key, const std::string& value)
{
    Json::Value reply(Json::objectValue);
    reply[key] = value;
    return reply;
}

Json::Value ListedFile(const char* keyName, const FileRow& file)
{
    Json::Value entry = TextReply(keyName, file.key);
    entry["name"] = ListedName(file.name);
    entry["size"] = Json::UInt64{file.size};
    entry["md5"] = file.md5;
    entry["cflag"] = file.IsComplete() ? 1 : 0;
    return entry;
}

} // namespace quorvex::services::netdisk
