#include "Input.h"
#include "Replies.h"

#include "ShareFileStorage/SFSJsonHelper.h"
#include "ShareFileStorage/SFSReplies.h"

#include <vector>

using namespace quorvex;
using namespace quorvex::fuzz;

namespace
{

constexpr auto kAnsi = Platform::CodePage::Ansi;

/// What every parser gives.
struct Outcome
{
    int code = kUntouched;
    const char* errorinfo = kUntouchedText;
    const char* failure = nullptr;

    void Expected(bool isRead, const std::string& body) const
    {
        Expect(isRead == (failure == nullptr), "a failure, and nothing else, has words");
        Expect(!isRead || (!IsUntouched(errorinfo) && IsText(errorinfo, body)), "the server's text");
    }
};

void ParseResult(const std::string& body)
{
    CSFSJsonHelper helper;
    Outcome outcome;
    outcome.Expected(
        Succeeds(body, [&] { return helper.ParseResult(body, outcome.code, outcome.errorinfo, outcome.failure); }),
        body);
}

void ParseLogin(const std::string& body)
{
    CSFSJsonHelper helper;
    Outcome outcome;
    const char* uid = kUntouchedText;
    const char* sid = kUntouchedText;
    const bool isRead = Succeeds(body, [&] {
        return helper.ParseLoginResponse(body, outcome.code, uid, sid, outcome.errorinfo, outcome.failure);
    });
    outcome.Expected(isRead, body);
    Expect(uid != nullptr && sid != nullptr, "no text becomes null");
    Expect(!isRead || (IsText(uid, body) && !IsUntouched(sid) && IsText(sid, body)), "a login's texts");
}

void ParseUpload(const std::string& body)
{
    CSFSJsonHelper helper;
    Outcome outcome;
    const char* key = kUntouchedText;
    unsigned int fsize = 77;
    const bool isRead = Succeeds(body, [&] {
        return helper.ParseUploadResponse(body, outcome.code, key, fsize, outcome.errorinfo, outcome.failure);
    });
    outcome.Expected(isRead, body);
    Expect(key != nullptr && (!isRead || IsText(key, body)), "an upload's key");
}

void ParseEmoticons(const std::string& body)
{
    CSFSJsonHelper helper;
    Outcome outcome;
    std::vector<EmoticonInfo> emoticons;
    const bool isRead = Succeeds(body, [&] {
        return helper.ParseEmoticonList(body, outcome.code, emoticons, outcome.errorinfo, outcome.failure);
    });
    outcome.Expected(isRead, body);
    if (!isRead)
    {
        return;
    }
    Json::Value root;
    ParseJson(body, root);
    const Json::Value& sent = root["files"];
    Expect(emoticons.size() == sent.size(), "a record for each emoticon");
    for (Json::ArrayIndex i = 0; i < sent.size(); ++i)
    {
        bool ranOn = false;
        ExpectField(emoticons[i].fkey, sent[i]["fkey"], kAnsi, ranOn);
        ExpectField(emoticons[i].fname, sent[i]["fname"], kAnsi, ranOn);
        Expect(emoticons[i].fsize == sent[i]["fsize"].asUInt(), "an emoticon's size");
    }
}

void ParseLargeFiles(const std::string& body)
{
    CSFSJsonHelper helper;
    Outcome outcome;
    std::vector<LargeFileInfo> files;
    const bool isRead = Succeeds(
        body, [&] { return helper.ParseLargeFileList(body, outcome.code, files, outcome.errorinfo, outcome.failure); });
    outcome.Expected(isRead, body);
    if (!isRead)
    {
        return;
    }
    Json::Value root;
    ParseJson(body, root);
    const Json::Value& sent = root["files"];
    Expect(files.size() == sent.size(), "a record for each file");
    for (Json::ArrayIndex i = 0; i < sent.size(); ++i)
    {
        const LargeFileInfo& file = files[i];
        bool ranOn = false;
        ExpectField(file.fkey, sent[i]["fkey"], kAnsi, ranOn);
        ExpectField(file.fname, sent[i]["fname"], kAnsi, ranOn);
        ExpectField(file.fmd5, sent[i]["fmd5"], kAnsi, ranOn);
        ExpectField(file.fsha1, sent[i]["fsha1"], kAnsi, ranOn);
        ExpectField(file.createtime, sent[i]["createtime"], kAnsi, ranOn);
        Expect(file.finish == sent[i]["finish"].asInt() && file.leftminute == sent[i]["leftminute"].asInt(),
               "a file's last numbers");
    }
}

void ParseDepot(const std::string& body)
{
    CSFSJsonHelper helper;
    Outcome outcome;
    const char* uid = kUntouchedText;
    double total = -1;
    double size = -1;
    double free = -1;
    const bool isRead = Succeeds(body, [&] {
        return helper.ParseDepotInfo(body, outcome.code, uid, total, size, free, outcome.errorinfo, outcome.failure);
    });
    outcome.Expected(isRead, body);
    Expect(uid != nullptr && (!isRead || IsText(uid, body)), "the depot's owner");
}

void ParseApi(const std::string& body)
{
    CSFSJsonHelper helper;
    Outcome outcome;
    const char* key = kUntouchedText;
    const char* ticket = kUntouchedText;
    const bool isRead = Succeeds(body, [&] {
        return helper.ParseApiResponse(body, outcome.code, key, ticket, outcome.errorinfo, outcome.failure);
    });
    outcome.Expected(isRead, body);
    Expect(key != nullptr && ticket != nullptr && (!isRead || (IsText(key, body) && IsText(ticket, body))),
           "a third generation's texts");
}

/// What a client would make of the code that a reply has.
int ExpectedResult(const std::string& body, int alsoGood)
{
    Json::Value root;
    ParseJson(body, root);
    const int code = root["result"].asInt();
    return code == kCodeOk || code == alsoGood ? 0 : code;
}

void ReadResultReply(const std::string& body)
{
    const int result = ReadResult(body);
    Expect(result == 1 || result == ExpectedResult(body, kCodeOk), "a result is 0, 1 or the server's code");
}

void ReadLoginReply(const std::string& body)
{
    auto uid = CopyText("uid");
    auto sid = CopyText("sid");
    bool needLogin = true;
    const int result = ReadLogin(body, {uid, sid, needLogin});
    Expect(result == 1 || result == ExpectedResult(body, kCodeOk), "a login gives 0, 1 or the server's code");
    // The server's own 0 is handed on like any code, but it is no success.
    Expect(needLogin || result == 0, "a login is needed until one succeeds");
    Expect(uid != nullptr && sid != nullptr, "a login always has its texts");
    Expect(!needLogin || (std::string_view(uid.get()) == "uid" && std::string_view(sid.get()) == "sid"),
           "a failed login leaves the state as it was");
}

void ReadLogoutReply(const std::string& body)
{
    std::unique_ptr<char[]> uid;
    auto sid = CopyText("sid");
    bool needLogin = false;
    const int result = ReadLogout(body, {uid, sid, needLogin});
    Expect(result == 1 || result == ExpectedResult(body, kCodeOk), "a logout gives 0, 1 or the server's code");
    Expect(!needLogin || result == 0, "a login is needed after a logout");
}

void ReadUploadReply(const std::string& body, std::uint8_t keySize)
{
    const ExactRoom key(keySize);
    const int result = ReadUpload(body, key.text.get(), keySize);
    key.ExpectText();
    Expect(result == 1 || result == ExpectedResult(body, 409), "an upload gives 0, 1 or the server's code");
    Expect(result != 1 || !key.HasText(), "what cannot be read gives no key");
    if (key.HasText())
    {
        Expect(result == 0, "only a successful upload gives a key");
        const std::wstring given = key.text.get();
        Expect(CheckPictureName(0, given, given.c_str()) == 0, "a picture's own name is right");
        Expect(given.empty() || CheckPictureName(0, given, nullptr) == -103, "another name is wrong");
        Expect(CheckPictureName(5, given, nullptr) == 5, "a failure stays what it is");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const std::uint8_t parser = input.Byte();
    const std::uint8_t keySize = parser == 'k' ? input.Byte() : std::uint8_t{0};
    const std::string body(input.Rest());
    switch (parser)
    {
    case 'R':
        ParseResult(body);
        break;
    case 'L':
        ParseLogin(body);
        break;
    case 'U':
        ParseUpload(body);
        break;
    case 'E':
        ParseEmoticons(body);
        break;
    case 'F':
        ParseLargeFiles(body);
        break;
    case 'D':
        ParseDepot(body);
        break;
    case 'A':
        ParseApi(body);
        break;
    case 'r':
        ReadResultReply(body);
        break;
    case 'l':
        ReadLoginReply(body);
        break;
    case 'o':
        ReadLogoutReply(body);
        break;
    case 'k':
        ReadUploadReply(body, keySize);
        break;
    default:
        return 0;
    }
    return 0;
}
