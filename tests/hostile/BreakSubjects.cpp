// Connections that break, and answers that come before the request has been sent.

#include "hostile/Subjects.h"

#include <initializer_list>

namespace hostile
{
namespace
{

using Ending = Reply::Ending;

/// When the server is done with reading.
struct Moment
{
    const char* name;
    std::size_t requestBytes;
};

constexpr Moment atOnce{"at once", 0};
constexpr Moment withinHead{"within the head", 20};
constexpr Moment behindHead{"behind the head", Reply::RequestHead};
constexpr Moment withinBody{"within the body", MiB};
constexpr Moment afterRequest{"after the request", Reply::WholeRequest};

const char* nameOf(Ending ending)
{
    switch (ending)
    {
    case Ending::Reset:
        return "reset";
    case Ending::WholeRequestFirst:
        return "held and closed";
    default:
        return "closed";
    }
}

/// Uploads that are larger than what connections buffer.
const std::vector<const Operation*>& uploads()
{
    static const std::vector<const Operation*> all{
        &operation("CNetDisk.FileUploadLarge"),           &operation("CNetDisk.LargeFileUploadLarge"),
        &operation("CFileStorage.UserPhotoUploadLarge"),  &operation("CFileStorage.LargeFileUploadLarge"),
        &operation("CFileStorage2.LargeFileUploadLarge"), &operation("CFileStorage3.BufferUploadLarge"),
    };
    return all;
}

/// Under Wine a block that is written by one call may wait for the system's time-out when its connection is reset
/// meanwhile; what is written in pieces never does.
bool mayStall(const Operation& operation, Ending ending)
{
    return ending == Ending::Reset && !operation.overSessionService() &&
           operation.name.ends_with("LargeFileUploadLarge");
}

/// An answer that is there before the whole request is one all the same, and what it says is what the operation
/// returns, as long as the connection is not reset.
std::vector<Attack> earlyAnswers()
{
    std::vector<Attack> all;
    for (const Operation* each : uploads())
    {
        for (const Moment& moment : {atOnce, behindHead, withinBody})
        {
            for (const int status : {200, 403, 404, 413, 500})
            {
                // The usual refusals once, and at every moment what is said of too large a body.
                if (status != 200 && status != 413 && moment.requestBytes != Reply::RequestHead)
                    continue;
                for (const Ending ending : {Ending::Close, Ending::Reset, Ending::WholeRequestFirst})
                {
                    if (mayStall(*each, ending))
                        continue;
                    Reply early = reply(answer(each->body, "", std::to_string(status) + " X"));
                    early.requestBytes = moment.requestBytes;
                    early.ending = ending;
                    const std::vector<int> expected = ending == Ending::Reset
                                                          ? std::vector<int>{}
                                                          : std::vector<int>{status == 200 ? each->success : status};
                    all.push_back(
                        {std::to_string(status) + " " + moment.name + ", " + nameOf(ending), each, early, expected});
                }
            }
        }
    }
    return all;
}

/// What the server sends before the connection breaks: nothing, a piece of the status line, of the headers, of the
/// body.
std::vector<Reply> fragments(const Operation& operation, Ending ending)
{
    const std::string whole = answer(operation.body, operation.headers());
    const std::size_t head = whole.find("\r\n\r\n") + 4;
    std::vector<Reply> all{Reply{}, reply(whole.substr(0, 10)),
                           reply(whole.substr(0, head + operation.body.size() / 2))};
    // Wine's HTTP library itself reads beyond its buffer when a connection is reset behind the status line.
    if (ending != Ending::Reset)
        all.push_back(reply(whole.substr(0, 30)));
    return all;
}

std::vector<Attack> breaks(const std::vector<const Operation*>& operations, std::initializer_list<Moment> moments)
{
    std::vector<Attack> all;
    for (const Operation* each : operations)
    {
        for (const Moment& moment : moments)
        {
            for (const Ending ending : {Ending::Close, Ending::Reset})
            {
                if (mayStall(*each, ending))
                    continue;
                for (Reply& fragment : fragments(*each, ending))
                {
                    fragment.requestBytes = moment.requestBytes;
                    fragment.ending = ending;
                    all.push_back({nameOf(ending) + std::string(" ") + moment.name + ", with " +
                                       std::to_string(fragment.size()) + " bytes sent",
                                   each, fragment});
                }
            }
        }
    }
    return all;
}

std::vector<Attack> breaksOfUploads()
{
    return breaks(uploads(), {atOnce, withinHead, withinBody});
}

std::vector<Attack> breaksOfAll()
{
    return breaks(representatives(), {atOnce, withinHead, afterRequest});
}

} // namespace

std::vector<Subject> breakSubjects()
{
    return {{"EarlyAnswers", earlyAnswers}, {"BrokenUploads", breaksOfUploads}, {"BrokenConnections", breaksOfAll}};
}

} // namespace hostile
