#pragma once

#include "support/ServiceFixture.h"

#include <map>
#include <string>
#include <vector>

namespace quorvex::services::test
{

// The network disk's requests as clients write them.
std::string Body(const std::map<std::string, std::string>& texts);

// {"fkeys":["k1","k2"],"alivesecond":60} and the like.
std::string ArrayBody(const std::string& key, const std::vector<std::string>& values, const std::string& rest = "");

std::string AddFolder(ServiceClient& client, const std::string& name, const std::string& parent = "0");
Reply MoveFolder(ServiceClient& client, const std::string& id, const std::string& parent);
Reply RecycleFolder(ServiceClient& client, const std::string& id);
Reply EraseFolder(ServiceClient& client, const std::string& id);
Reply ListFolder(ServiceClient& client, const std::string& id = "0");

// A whole file in this folder; returns its key.
std::string PutFile(ServiceClient& client, const std::string& name, const std::string& content,
                    const std::string& folder = "0");
Reply RecycleFile(ServiceClient& client, const std::string& key);
Reply EraseFile(ServiceClient& client, const std::string& key);

// What a folder holds: "a/" for a folder, "f" for a file, in the listing's order, folders first.
std::vector<std::string> NamesIn(ServiceClient& client, const std::string& id = "0");

Json::Value ListBin(ServiceClient& client);
Reply Recover(ServiceClient& client, const std::string& item);
Reply EraseItem(ServiceClient& client, const std::string& item);

// The bin's item with this name, empty when there is none.
std::string ItemNamed(ServiceClient& client, const std::string& name);

Reply Share(ServiceClient& client, const std::vector<std::string>& keys, std::int64_t seconds = 60);
Reply ShareInfo(ServiceClient& client, const std::string& code);
Reply Save(ServiceClient& client, const std::string& code, const std::string& folder = "0");
Reply Fetch(ServiceClient& client, const std::string& code, const std::string& key, const std::string& range = {});
std::vector<std::string> CodesListed(ServiceClient& client, const std::string& type);

} // namespace quorvex::services::test
