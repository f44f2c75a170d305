#include "Input.h"
#include "Replies.h"

#include "OnlineUserSearch/OLUSJsonHelper.h"

#include <cstdlib>
#include <vector>

using namespace quorvex;
using namespace quorvex::fuzz;

namespace
{

/// What every parser gives.
struct Outcome
{
    int result = kUntouched;
    const char* errorinfo = kUntouchedText;

    void Expected(bool isRead) const
    {
        Expect(errorinfo != nullptr && !IsUntouched(errorinfo), "there is a text for every outcome");
        Expect(isRead || *errorinfo != '\0', "a failure has words");
    }
};

void ParseResult(const std::string& body)
{
    OLUSJsonHelper helper;
    Outcome outcome;
    outcome.Expected(Succeeds(body, [&] { return helper.ParseResult(body, outcome.result, outcome.errorinfo); }));
}

void ParseLogin(const std::string& body)
{
    OLUSJsonHelper helper;
    Outcome outcome;
    const char* uid = kUntouchedText;
    const char* sid = kUntouchedText;
    const bool isRead =
        Succeeds(body, [&] { return helper.ParseLoginResponse(body, outcome.result, uid, sid, outcome.errorinfo); });
    outcome.Expected(isRead);
    Expect(uid != nullptr && sid != nullptr, "no text becomes null");
    Expect(!isRead || (!IsUntouched(uid) && !IsUntouched(sid) && IsText(uid, body) && IsText(sid, body)),
           "a login's texts");
}

void ParseCount(const std::string& body)
{
    OLUSJsonHelper helper;
    Outcome outcome;
    int total = kUntouched;
    const bool isRead =
        Succeeds(body, [&] { return helper.ParseTotalCount(body, outcome.result, outcome.errorinfo, total); });
    outcome.Expected(isRead);
    Expect(isRead || total == kUntouched || total == 0, "a failure gives no total");
}

void ParseIds(const std::string& body)
{
    OLUSJsonHelper helper;
    Outcome outcome;
    std::vector<unsigned int> ids = {7};
    const bool isRead =
        Succeeds(body, [&] { return helper.ParseUserIdList(body, outcome.result, outcome.errorinfo, ids); });
    outcome.Expected(isRead);
    Expect(!ids.empty() && ids.front() == 7, "ids are appended");
    if (!isRead)
    {
        return;
    }
    Json::Value root;
    ParseJson(body, root);
    std::size_t next = 1;
    for (const Json::Value& user : root["users"])
    {
        if (user.isString())
        {
            Expect(next < ids.size(), "an id for each string");
            const unsigned long id = std::strtoul(user.asCString(), nullptr, 10);
            Expect(id > 0xFFFFFFFFUL || ids[next] == id, "an id is read as a number");
            ++next;
        }
    }
    Expect(next == ids.size(), "no id without a string");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const std::uint8_t parser = input.Byte();
    const std::string body(input.Rest());
    switch (parser)
    {
    case 'R':
        ParseResult(body);
        break;
    case 'L':
        ParseLogin(body);
        break;
    case 'C':
        ParseCount(body);
        break;
    case 'U':
        ParseIds(body);
        break;
    default:
        return 0;
    }
    return 0;
}
