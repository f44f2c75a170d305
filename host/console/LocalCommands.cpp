#include "LocalCommands.h"

#include "Batch.h"
#include "Completion.h"
#include "LocalFile.h"
#include "Paths.h"
#include "ReportValues.h"
#include "Text.h"

#include <filesystem>

namespace quorvex::console
{

Report Md5Command(const Options& options)
{
    return ForEach("files", options.files, options, [&](const std::string& file) {
        const std::filesystem::path path = Wide(file);
        const std::string digest = DigestOf(path);
        Report report;
        report.AddData("name", NameOf(path));
        report.AddData("size", Json::UInt64{std::filesystem::file_size(path)});
        report.AddData("md5", digest);
        report.AddText(digest + "  " + Printable(file) + '\n');
        return report;
    });
}

Report CompletionCommand(const Options& options)
{
    const std::string script = BashCompletion(AllCommands());
    Report report;
    report.AddData("shell", options.shell);
    report.AddData("script", script);
    report.AddText(script);
    return report;
}

} // namespace quorvex::console
