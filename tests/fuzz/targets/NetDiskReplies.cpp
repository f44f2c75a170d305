#include "Input.h"
#include "Replies.h"

#include "Netdisk/NetDiskJsonHelper.h"

#include <vector>

using namespace quorvex;
using namespace quorvex::fuzz;
using namespace quorvex::netdisk;

namespace
{

constexpr auto kUtf8 = Platform::CodePage::Utf8;

Json::Value Parsed(const std::string& body)
{
    Json::Value root;
    ParseJson(body, root);
    return root;
}

/// A listing's array; empty when there is none.
const Json::Value& Array(const Json::Value& root, const char* key)
{
    static const Json::Value none(Json::arrayValue);
    const Json::Value& array = root[key];
    return array.isArray() ? array : none;
}

void ExpectFile(const _FileInfo& file, const Json::Value& sent, const char* keyName)
{
    bool ranOn = false;
    ExpectField(file.fkey, sent[keyName], kUtf8, ranOn);
    ExpectField(file.name, sent["name"], kUtf8, ranOn);
    ExpectLastText(file, file.md5);
    ExpectField(file.md5, sent["md5"], kUtf8, ranOn);
    Expect(file.size == sent["size"].asUInt() && file.cflag == sent["cflag"].asInt(), "a file's numbers");
}

void ExpectFiles(const std::vector<_FileInfo>& files, const Json::Value& sent, const char* keyName)
{
    Expect(files.size() == sent.size(), "a record for each element");
    for (Json::ArrayIndex i = 0; i < sent.size(); ++i)
    {
        ExpectFile(files[i], sent[i], keyName);
    }
}

void Login(const std::string& body)
{
    CNetDiskJsonHelper helper;
    int uid = kUntouched;
    const char* sid = kUntouchedText;
    const char* login = kUntouchedText;
    if (Succeeds(body, [&] { return helper.LoginReply(body, uid, sid, login); }))
    {
        Expect(uid == Parsed(body)["uap_uid"].asInt(), "the uid");
        Expect(IsText(sid, body) && IsText(login, body), "a login's texts");
        return;
    }
    Expect(uid == kUntouched && IsUntouched(sid) && IsUntouched(login), "a failure leaves everything as it was");
}

void SessionCheck(const std::string& body)
{
    CNetDiskJsonHelper helper;
    int uid = kUntouched;
    const bool isRead = Succeeds(body, [&] { return helper.SessionCheckReply(body, uid); });
    Expect(isRead || uid == kUntouched, "a failure leaves everything as it was");
}

void Upload(const std::string& body, std::uint8_t keySize)
{
    CNetDiskJsonHelper helper;
    const ExactRoom key(std::size_t{2} * keySize);
    int fsize = kUntouched;
    int cflag = kUntouched;
    const bool isRead = Succeeds(body, [&] { return helper.UploadReply(body, key.text.get(), keySize, fsize, cflag); });
    key.ExpectText();
    if (isRead)
    {
        const std::wstring sent = WideOf(Parsed(body)["fkey"], kUtf8);
        Expect(sent.size() >= key.room || sent == key.text.get(), "a key that fits is handed out whole");
        return;
    }
    Expect(fsize == kUntouched && cflag == kUntouched, "a failure leaves everything as it was");
    Expect(key.room == 0 || key.text[0] == L'#', "a failure leaves the key's buffer as it was");
}

void Block(const std::string& body)
{
    CNetDiskJsonHelper helper;
    const char* key = kUntouchedText;
    int fsize = kUntouched;
    const bool isRead = Succeeds(body, [&] { return helper.BlockReply(body, key, fsize); });
    Expect(isRead ? IsText(key, body) : IsUntouched(key) && fsize == kUntouched, "a block's key");
}

void FolderCreated(const std::string& body)
{
    CNetDiskJsonHelper helper;
    const char* id = kUntouchedText;
    const bool isRead = Succeeds(body, [&] { return helper.FolderCreatedReply(body, id); });
    Expect(isRead ? IsText(id, body) : IsUntouched(id), "a folder's id");
}

void PcodeCreated(const std::string& body)
{
    CNetDiskJsonHelper helper;
    const char* code = kUntouchedText;
    const bool isRead = Succeeds(body, [&] { return helper.PcodeCreatedReply(body, code); });
    Expect(isRead ? IsText(code, body) : IsUntouched(code), "a share code");
}

void FolderListing(const std::string& body)
{
    CNetDiskJsonHelper helper;
    std::vector<_FileInfo> files;
    std::vector<_FolderInfo> folders;
    const bool isRead = Succeeds(body, [&] { return helper.FolderListing(body, files, folders); });
    for (const _FileInfo& file : files)
    {
        ExpectLastText(file, file.md5);
    }
    for (const _FolderInfo& folder : folders)
    {
        ExpectLastText(folder, folder.name);
    }
    if (!isRead)
    {
        return;
    }
    const Json::Value root = Parsed(body);
    ExpectFiles(files, Array(root, "files"), "fkey");
    const Json::Value& sent = Array(root, "folders");
    Expect(folders.size() == sent.size(), "a record for each folder");
    for (Json::ArrayIndex i = 0; i < sent.size(); ++i)
    {
        bool ranOn = false;
        ExpectField(folders[i].fo_id, sent[i]["fo_id"], kUtf8, ranOn);
        ExpectField(folders[i].name, sent[i]["name"], kUtf8, ranOn);
    }
}

void PcodeListing(const std::string& body)
{
    CNetDiskJsonHelper helper;
    std::vector<_PcodeInfo> pcodes;
    if (!Succeeds(body, [&] { return helper.PcodeListing(body, pcodes); }))
    {
        return;
    }
    const Json::Value root = Parsed(body);
    const Json::Value& sent = Array(root, "pcodes");
    Expect(pcodes.size() == sent.size(), "a record for each code");
    for (Json::ArrayIndex i = 0; i < sent.size(); ++i)
    {
        bool ranOn = false;
        ExpectField(pcodes[i].pcode, sent[i]["pcode"], kUtf8, ranOn);
        Expect(pcodes[i].createtime == ReadInt64(sent[i]["createtime"]) &&
                   pcodes[i].deadline == ReadInt64(sent[i]["deadline"]) &&
                   pcodes[i].downcount == sent[i]["downcount"].asUInt(),
               "a code's numbers");
    }
}

void PcodeContents(const std::string& body)
{
    CNetDiskJsonHelper helper;
    std::vector<_FileInfo> files;
    if (Succeeds(body, [&] { return helper.PcodeContents(body, files); }))
    {
        ExpectFiles(files, Array(Parsed(body), "files"), "fid");
    }
}

void Capacity(const std::string& body)
{
    CNetDiskJsonHelper helper;
    std::int64_t total = kUntouched;
    std::int64_t used = kUntouched;
    std::uint32_t maximum = 77;
    if (!Succeeds(body, [&] { return helper.Capacity(body, total, used, maximum); }))
    {
        Expect(total == kUntouched && used == kUntouched && maximum == 77, "a failure leaves everything as it was");
        return;
    }
    const Json::Value root = Parsed(body);
    const Json::Value& sent = root["total_space"];
    // A double holds these exactly.
    static constexpr std::int64_t kExact = std::int64_t{1} << 53;
    if (sent.isInt64() && sent.asInt64() >= -kExact && sent.asInt64() <= kExact)
    {
        Expect(total == sent.asInt64(), "the space");
    }
    Expect(maximum == root["max_file_size"].asUInt(), "the largest file");
}

void RecyclebinListing(const std::string& body)
{
    CNetDiskJsonHelper helper;
    std::vector<_RItemInfo> items;
    const bool isRead = Succeeds(body, [&] { return helper.RecyclebinListing(body, items); });
    for (const _RItemInfo& item : items)
    {
        ExpectLastText(item, item.fo_before);
    }
    if (!isRead)
    {
        return;
    }
    const Json::Value root = Parsed(body);
    std::size_t next = 0;
    for (const Json::Value& sent : Array(root, "data"))
    {
        if (!sent.isObject() || sent["rs_id"].isNull())
        {
            continue;
        }
        Expect(next < items.size(), "an item for each element with an id");
        const _RItemInfo& item = items[next++];
        bool ranOn = false;
        ExpectField(item.rs_id, sent["rs_id"], kUtf8, ranOn);
        ExpectField(item.name, sent["name"], kUtf8, ranOn);
        ExpectField(item.fo_before, sent["fo_before"], kUtf8, ranOn);
        Expect(item.type == sent["type"].asInt() && item.rtime == ReadInt64(sent["rtime"]), "an item's numbers");
    }
    Expect(next == items.size(), "no item without an element");
}

void ErrorReply(const std::string& body)
{
    const std::size_t linesBefore = ErrorLines();
    CNetDiskJsonHelper().ErrorReply(500, body);
    Expect(ErrorLines() == linesBefore + 1, "an error reply is one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const std::uint8_t parser = input.Byte();
    const std::uint8_t keySize = parser == 'U' ? input.Byte() : std::uint8_t{0};
    const std::string body(input.Rest());
    switch (parser)
    {
    case 'L':
        Login(body);
        break;
    case 'S':
        SessionCheck(body);
        break;
    case 'U':
        Upload(body, keySize);
        break;
    case 'B':
        Block(body);
        break;
    case 'N':
        FolderCreated(body);
        break;
    case 'F':
        FolderListing(body);
        break;
    case 'C':
        PcodeCreated(body);
        break;
    case 'P':
        PcodeListing(body);
        break;
    case 'I':
        PcodeContents(body);
        break;
    case 'Q':
        Capacity(body);
        break;
    case 'R':
        RecyclebinListing(body);
        break;
    case 'E':
        ErrorReply(body);
        break;
    default:
        return 0;
    }
    return 0;
}
