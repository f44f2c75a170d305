#include "ReportValues.h"

#include "Progress.h"
#include "Text.h"
#include "Times.h"

namespace quorvex::console
{

void AddSize(Report& report, const std::string& name, std::uint64_t bytes)
{
    report.Add(name, Json::UInt64{bytes}, ExactSizeText(bytes));
}

void AddFlag(Report& report, const std::string& name, bool value)
{
    report.Add(name, value, value ? "yes" : "no");
}

void AddSpan(Report& report, const std::string& name, std::uint32_t seconds)
{
    report.Add(name, Json::UInt64{seconds}, SpanText(seconds));
}

void AddDigest(Report& report, const std::string& md5)
{
    report.Add("md5", md5.empty() ? Json::Value() : Json::Value(md5), md5.empty() ? "not told by the server" : md5);
}

void AddDownload(Report& report, const DownloadResult& download)
{
    report.Add("name", ToUtf8(download.remote.name));
    report.Add("path", ToUtf8(download.path.wstring()));
    AddSize(report, "size", download.remote.size);
    AddDigest(report, download.remote.md5);
    AddSize(report, "resumed_from", download.resumedFrom);
    AddFlag(report, "verified", download.verified);
}

} // namespace quorvex::console
