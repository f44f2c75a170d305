#include "support/StorageCalls.h"

namespace quorvex::services::test
{

namespace
{

Reply PostMultipart(ServiceClient& client, const std::string& path, const std::string& form)
{
    return client.PostJson(path, form, BlockFormType);
}

std::string TextPart(const std::string& name, const std::string& value)
{
    return "--" + std::string(Boundary) + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value +
           "\r\n";
}

} // namespace

int ResultOf(const Reply& reply)
{
    return reply.Json()["result"].asInt();
}

Reply StorageLogin(ServiceClient& client, const std::string& account, const std::string& password)
{
    return client.Get("/storage/login_rest.php?u=" + account + "&p=" + password);
}

Reply PutPicture(ServiceClient& client, const std::string& name, std::string_view content)
{
    return PostMultipart(client, "/storage/ops/upload_rest.php", WholeForm(name, content));
}

Reply GetPicture(ServiceClient& client, const std::string& key)
{
    return client.Get("/storage/ops/down.php?k=" + key);
}

Reply PutEmoticon(ServiceClient& client, const std::string& name, std::string_view content)
{
    return PostMultipart(client, "/storage/ods/upload_rest.php", WholeForm(name, content));
}

Reply GetEmoticon(ServiceClient& client, const std::string& uid, const std::string& key)
{
    return client.Get("/storage/ods/down.php?uid=" + uid + "&k=" + key);
}

Reply RemoveEmoticon(ServiceClient& client, const std::string& key)
{
    return client.Get("/storage/ods/remove_rest.php?k=" + key);
}

Reply ListEmoticons(ServiceClient& client)
{
    return client.Get("/storage/ods/files_rest.php");
}

std::string DepotForm(const std::string& name, const std::string& md5, std::int64_t size)
{
    return "n=" + name + "&s=application/octet-stream&m=" + md5 + "&sh=" + std::string(40, '0') +
           "&sz=" + std::to_string(size);
}

Reply CreateInDepot(ServiceClient& client, const std::string& name, std::string_view content)
{
    return CreateInDepot(client, DepotForm(name, Md5Of(content), static_cast<std::int64_t>(content.size())));
}

Reply CreateInDepot(ServiceClient& client, const std::string& form)
{
    return client.PostJson("/storage/ofs/upload_c_rest.php", form);
}

std::string ChunkForm(const std::string& key, std::uint64_t first, std::uint64_t last, std::string_view content)
{
    const std::string delimiter = "--" + std::string(Boundary);
    return TextPart("k", key) + TextPart("rs", std::to_string(first)) + TextPart("re", std::to_string(last)) +
           delimiter +
           "\r\nContent-Disposition: form-data; name=\"chunk\"; filename=\"0\"\r\n"
           "Content-Type: application/octet-stream\r\n\r\n" +
           std::string(content) + "\r\n" + delimiter + "--\r\n";
}

Reply PutChunk(ServiceClient& client, const std::string& form)
{
    return PostMultipart(client, "/storage/ofs/upload_u_rest.php", form);
}

Reply PutChunk(ServiceClient& client, const std::string& key, std::uint32_t position, std::string_view content)
{
    // As clients reckon, in 32 bits: an empty chunk at the start ends at the last position there is.
    const auto last = static_cast<std::uint32_t>(position + content.size() - 1U);
    return PutChunk(client, ChunkForm(key, position, last, content));
}

Reply FinishInDepot(ServiceClient& client, const std::string& key)
{
    return client.PostJson("/storage/ofs/upload_e_rest.php", "k=" + key);
}

std::string PutInDepot(ServiceClient& client, const std::string& name, std::string_view content)
{
    const std::string key = CreateInDepot(client, name, content).Text("fkey");
    EXPECT_EQ(ResultOf(PutChunk(client, key, 0, content)), 200);
    EXPECT_EQ(ResultOf(FinishInDepot(client, key)), 200);
    return key;
}

Reply GetFromDepot(ServiceClient& client, const std::string& uid, const std::string& key, const std::string& range)
{
    return client.Get("/storage/ofs/down.php?uid=" + uid + "&k=" + key,
                      range.empty() ? httplib::Headers{} : httplib::Headers{{"Range", range}});
}

Reply RenewInDepot(ServiceClient& client, const std::string& key)
{
    return client.Get("/storage/ofs/time_rest.php?k=" + key);
}

Reply RemoveFromDepot(ServiceClient& client, const std::string& key)
{
    return client.Get("/storage/ofs/remove_rest.php?k=" + key);
}

Reply ListDepot(ServiceClient& client)
{
    return client.Get("/storage/ofs/files_rest.php");
}

Reply DepotSpace(ServiceClient& client)
{
    return client.Get("/storage/ofs/info.php");
}

std::uint64_t UsedInDepot(ServiceClient& client)
{
    return DepotSpace(client).Json()["totalsize"].asUInt64();
}

} // namespace quorvex::services::test
