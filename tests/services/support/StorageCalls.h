#pragma once

#include "support/ServiceFixture.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::services::test
{

// The file storage's requests, byte for byte as clients write them.
int ResultOf(const Reply& reply);

// Logs in at the file storage, so that the cookie is one of its own.
Reply StorageLogin(ServiceClient& client, const std::string& account, const std::string& password);

Reply PutPicture(ServiceClient& client, const std::string& name, std::string_view content);
Reply GetPicture(ServiceClient& client, const std::string& key);

Reply PutEmoticon(ServiceClient& client, const std::string& name, std::string_view content);
Reply GetEmoticon(ServiceClient& client, const std::string& uid, const std::string& key);
Reply RemoveEmoticon(ServiceClient& client, const std::string& key);
Reply ListEmoticons(ServiceClient& client);

std::string DepotForm(const std::string& name, const std::string& md5, std::int64_t size);
Reply CreateInDepot(ServiceClient& client, const std::string& name, std::string_view content);
Reply CreateInDepot(ServiceClient& client, const std::string& form);

std::string ChunkForm(const std::string& key, std::uint64_t first, std::uint64_t last, std::string_view content);
Reply PutChunk(ServiceClient& client, const std::string& form);
Reply PutChunk(ServiceClient& client, const std::string& key, std::uint32_t position, std::string_view content);
Reply FinishInDepot(ServiceClient& client, const std::string& key);

// The whole way into the depot; returns the key.
std::string PutInDepot(ServiceClient& client, const std::string& name, std::string_view content);

Reply GetFromDepot(ServiceClient& client, const std::string& uid, const std::string& key,
                   const std::string& range = {});
Reply RenewInDepot(ServiceClient& client, const std::string& key);
Reply RemoveFromDepot(ServiceClient& client, const std::string& key);
Reply ListDepot(ServiceClient& client);
Reply DepotSpace(ServiceClient& client);
std::uint64_t UsedInDepot(ServiceClient& client);

} // namespace quorvex::services::test
