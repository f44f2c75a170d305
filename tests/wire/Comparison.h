#pragma once

#include "support/LogCapture.h"
#include "wire/CaseFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace wire
{

/// Two texts under each other, escaped line by line, the first different one marked.
std::string sideBySide(std::string_view expected, std::string_view actual);

/// @return what differs between the requests that were expected and that came; empty when nothing does
std::string compareRequests(const std::vector<ExpectedRequest>& expected, const std::vector<std::string>& actual);

/// @return what differs between the listed lines and the log; empty when nothing does
std::string compareLog(const CaseFile& file, const std::vector<support::LogLine>& actual);

} // namespace wire
