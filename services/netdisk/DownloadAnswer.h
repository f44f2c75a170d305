#pragma once

#include "netdisk/NetDiskStore.h"

#include <httplib.h>

namespace quorvex::services::netdisk
{

// Answers with the file, or with the part that the request's range names. True when this counts as a download, which a
// client's probe for name and size does not.
bool AnswerDownload(const httplib::Request& request, httplib::Response& response, Download file);

} // namespace quorvex::services::netdisk
