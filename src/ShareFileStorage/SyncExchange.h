#pragma once

#include "../http_sync.h"

#include <string_view>

/// What the two generations over the host's HTTP session service have in common.
namespace quorvex
{

/// Sends a request and waits until it is over.
/// @param dispatcher null stands for one that could not be made
/// @return 0 when an answer came, whatever its status; -1, or the service's result
int SendSync(RequestDispatcher* dispatcher, __frl_stru_handle__* session, const SyncRequest& request,
             SyncAnswer& answer);

/// Sends a request whose answer is a reply.
/// @return as SendSync; and a status other than 200, of which 0 becomes 1
int SendSyncForReply(RequestDispatcher* dispatcher, __frl_stru_handle__* session, const SyncRequest& request,
                     SyncAnswer& answer);

/// Sends a request for a range.
/// @return as SendSync; and a status other than 200 and 206, of which 0 becomes 1
int SendSyncForRange(RequestDispatcher* dispatcher, __frl_stru_handle__* session, const SyncRequest& request,
                     SyncAnswer& answer);

/// Hands the bytes of a range to the caller.
/// @param length in: room of the buffer; out, on success: bytes copied
/// @return whether they fit; nothing is copied otherwise
bool TakeRange(std::string_view body, void* buffer, unsigned long& length);

} // namespace quorvex
