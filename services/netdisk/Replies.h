#pragma once

#include "netdisk/NetDiskStore.h"

#include <string>
#include <string_view>

#include <json/value.h>

namespace quorvex::services::netdisk
{

// What several operations answer with. Clients read listings into records of fixed size: names are cut to 64 UTF-16
// units there, and paths to 4096.
std::string ListedName(std::string_view name);
std::string ListedPath(std::string_view path);

// An object with one text.
Json::Value TextReply(const char* key, const std::string& value);

// A file as listings show it; its key is called "fkey" on the own disk and "fid" behind a share code.
Json::Value ListedFile(const char* keyName, const FileRow& file);

} // namespace quorvex::services::netdisk
