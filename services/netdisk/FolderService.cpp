#include "netdisk/FolderService.h"

#include "common/JsonBody.h"
#include "netdisk/Replies.h"

namespace quorvex::services::netdisk
{

namespace
{

Json::Value FolderReply(const std::string& id)
{
    return TextReply("fo_id", id);
}

Json::Value ItemReply(const std::string& id)
{
    return TextReply("rs_id", id);
}

Json::Value ListedItem(const RecycledItem& item)
{
    Json::Value entry = ItemReply(item.id);
    entry["rtime"] = Json::Int64{item.time};
    entry["type"] = static_cast<int>(item.type);
    entry["name"] = ListedName(item.name);
    entry["fo_before"] = ListedPath(item.folderBefore);
    return entry;
}

} // namespace

FolderService::FolderService(Folders& folders, NetDiskStore& store, RecycleBin& bin)
    : folders_(folders), store_(store), bin_(bin)
{
}

void FolderService::AddRoutes(AccountRoutes& routes)
{
    using Body = const Json::Value&;
    using Request = const httplib::Request&;
    routes.Post("/object/folder/add", [this](std::int64_t account, Body body) { return Add(account, body); });
    routes.Post("/object/folder/modi", [this](std::int64_t account, Body body) { return Modify(account, body); });
    routes.Post("/object/folder/del", [this](std::int64_t account, Body body) { return Recycle(account, body); });
    routes.Post("/object/folder/del4ever", [this](std::int64_t account, Body body) { return Erase(account, body); });
    routes.Get("/object/folder/list", [this](std::int64_t account, Request in) { return List(account, in); });
    routes.Get("/object/recyclebin/list", [this](std::int64_t account, Request) { return ListBin(account); });
    routes.Post("/object/recyclebin/recover",
                [this](std::int64_t account, Body body) { return Recover(account, body); });
    routes.Post("/object/recyclebin/del", [this](std::int64_t account, Body body) { return EraseItem(account, body); });
}

Json::Value FolderService::Add(std::int64_t account, const Json::Value& body)
{
    return FolderReply(folders_.Add(account, RequiredText(body, "name"), OptionalText(body, "parent_fo_id")));
}

Json::Value FolderService::Modify(std::int64_t account, const Json::Value& body)
{
    const std::string id = RequiredText(body, "fo_id");
    folders_.Modify(account, id, OptionalText(body, "name"), OptionalText(body, "parent_fo_id"));
    return FolderReply(id);
}

Json::Value FolderService::Recycle(std::int64_t account, const Json::Value& body)
{
    const std::string id = RequiredText(body, "fo_id");
    bin_.RecycleFolder(account, id);
    return FolderReply(id);
}

Json::Value FolderService::Erase(std::int64_t account, const Json::Value& body)
{
    const std::string id = RequiredText(body, "fo_id");
    bin_.EraseFolder(account, id);
    return FolderReply(id);
}

Json::Value FolderService::List(std::int64_t account, const httplib::Request& request)
{
    const FolderContent content = store_.List(account, request.get_param_value("fo_id"));
    Json::Value reply(Json::objectValue);
    Json::Value& files = reply["files"] = Json::arrayValue;
    for (const FileRow& file : content.files)
    {
        Json::Value& entry = files.append(ListedFile("fkey", file));
        entry["downcount"] = Json::UInt64{file.downcount};
        entry["ctime"] = Json::Int64{file.ctime};
    }
    Json::Value& folders = reply["folders"] = Json::arrayValue;
    for (const FolderRow& folder : content.folders)
    {
        folders.append(FolderReply(folder.id))["name"] = ListedName(folder.name);
    }
    return reply;
}

Json::Value FolderService::ListBin(std::int64_t account)
{
    Json::Value reply(Json::objectValue);
    Json::Value& data = reply["data"] = Json::arrayValue;
    for (const RecycledItem& item : bin_.List(account))
    {
        data.append(ListedItem(item));
    }
    return reply;
}

Json::Value FolderService::Recover(std::int64_t account, const Json::Value& body)
{
    const std::string id = RequiredText(body, "rs_id");
    bin_.Recover(account, id);
    return ItemReply(id);
}

Json::Value FolderService::EraseItem(std::int64_t account, const Json::Value& body)
{
    const std::string id = RequiredText(body, "rs_id");
    bin_.Erase(account, id);
    return ItemReply(id);
}

} // namespace quorvex::services::netdisk
