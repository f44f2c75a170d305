#include "SyncExchange.h"

#include "../ResponseBody.h"

#include <quorvex/Results.h>

#include <algorithm>
#include <cstdint>

namespace quorvex
{

namespace
{

constexpr int kStatusOk = 200;
constexpr int kStatusPartial = 206;

/// @return the result of a refused request
int Refused(const SyncAnswer& answer)
{
    return RefusedStatus(static_cast<std::uint32_t>(answer.code));
}

} // namespace

int SendSync(RequestDispatcher* dispatcher, __frl_stru_handle__* session, const SyncRequest& request,
             SyncAnswer& answer)
{
    if (dispatcher == nullptr)
    {
        return Result::RequestRefused;
    }
    const int result = dispatcher->Perform(session, request, &answer);
    return result == Result::Ok ? answer.result : result;
}

int SendSyncForReply(RequestDispatcher* dispatcher, __frl_stru_handle__* session, const SyncRequest& request,
                     SyncAnswer& answer)
{
    const int result = SendSync(dispatcher, session, request, answer);
    return result != Result::Ok || answer.code == kStatusOk ? result : Refused(answer);
}

int SendSyncForRange(RequestDispatcher* dispatcher, __frl_stru_handle__* session, const SyncRequest& request,
                     SyncAnswer& answer)
{
    const int result = SendSync(dispatcher, session, request, answer);
    return result != Result::Ok || answer.code == kStatusOk || answer.code == kStatusPartial ? result : Refused(answer);
}

bool TakeRange(std::string_view body, void* buffer, unsigned long& length)
{
    if (body.size() > length)
    {
        return false;
    }
    std::ranges::copy(body, static_cast<char*>(buffer));
    length = static_cast<unsigned long>(body.size());
    return true;
}

} // namespace quorvex
