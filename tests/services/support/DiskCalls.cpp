#include "support/DiskCalls.h"

namespace quorvex::services::test
{

std::string Body(const std::map<std::string, std::string>& texts)
{
    std::string body;
    for (const auto& [key, value] : texts)
    {
        body.append(body.empty() ? "{\"" : ",\"").append(key).append("\":\"").append(value).append("\"");
    }
    return body + "}";
}

std::string ArrayBody(const std::string& key, const std::vector<std::string>& values, const std::string& rest)
{
    std::string body = "{\"" + key + "\":[";
    for (const std::string& value : values)
    {
        body.append(body.back() == '[' ? "\"" : ",\"").append(value).append("\"");
    }
    return body + "]" + rest + "}";
}

std::string AddFolder(ServiceClient& client, const std::string& name, const std::string& parent)
{
    const Reply reply = client.PostJson("/object/folder/add", Body({{"name", name}, {"parent_fo_id", parent}}));
    EXPECT_EQ(reply.status, 200) << reply.body;
    return reply.Text("fo_id");
}

Reply MoveFolder(ServiceClient& client, const std::string& id, const std::string& parent)
{
    return client.PostJson("/object/folder/modi", Body({{"fo_id", id}, {"name", ""}, {"parent_fo_id", parent}}));
}

Reply RecycleFolder(ServiceClient& client, const std::string& id)
{
    return client.PostJson("/object/folder/del", Body({{"fo_id", id}}));
}

Reply EraseFolder(ServiceClient& client, const std::string& id)
{
    return client.PostJson("/object/folder/del4ever", Body({{"fo_id", id}}));
}

Reply ListFolder(ServiceClient& client, const std::string& id)
{
    return client.Get("/object/folder/list?fo_id=" + id);
}

std::string PutFile(ServiceClient& client, const std::string& name, const std::string& content,
                    const std::string& folder)
{
    const std::string key = client.UploadWhole(name, content).Text("fkey");
    EXPECT_EQ(client.PostJson("/object/file/modi", Body({{"fkey", key}, {"fo_id", folder}, {"name", ""}})).status, 200);
    return key;
}

Reply RecycleFile(ServiceClient& client, const std::string& key)
{
    return client.PostJson("/object/file/del", KeyBody(key));
}

Reply EraseFile(ServiceClient& client, const std::string& key)
{
    return client.PostJson("/object/file/del4ever", KeyBody(key));
}

std::vector<std::string> NamesIn(ServiceClient& client, const std::string& id)
{
    const Json::Value listing = ListFolder(client, id).Json();
    std::vector<std::string> names;
    for (const Json::Value& folder : listing["folders"])
    {
        names.push_back(folder["name"].asString() + "/");
    }
    for (const Json::Value& file : listing["files"])
    {
        names.push_back(file["name"].asString());
    }
    return names;
}

Json::Value ListBin(ServiceClient& client)
{
    return client.Get("/object/recyclebin/list").Json()["data"];
}

Reply Recover(ServiceClient& client, const std::string& item)
{
    return client.PostJson("/object/recyclebin/recover", Body({{"rs_id", item}}));
}

Reply EraseItem(ServiceClient& client, const std::string& item)
{
    return client.PostJson("/object/recyclebin/del", Body({{"rs_id", item}}));
}

std::string ItemNamed(ServiceClient& client, const std::string& name)
{
    for (const Json::Value& item : ListBin(client))
    {
        if (item["name"].asString() == name)
        {
            return item["rs_id"].asString();
        }
    }
    return {};
}

Reply Share(ServiceClient& client, const std::vector<std::string>& keys, std::int64_t seconds)
{
    return client.PostJson("/object/pcode/create",
                           ArrayBody("fkeys", keys, ",\"alivesecond\":" + std::to_string(seconds)));
}

Reply ShareInfo(ServiceClient& client, const std::string& code)
{
    return client.Get("/object/pcode/info?pcode=" + code);
}

Reply Save(ServiceClient& client, const std::string& code, const std::string& folder)
{
    return client.PostJson("/object/pcode/save", Body({{"pcode", code}, {"fo_id", folder}}));
}

Reply Fetch(ServiceClient& client, const std::string& code, const std::string& key, const std::string& range)
{
    return client.Get("/object/pcode/down?pcode=" + code + "&fid=" + key,
                      range.empty() ? httplib::Headers{} : httplib::Headers{{"Range", range}});
}

std::vector<std::string> CodesListed(ServiceClient& client, const std::string& type)
{
    std::vector<std::string> codes;
    const Json::Value listing = client.Get("/object/pcode/list?type=" + type).Json();
    for (const Json::Value& share : listing["pcodes"])
    {
        codes.push_back(share["pcode"].asString());
    }
    return codes;
}

} // namespace quorvex::services::test
