#include "SyncExchange.h"

#include <quorvex/Results.h>

#include <algorithm>

namespace quorvex
{

namespace
{

constexpr int kStatusOk = 200;
constexpr int kStatusPartial = 206;

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
    return result != Result::Ok || answer.code == kStatusOk ? result : answer.code;
}

int SendSyncForRange(RequestDispatcher* dispatcher, __frl_stru_handle__* session, const SyncRequest& request,
                     SyncAnswer& answer)
{
    const int result = SendSync(dispatcher, session, request, answer);
    return result != Result::Ok || answer.code == kStatusOk || answer.code == kStatusPartial ? result : answer.code;
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
