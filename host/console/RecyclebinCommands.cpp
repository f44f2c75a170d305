#include "NetDiskCommands.h"

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
    const std::vector<BinEntry> items = ListBin(*disk);
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
    Check(disk->RecyclebinRecover(Wide(options.item).c_str()), "cannot restore " + options.item);
    Report report;
    report.Add("restored", options.item);
    return report;
}

Report PurgeCommand(const Options& options)
{
    const auto disk = LogIn(options);
    Check(disk->RecyclebinDel(Wide(options.item).c_str()), "cannot remove " + options.item + " for ever");
    Report report;
    report.Add("purged", options.item);
    return report;
}

} // namespace quorvex::console
