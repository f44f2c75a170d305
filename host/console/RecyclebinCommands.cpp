#include "NetDiskCommands.h"

#include "Batch.h"
#include "Failure.h"
#include "Listings.h"
#include "Session.h"
#include "Table.h"
#include "Text.h"
#include "Times.h"

namespace quorvex::console
{

Report TrashCommand(const Options& options)
{
    const auto disk = LogIn(options);
    const std::vector<BinEntry> items = ListBin(*disk, options.inUtf8);
    Table table{"ID", "TYPE", "REMOVED", "NAME", "FROM"};
    for (const BinEntry& each : items)
        table.Add({each.id, each.type, LocalTimeText(each.removed), each.name, each.from});
    Report report;
    report.AddData("items", ToJson(items));
    report.AddText(items.empty() ? "the recycle bin is empty\n" : table.Text());
    return report;
}

Report RestoreCommand(const Options& options)
{
    const auto disk = LogIn(options);
    return ForEach("items", options.items, options, [&](const std::string& item) {
        Check({disk->RecyclebinRecover(Wide(item).c_str()), "RecyclebinRecover"}, "cannot restore " + item);
        Report report;
        report.Add("restored", item);
        return report;
    });
}

Report PurgeCommand(const Options& options)
{
    const auto disk = LogIn(options);
    return ForEach("items", options.items, options, [&](const std::string& item) {
        Check({disk->RecyclebinDel(Wide(item).c_str()), "RecyclebinDel"}, "cannot remove " + item + " for ever");
        Report report;
        report.Add("purged", item);
        return report;
    });
}

} // namespace quorvex::console
