#pragma once

#include "Download.h"
#include "Output.h"

#include <cstdint>
#include <string>

namespace quorvex::console
{

/// Values that more than one command tells, each in one form for all.

void AddSize(Report& report, const std::string& name, std::uint64_t bytes);
void AddFlag(Report& report, const std::string& name, bool value);
void AddSpan(Report& report, const std::string& name, std::uint32_t seconds);
void AddDigest(Report& report, const std::string& md5);
void AddDownload(Report& report, const DownloadResult& download);

} // namespace quorvex::console
